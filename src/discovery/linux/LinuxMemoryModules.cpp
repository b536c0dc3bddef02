#include "discovery/linux/LinuxMemoryModules.h"

#include <memory>
#include <vector>

#include "common/QVSLogger.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/formats/SmbiosMemoryDevice.h"
#include "discovery/linux/LinuxSmbiosEntries.h"
#include "model/QVIOKitMemory.h"

namespace tov {
namespace {

constexpr const char* kEmpty = "Empty";
constexpr const char* kInstalledStatus = "ok";
constexpr const char* kEmptyStatus = "empty";
// Firmware writes this where a slot has no bank.
constexpr const char* kNoBank = "Not Specified";
constexpr std::uint64_t kMegabyte = 1024 * 1024;
constexpr std::uint64_t kGigabyte = 1024 * kMegabyte;

// "<bank>/<locator>", the locator alone without a bank, the bank alone without a locator.
std::string slotName(const SmbiosMemoryDevice& device) {
    const bool hasBank = !device.bankLocator.empty() && device.bankLocator != kNoBank;
    if (!hasBank) return device.locator;
    if (device.locator.empty()) return device.bankLocator;
    return device.bankLocator + "/" + device.locator;
}

// "16 GB" for whole gigabytes, else "512 MB" (whole megabytes), else "768 KB"; "" unknown.
std::string sizeText(const std::optional<std::uint64_t>& bytes) {
    if (!bytes || *bytes == 0) return "";
    if (*bytes % kGigabyte == 0) return std::to_string(*bytes / kGigabyte) + " GB";
    if (*bytes % kMegabyte == 0) return std::to_string(*bytes / kMegabyte) + " MB";
    return std::to_string(*bytes / 1024) + " KB";
}

// The speed the module runs at (configured), else its rated speed; "" when neither is known.
std::string speedText(const SmbiosMemoryDevice& device) {
    const std::uint32_t speed = device.configuredSpeed != 0 ? device.configuredSpeed : device.speed;
    return speed == 0 ? "" : std::to_string(speed) + " MHz";
}

std::shared_ptr<QVIOKitMemory> installedModule(const SmbiosMemoryDevice& device) {
    std::shared_ptr<QVIOKitMemory> record = QVIOKitMemory::ioKitMemory();
    record->setName(slotName(device));
    record->setType(device.memoryType);
    record->setSize(sizeText(device.sizeBytes));
    record->setSpeed(speedText(device));
    record->setStatus(kInstalledStatus);
    record->setManufacturer(device.manufacturer);
    record->setSerialNumber(device.serialNumber);
    record->setPartNumber(device.partNumber);
    return record;
}

std::shared_ptr<QVIOKitMemory> emptySlot(const SmbiosMemoryDevice& device) {
    std::shared_ptr<QVIOKitMemory> record = QVIOKitMemory::ioKitMemory();
    record->setName(slotName(device));
    record->setType(kEmpty);
    record->setSize(kEmpty);
    record->setSpeed(kEmpty);
    record->setStatus(kEmptyStatus);
    record->setManufacturer(kEmpty);
    record->setSerialNumber(kEmpty);
    record->setPartNumber(kEmpty);
    return record;
}

}  // namespace

ArrayRef discoverLinuxMemoryModules(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitMemory>> records;
    for (const std::string& raw : smbiosEntriesOfType(source, SmbiosMemoryDevice::kType)) {
        const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(raw);
        if (!device) {
            QVSLogger::debug("A memory-device entry of %zu bytes is too short or of another type; it is left out.",
                             raw.size());
            continue;
        }
        records.push_back(device->installed ? installedModule(*device) : emptySlot(*device));
    }
    return equalRecordsOnce(records);
}

}  // namespace tov
