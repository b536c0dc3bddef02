#pragma once

// One memory device (SMBIOS structure type 17) decoded from the raw bytes the kernel gives
// in /sys/firmware/dmi/entries/17-N/raw: what a memory-module inventory needs. Fields that
// an older SMBIOS version or a truncated entry lacks read as unknown.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

struct SmbiosMemoryDevice {
    static constexpr std::uint8_t kType = 17;

    // False for an empty slot (size 0, "No Module Installed").
    bool installed = false;
    // Bytes; nothing when the firmware does not know the size (or the entry is cut short).
    std::optional<std::uint64_t> sizeBytes;
    // "DIMM", "SODIMM", "Row Of Chips", ...; "" when the field is missing.
    std::string formFactor;
    std::string bankLocator;
    std::string locator;
    // "DDR4", "LPDDR5", ...; "" when the field is missing.
    std::string memoryType;
    // MT/s; 0 when unknown.
    std::uint32_t speed = 0;
    std::uint32_t configuredSpeed = 0;
    std::string manufacturer;
    std::string serialNumber;
    std::string partNumber;
};

// Nothing when the bytes are no memory-device structure (another type, or shorter than
// the SMBIOS 2.1 fields up to the memory type).
std::optional<SmbiosMemoryDevice> decodeSmbiosMemoryDevice(std::string_view raw);

// The SMBIOS names of the memory type and form factor codes; "Unknown" for codes outside
// the tables.
std::string smbiosMemoryTypeName(std::uint8_t code);
std::string smbiosMemoryFormFactorName(std::uint8_t code);

}  // namespace tov
