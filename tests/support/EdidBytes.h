#pragma once

// EDID blocks as a monitor sends them, built field by field for the tests: a base block
// with its four 18-byte descriptors and the extension blocks after it, each block closed
// by a correct checksum unless a test damages it afterwards.

#include <cstdint>
#include <string>
#include <vector>

namespace tov::testing {

struct EdidTiming {
    std::uint32_t pixelClockKhz = 0;
    std::uint32_t horizontalActive = 0;
    std::uint32_t horizontalBlanking = 0;
    std::uint32_t verticalActive = 0;
    std::uint32_t verticalBlanking = 0;
};

// 1920x1200 at 59.95 Hz (154 MHz, 2080 x 1235 pixels per frame).
EdidTiming wuxgaTiming();

// An 18-byte detailed timing descriptor.
std::string timingDescriptor(const EdidTiming& timing);
// An 18-byte display descriptor: tag and up to 13 bytes of text, taken as given.
std::string textDescriptor(std::uint8_t tag, const std::string& text);
// A display descriptor of tag 0x10 (nothing in it).
std::string dummyDescriptor();

struct EdidBaseBlock {
    std::string maker = "DEL";  // three letters A-Z
    std::uint8_t version = 1;
    std::uint8_t revision = 4;
    std::uint8_t videoInput = 0xA5;  // digital, 8 bits per colour, DisplayPort
    std::vector<std::string> descriptors;  // up to four; the rest are dummies
    std::uint8_t extensionCount = 0;

    // 128 bytes, checksum included.
    std::string bytes() const;
};

// A DisplayID 1.x section in a 128-byte extension block, checksums included.
std::string displayIdBlock(const std::string& dataBlocks);
// A type I (10 kHz clock units) or type VII (1 kHz units, tag 0x22) timings data block
// with one descriptor.
std::string displayIdTimingBlock(const EdidTiming& timing, bool preferred, std::uint8_t tag = 0x03);
// A tiled display topology data block.
std::string displayIdTilesBlock(int columns, int rows, int tileWidth, int tileHeight);
// A CTA-861 extension block without data blocks.
std::string ctaBlock();

// The block with its last byte set so that its bytes sum to 0 modulo 256.
std::string withChecksum(std::string block);

}  // namespace tov::testing
