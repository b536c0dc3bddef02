#include "support/EdidBytes.h"

#include <numeric>

namespace tov::testing {
namespace {

constexpr std::size_t kBlockSize = 128;

char byte(std::uint32_t value) { return static_cast<char>(value & 0xff); }

std::string littleEndian16(std::uint32_t value) { return {byte(value), byte(value >> 8)}; }

std::uint16_t packedMaker(const std::string& letters) {
    std::uint16_t value = 0;
    for (const char letter : letters) value = static_cast<std::uint16_t>(value << 5 | (letter - 'A' + 1));
    return value;
}

}  // namespace

EdidTiming wuxgaTiming() { return {154000, 1920, 160, 1200, 35}; }

std::string timingDescriptor(const EdidTiming& timing) {
    std::string descriptor = littleEndian16(timing.pixelClockKhz / 10);
    descriptor += byte(timing.horizontalActive);
    descriptor += byte(timing.horizontalBlanking);
    descriptor += byte((timing.horizontalActive >> 8) << 4 | (timing.horizontalBlanking >> 8));
    descriptor += byte(timing.verticalActive);
    descriptor += byte(timing.verticalBlanking);
    descriptor += byte((timing.verticalActive >> 8) << 4 | (timing.verticalBlanking >> 8));
    // Porches and sync widths, image size, border, flags: not read.
    descriptor += std::string("\x30\x20\x36\x00\x06\x44\x21\x00\x00\x1a", 10);
    return descriptor;
}

std::string textDescriptor(std::uint8_t tag, const std::string& text) {
    std::string descriptor{'\0', '\0', '\0', static_cast<char>(tag), '\0'};
    descriptor += text.substr(0, 13);
    descriptor.resize(18, '\0');
    return descriptor;
}

std::string dummyDescriptor() { return textDescriptor(0x10, ""); }

std::string EdidBaseBlock::bytes() const {
    std::string block("\x00\xff\xff\xff\xff\xff\xff\x00", 8);
    const std::uint16_t makerId = packedMaker(maker);
    block += {byte(makerId >> 8), byte(makerId)};
    block += std::string("\x7b\xa0\x31\x4a\x4c\x33\x0c\x18", 8);  // product, serial, week, year
    block += {byte(version), byte(revision), byte(videoInput), byte(52), byte(32), byte(120), byte(0x0a)};
    block += std::string("\xee\x91\xa3\x54\x4c\x99\x26\x0f\x50\x54", 10);  // colour points
    block += std::string(3, '\0');                                        // established timings
    block += std::string(16, '\x01');                                     // standard timings unused
    for (std::size_t index = 0; index < 4; ++index) {
        block += index < descriptors.size() ? descriptors[index] : dummyDescriptor();
    }
    block += byte(extensionCount);
    block += '\0';
    return withChecksum(block);
}

std::string displayIdBlock(const std::string& dataBlocks) {
    std::string section{'\x12', byte(dataBlocks.size()), '\x03', '\0'};
    section += dataBlocks;
    const int sum = std::accumulate(section.begin(), section.end(), 0,
                                    [](int total, char value) { return total + static_cast<std::uint8_t>(value); });
    section += byte(static_cast<std::uint32_t>(-sum));
    std::string block = "\x70" + section;
    block.resize(kBlockSize, '\0');
    return withChecksum(block);
}

std::string displayIdTimingBlock(const EdidTiming& timing, bool preferred, std::uint8_t tag) {
    const std::uint32_t unitKhz = tag == 0x03 ? 10 : 1;
    const std::uint32_t clock = timing.pixelClockKhz / unitKhz - 1;
    std::string descriptor{byte(clock), byte(clock >> 8), byte(clock >> 16), byte(preferred ? 0x84 : 0x04)};
    descriptor += littleEndian16(timing.horizontalActive - 1) + littleEndian16(timing.horizontalBlanking - 1);
    descriptor += littleEndian16(0x8007) + littleEndian16(31);
    descriptor += littleEndian16(timing.verticalActive - 1) + littleEndian16(timing.verticalBlanking - 1);
    descriptor += littleEndian16(0) + littleEndian16(7);
    return std::string{byte(tag), '\0', byte(descriptor.size())} + descriptor;
}

std::string displayIdTilesBlock(int columns, int rows, int tileWidth, int tileHeight) {
    std::string payload{'\x82', byte((columns - 1) << 4 | (rows - 1)), '\0', '\0'};
    payload += littleEndian16(tileWidth - 1) + littleEndian16(tileHeight - 1);
    payload += std::string(5, '\0') + "GSM" + std::string("\x7a\x5b\x01\x00\x00\x00", 6);
    return std::string{'\x12', '\0', byte(payload.size())} + payload;
}

std::string ctaBlock() {
    std::string block{'\x02', '\x03', '\x04', '\0'};
    block.resize(kBlockSize, '\0');
    return withChecksum(block);
}

std::string withChecksum(std::string block) {
    const int sum = std::accumulate(block.begin(), block.end() - 1, 0,
                                    [](int total, char value) { return total + static_cast<std::uint8_t>(value); });
    block.back() = byte(static_cast<std::uint32_t>(-sum));
    return block;
}

}  // namespace tov::testing
