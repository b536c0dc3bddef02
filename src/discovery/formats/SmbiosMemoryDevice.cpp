#include "discovery/formats/SmbiosMemoryDevice.h"

#include <array>

#include "discovery/formats/SmbiosStructure.h"

namespace tov {
namespace {

// Offsets of the type-17 fields (SMBIOS 2.1 up to 3.3).
constexpr std::size_t kSize = 0x0C;
constexpr std::size_t kFormFactor = 0x0E;
constexpr std::size_t kLocator = 0x10;
constexpr std::size_t kBankLocator = 0x11;
constexpr std::size_t kMemoryType = 0x12;
constexpr std::size_t kSpeed = 0x15;
constexpr std::size_t kManufacturer = 0x17;
constexpr std::size_t kSerialNumber = 0x18;
constexpr std::size_t kPartNumber = 0x1A;
constexpr std::size_t kExtendedSize = 0x1C;
constexpr std::size_t kConfiguredSpeed = 0x20;
constexpr std::size_t kExtendedSpeed = 0x54;
constexpr std::size_t kExtendedConfiguredSpeed = 0x58;

constexpr std::uint16_t kSizeUnknown = 0xFFFF;
constexpr std::uint16_t kSizeInExtendedField = 0x7FFF;
constexpr std::uint16_t kSizeInKilobytes = 0x8000;
constexpr std::uint32_t kExtendedSizeMask = 0x7FFFFFFF;
constexpr std::uint16_t kSpeedInExtendedField = 0xFFFF;
constexpr std::uint32_t kExtendedSpeedMask = 0x7FFFFFFF;
constexpr std::uint64_t kKilobyte = 1024;
constexpr std::uint64_t kMegabyte = 1024 * 1024;

constexpr std::array<const char*, 0x25> kMemoryTypes{
    "",        "Other",      "Unknown", "DRAM",  "EDRAM",  "VRAM",   "SRAM",   "RAM",
    "ROM",     "Flash",      "EEPROM",  "FEPROM", "EPROM", "CDRAM",  "3DRAM",  "SDRAM",
    "SGRAM",   "RDRAM",      "DDR",     "DDR2",  "DDR2 FB-DIMM", "Reserved", "Reserved", "Reserved",
    "DDR3",    "FBD2",       "DDR4",    "LPDDR", "LPDDR2", "LPDDR3", "LPDDR4",
    "Logical non-volatile device", "HBM", "HBM2", "DDR5", "LPDDR5", "HBM3"};

constexpr std::array<const char*, 0x12> kFormFactors{
    "",    "Other", "Unknown", "SIMM",   "SIP",          "Chip",  "DIP",     "ZIP",      "Proprietary Card",
    "DIMM", "TSOP", "Row Of Chips", "RIMM", "SODIMM", "SRIMM", "FB-DIMM", "Die", "CAMM"};

std::string nameIn(const auto& table, std::uint8_t code) {
    if (code == 0 || code >= table.size()) return "Unknown";
    return table[code];
}

std::string nameOfField(const SmbiosStructure& structure, std::size_t offset, std::string (*name)(std::uint8_t)) {
    const std::optional<std::uint8_t> code = structure.byteAt(offset);
    return code ? name(*code) : "";
}

// The size word: 0 is an empty slot, 0xFFFF unknown, 0x7FFF points to the extended size
// (megabytes), and the top bit marks kilobytes instead of megabytes.
void decodeSize(const SmbiosStructure& structure, SmbiosMemoryDevice& device) {
    const std::optional<std::uint16_t> size = structure.wordAt(kSize);
    if (!size) return;
    device.installed = *size != 0;
    if (*size == 0) {
        device.sizeBytes = 0;
    } else if (*size == kSizeUnknown) {
        device.sizeBytes.reset();
    } else if (*size == kSizeInExtendedField) {
        if (const std::optional<std::uint32_t> extended = structure.doubleWordAt(kExtendedSize)) {
            device.sizeBytes = (*extended & kExtendedSizeMask) * kMegabyte;
        }
    } else if ((*size & kSizeInKilobytes) != 0) {
        device.sizeBytes = (*size & ~kSizeInKilobytes) * kKilobyte;
    } else {
        device.sizeBytes = *size * kMegabyte;
    }
}

// A speed word of 0 is unknown; 0xFFFF points to the 32-bit extended field.
std::uint32_t speedOf(const SmbiosStructure& structure, std::size_t offset, std::size_t extendedOffset) {
    const std::optional<std::uint16_t> speed = structure.wordAt(offset);
    if (!speed) return 0;
    if (*speed != kSpeedInExtendedField) return *speed;
    const std::optional<std::uint32_t> extended = structure.doubleWordAt(extendedOffset);
    return extended ? (*extended & kExtendedSpeedMask) : 0;
}

}  // namespace

std::string smbiosMemoryTypeName(std::uint8_t code) { return nameIn(kMemoryTypes, code); }

std::string smbiosMemoryFormFactorName(std::uint8_t code) { return nameIn(kFormFactors, code); }

std::optional<SmbiosMemoryDevice> decodeSmbiosMemoryDevice(std::string_view raw) {
    const std::optional<SmbiosStructure> structure = SmbiosStructure::parse(raw);
    if (!structure || structure->type() != SmbiosMemoryDevice::kType || !structure->byteAt(kMemoryType)) {
        return std::nullopt;
    }
    SmbiosMemoryDevice device;
    decodeSize(*structure, device);
    device.formFactor = nameOfField(*structure, kFormFactor, smbiosMemoryFormFactorName);
    device.locator = structure->stringAt(kLocator);
    device.bankLocator = structure->stringAt(kBankLocator);
    device.memoryType = nameOfField(*structure, kMemoryType, smbiosMemoryTypeName);
    device.speed = speedOf(*structure, kSpeed, kExtendedSpeed);
    device.configuredSpeed = speedOf(*structure, kConfiguredSpeed, kExtendedConfiguredSpeed);
    device.manufacturer = structure->stringAt(kManufacturer);
    device.serialNumber = structure->stringAt(kSerialNumber);
    device.partNumber = structure->stringAt(kPartNumber);
    return device;
}

}  // namespace tov
