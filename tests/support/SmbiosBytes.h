#pragma once

// Raw SMBIOS structures as the kernel gives them in /sys/firmware/dmi/entries/T-N/raw,
// built field by field for the tests.

#include <cstdint>
#include <string>
#include <vector>

namespace tov::testing {

// A type-17 memory device of SMBIOS 3.3 (0x5C bytes of fields), cut to `length` bytes
// of fields when a test wants an older or shorter entry.
struct MemoryDeviceBytes {
    std::uint8_t length = 0x5C;
    std::uint16_t size = 0;
    std::uint8_t formFactor = 0x09;
    std::string locator;
    std::string bankLocator;
    std::uint8_t memoryType = 0x1A;
    std::uint16_t speed = 0;
    std::string manufacturer;
    std::string serialNumber;
    std::string partNumber;
    std::uint32_t extendedSize = 0;
    std::uint16_t configuredSpeed = 0;
    std::uint32_t extendedSpeed = 0;
    std::uint32_t extendedConfiguredSpeed = 0;

    std::string bytes() const;
};

// A structure of the type with the formatted area's bytes after the four-byte header
// and the strings; an empty string list still ends with the two NUL bytes.
std::string smbiosStructure(std::uint8_t type, const std::vector<std::uint8_t>& fields,
                            const std::vector<std::string>& strings);

// A type-4 processor structure (SMBIOS 2.6 length) whose version is `version`.
std::string smbiosProcessorBytes(const std::string& version);

}  // namespace tov::testing
