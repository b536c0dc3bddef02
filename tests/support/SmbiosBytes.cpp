#include "support/SmbiosBytes.h"

namespace tov::testing {
namespace {

void putWord(std::vector<std::uint8_t>& area, std::size_t offset, std::uint16_t value) {
    area[offset] = static_cast<std::uint8_t>(value & 0xFF);
    area[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}

void putDoubleWord(std::vector<std::uint8_t>& area, std::size_t offset, std::uint32_t value) {
    putWord(area, offset, static_cast<std::uint16_t>(value & 0xFFFF));
    putWord(area, offset + 2, static_cast<std::uint16_t>(value >> 16));
}

// Adds text to the string list and gives its one-based index; 0 for no text.
std::uint8_t addString(std::vector<std::string>& strings, const std::string& text) {
    if (text.empty()) return 0;
    strings.push_back(text);
    return static_cast<std::uint8_t>(strings.size());
}

std::string withStrings(std::vector<std::uint8_t> area, const std::vector<std::string>& strings) {
    std::string bytes(area.begin(), area.end());
    for (const std::string& text : strings) bytes += text + '\0';
    if (strings.empty()) bytes += '\0';
    bytes += '\0';
    return bytes;
}

}  // namespace

std::string MemoryDeviceBytes::bytes() const {
    std::vector<std::uint8_t> area(0x5C, 0);
    std::vector<std::string> strings;
    area[0] = 17;
    putWord(area, 0x04, 0x1000);
    putWord(area, 0x08, 64);
    putWord(area, 0x0A, 64);
    putWord(area, 0x0C, size);
    area[0x0E] = formFactor;
    area[0x10] = addString(strings, locator);
    area[0x11] = addString(strings, bankLocator);
    area[0x12] = memoryType;
    putWord(area, 0x15, speed);
    area[0x17] = addString(strings, manufacturer);
    area[0x18] = addString(strings, serialNumber);
    area[0x1A] = addString(strings, partNumber);
    putDoubleWord(area, 0x1C, extendedSize);
    putWord(area, 0x20, configuredSpeed);
    putDoubleWord(area, 0x54, extendedSpeed);
    putDoubleWord(area, 0x58, extendedConfiguredSpeed);
    area.resize(length);
    area[1] = length;
    return withStrings(area, strings);
}

std::string smbiosStructure(std::uint8_t type, const std::vector<std::uint8_t>& fields,
                            const std::vector<std::string>& strings) {
    std::vector<std::uint8_t> area{type, static_cast<std::uint8_t>(4 + fields.size()), 0x00, 0x04};
    area.insert(area.end(), fields.begin(), fields.end());
    return withStrings(area, strings);
}

std::string smbiosProcessorBytes(const std::string& version) {
    std::vector<std::uint8_t> fields(0x2A - 4, 0);
    fields[0x04 - 4] = 1;     // socket designation
    fields[0x05 - 4] = 3;     // central processor
    fields[0x07 - 4] = 2;     // manufacturer
    fields[0x10 - 4] = version.empty() ? 0 : 3;
    std::vector<std::string> strings{"CPU0", "Maker"};
    if (!version.empty()) strings.push_back(version);
    return smbiosStructure(4, fields, strings);
}

}  // namespace tov::testing
