#include "discovery/formats/DisplayIdSection.h"

#include <algorithm>

#include "common/QVSLogger.h"

namespace tov {
namespace {

constexpr std::size_t kSectionHeaderSize = 5;     // tag, version, length, product type, extensions
constexpr std::size_t kBlockChecksumOffset = 127;  // the EDID extension block's own checksum
constexpr std::size_t kDataBlockHeaderSize = 3;    // tag, revision, payload length
constexpr std::size_t kTimingDescriptorSize = 20;
constexpr std::size_t kTilesPayloadSize = 8;       // the fields read, of the block's 22 bytes

constexpr std::uint8_t kTypeITimingsTag = 0x03;    // DisplayID 1.x, clock in 10 kHz units
constexpr std::uint8_t kTypeVIITimingsTag = 0x22;  // DisplayID 2.0, clock in 1 kHz units
constexpr std::uint8_t kTiledTopologyTag = 0x12;   // DisplayID 1.x
constexpr std::uint8_t kTiledTopology2Tag = 0x28;  // DisplayID 2.0

std::uint32_t byteAt(std::string_view bytes, std::size_t offset) { return static_cast<std::uint8_t>(bytes[offset]); }

std::uint32_t littleEndian16(std::string_view bytes, std::size_t offset) {
    return byteAt(bytes, offset) | byteAt(bytes, offset + 1) << 8;
}

// The fields hold each value minus one; the top bit of the porch fields is the polarity.
std::optional<DisplayIdTiming> timingOfDescriptor(std::string_view descriptor, std::uint64_t clockUnitHz) {
    const std::uint64_t clockUnits =
        (byteAt(descriptor, 0) | byteAt(descriptor, 1) << 8 | byteAt(descriptor, 2) << 16) + std::uint64_t{1};
    DetailedTiming timing;
    timing.pixelClockHz = clockUnits * clockUnitHz;
    timing.horizontalActive = littleEndian16(descriptor, 4) + 1;
    timing.horizontalBlanking = littleEndian16(descriptor, 6) + 1;
    timing.verticalActive = littleEndian16(descriptor, 12) + 1;
    timing.verticalBlanking = littleEndian16(descriptor, 14) + 1;
    const std::optional<DisplayMode> mode = displayModeOfTiming(timing);
    if (!mode) {
        QVSLogger::debug("A DisplayID detailed timing is absurd and is ignored.");
        return std::nullopt;
    }
    return DisplayIdTiming{*mode, (byteAt(descriptor, 3) & 0x80) != 0};
}

void readTimings(std::string_view payload, std::uint64_t clockUnitHz, DisplayIdSection& section) {
    for (std::size_t offset = 0; offset + kTimingDescriptorSize <= payload.size(); offset += kTimingDescriptorSize) {
        if (std::optional<DisplayIdTiming> timing =
                timingOfDescriptor(payload.substr(offset, kTimingDescriptorSize), clockUnitHz)) {
            section.timings.push_back(*timing);
        }
    }
}

// Tile counts are stored minus one, in four low bits (byte 1) and two high bits (byte 3).
void readTiles(std::string_view payload, DisplayIdSection& section) {
    if (payload.size() < kTilesPayloadSize) {
        QVSLogger::debug("A DisplayID tiled topology block is too short and is ignored.");
        return;
    }
    const std::uint32_t counts = byteAt(payload, 1);
    const std::uint32_t highBits = byteAt(payload, 3);
    DisplayIdTiles tiles;
    tiles.horizontalTiles = ((highBits >> 6 & 0x3) << 4 | counts >> 4) + 1;
    tiles.verticalTiles = ((highBits >> 4 & 0x3) << 4 | (counts & 0xf)) + 1;
    tiles.tileWidth = littleEndian16(payload, 4) + 1;
    tiles.tileHeight = littleEndian16(payload, 6) + 1;
    section.tiles = tiles;
}

void readDataBlock(std::uint8_t tag, std::string_view payload, DisplayIdSection& section) {
    switch (tag) {
        case kTypeITimingsTag: readTimings(payload, 10'000, section); break;
        case kTypeVIITimingsTag: readTimings(payload, 1'000, section); break;
        case kTiledTopologyTag:
        case kTiledTopology2Tag: readTiles(payload, section); break;
        default: break;
    }
}

}  // namespace

DisplayIdSection readDisplayIdSection(std::string_view block) {
    DisplayIdSection section;
    if (block.size() <= kSectionHeaderSize || byteAt(block, 0) != kDisplayIdExtensionTag) return section;
    const std::size_t end =
        std::min({kSectionHeaderSize + byteAt(block, 2), kBlockChecksumOffset, block.size()});
    std::size_t offset = kSectionHeaderSize;
    while (offset + kDataBlockHeaderSize <= end) {
        const std::uint8_t tag = static_cast<std::uint8_t>(byteAt(block, offset));
        const std::size_t payloadSize = byteAt(block, offset + 2);
        const std::size_t payloadStart = offset + kDataBlockHeaderSize;
        if (payloadStart + payloadSize > end) {
            QVSLogger::debug("A DisplayID data block (tag 0x%02x) runs past its section; the rest is ignored.", tag);
            break;
        }
        readDataBlock(tag, block.substr(payloadStart, payloadSize), section);
        offset = payloadStart + payloadSize;
    }
    return section;
}

}  // namespace tov
