#include "discovery/formats/Edid.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>
#include <vector>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "discovery/formats/DisplayIdSection.h"

namespace tov {
namespace {

constexpr std::string_view kHeader("\x00\xff\xff\xff\xff\xff\xff\x00", 8);
constexpr std::size_t kVendorIdOffset = 8;
constexpr std::size_t kVersionOffset = 18;
constexpr std::size_t kRevisionOffset = 19;
constexpr std::size_t kVideoInputOffset = 20;
constexpr std::size_t kExtensionCountOffset = 126;
constexpr std::array<std::size_t, 4> kDescriptorOffsets{54, 72, 90, 108};
constexpr std::size_t kDescriptorSize = 18;
constexpr std::uint8_t kProductNameTag = 0xfc;
constexpr std::size_t kDescriptorTextOffset = 5;
constexpr std::size_t kDescriptorTextSize = 13;

std::uint32_t byteAt(std::string_view bytes, std::size_t offset) { return static_cast<std::uint8_t>(bytes[offset]); }

bool hasValidChecksum(std::string_view block) {
    const std::uint32_t sum = std::accumulate(block.begin(), block.end(), std::uint32_t{0},
                                              [](std::uint32_t total, char byte) {
                                                  return total + static_cast<std::uint8_t>(byte);
                                              });
    return sum % 256 == 0;
}

std::string vendorIdText(std::string_view base) {
    const std::uint32_t vendor = byteAt(base, kVendorIdOffset) << 8 | byteAt(base, kVendorIdOffset + 1);
    std::array<char, 8> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), vendor, 16);
    return std::string(digits.data(), result.ptr);
}

// A descriptor whose pixel clock (bytes 0-1) is 0 is a display descriptor, else a timing.
bool isDisplayDescriptor(std::string_view descriptor) {
    return byteAt(descriptor, 0) == 0 && byteAt(descriptor, 1) == 0;
}

std::optional<std::string> productName(std::string_view base) {
    for (const std::size_t offset : kDescriptorOffsets) {
        const std::string_view descriptor = base.substr(offset, kDescriptorSize);
        if (!isDisplayDescriptor(descriptor) || byteAt(descriptor, 3) != kProductNameTag) continue;
        std::string_view text = descriptor.substr(kDescriptorTextOffset, kDescriptorTextSize);
        text = text.substr(0, text.find('\n'));
        std::string name = printableText(text);
        if (!name.empty()) return name;
    }
    return std::nullopt;
}

// Sizes are 12-bit: eight low bits in one byte, the four high bits in a shared byte.
std::optional<DisplayMode> modeOfTimingDescriptor(std::string_view descriptor) {
    DetailedTiming timing;
    timing.pixelClockHz = (byteAt(descriptor, 0) | byteAt(descriptor, 1) << 8) * std::uint64_t{10'000};
    timing.horizontalActive = byteAt(descriptor, 2) | (byteAt(descriptor, 4) >> 4) << 8;
    timing.horizontalBlanking = byteAt(descriptor, 3) | (byteAt(descriptor, 4) & 0xf) << 8;
    timing.verticalActive = byteAt(descriptor, 5) | (byteAt(descriptor, 7) >> 4) << 8;
    timing.verticalBlanking = byteAt(descriptor, 6) | (byteAt(descriptor, 7) & 0xf) << 8;
    const std::optional<DisplayMode> mode = displayModeOfTiming(timing);
    if (!mode) QVSLogger::debug("The EDID's first detailed timing is absurd; no mode is read from it.");
    return mode;
}

std::optional<DisplayMode> firstDetailedTiming(std::string_view base) {
    const std::string_view descriptor = base.substr(kDescriptorOffsets[0], kDescriptorSize);
    if (isDisplayDescriptor(descriptor)) return std::nullopt;
    return modeOfTimingDescriptor(descriptor);
}

// EDID 1.4 digital inputs state the bits per primary colour in bits 6-4 of byte 20.
std::optional<int> bitsPerColour(std::string_view base) {
    const bool edid14 = byteAt(base, kVersionOffset) == 1 && byteAt(base, kRevisionOffset) >= 4;
    const std::uint32_t input = byteAt(base, kVideoInputOffset);
    if (!edid14 || (input & 0x80) == 0) return std::nullopt;
    const std::uint32_t code = input >> 4 & 0x7;
    if (code == 0 || code == 7) return std::nullopt;
    return static_cast<int>(4 + 2 * code);
}

// The extension blocks that are present and intact.
std::vector<std::string_view> intactExtensions(std::string_view bytes) {
    const std::size_t claimed = byteAt(bytes, kExtensionCountOffset);
    const std::size_t present = bytes.size() / Edid::kBlockSize - 1;
    if (present < claimed) {
        QVSLogger::debug("The EDID claims %zu extension blocks but holds %zu; only those present are read.",
                         claimed, present);
    }
    std::vector<std::string_view> extensions;
    for (std::size_t index = 1; index <= claimed && index <= present; ++index) {
        const std::string_view block = bytes.substr(index * Edid::kBlockSize, Edid::kBlockSize);
        if (hasValidChecksum(block)) {
            extensions.push_back(block);
        } else {
            QVSLogger::debug("The EDID's extension block %zu has a wrong checksum and is ignored.", index);
        }
    }
    return extensions;
}

std::optional<DisplayMode> tileTiming(const DisplayIdSection& section, const DisplayIdTiles& tiles) {
    for (const DisplayIdTiming& timing : section.timings) {
        if (timing.mode.width == tiles.tileWidth && timing.mode.height == tiles.tileHeight) return timing.mode;
    }
    return std::nullopt;
}

// The whole of a tiled monitor: all tiles side by side, at the rate of one tile's timing.
std::optional<DisplayMode> tiledMode(const std::vector<DisplayIdSection>& sections) {
    const auto tiled = std::find_if(sections.begin(), sections.end(),
                                    [](const DisplayIdSection& section) { return section.tiles.has_value(); });
    if (tiled == sections.end()) return std::nullopt;
    const DisplayIdTiles& tiles = *tiled->tiles;
    for (const DisplayIdSection& section : sections) {
        if (const std::optional<DisplayMode> tile = tileTiming(section, tiles)) {
            return DisplayMode{tile->width * tiles.horizontalTiles, tile->height * tiles.verticalTiles,
                               tile->refreshRate};
        }
    }
    QVSLogger::debug("The EDID describes a tiled monitor without a timing of one tile; its tiles are not joined.");
    return std::nullopt;
}

std::optional<DisplayMode> displayIdPreferredTiming(const std::vector<DisplayIdSection>& sections) {
    std::optional<DisplayMode> first;
    for (const DisplayIdSection& section : sections) {
        for (const DisplayIdTiming& timing : section.timings) {
            if (timing.preferred) return timing.mode;
            if (!first) first = timing.mode;
        }
    }
    return first;
}

std::optional<DisplayMode> preferredMode(const Edid& edid, const std::vector<DisplayIdSection>& sections) {
    if (std::optional<DisplayMode> whole = tiledMode(sections)) return whole;
    if (edid.firstDetailedTiming) return edid.firstDetailedTiming;
    return displayIdPreferredTiming(sections);
}

std::vector<DisplayIdSection> displayIdSections(const std::vector<std::string_view>& extensions) {
    std::vector<DisplayIdSection> sections;
    for (const std::string_view block : extensions) {
        if (byteAt(block, 0) == kDisplayIdExtensionTag) sections.push_back(readDisplayIdSection(block));
    }
    return sections;
}

bool isReadableBaseBlock(std::string_view bytes) {
    if (bytes.size() < Edid::kBlockSize) {
        QVSLogger::debug("The EDID holds %zu bytes, fewer than a base block; it is not read.", bytes.size());
        return false;
    }
    if (bytes.substr(0, kHeader.size()) != kHeader) {
        QVSLogger::debug("The EDID does not start with the EDID header; it is not read.");
        return false;
    }
    if (!hasValidChecksum(bytes.substr(0, Edid::kBlockSize))) {
        QVSLogger::debug("The EDID's base block has a wrong checksum; none of its values is trusted.");
        return false;
    }
    return true;
}

}  // namespace

std::optional<Edid> parseEdid(std::string_view bytes) {
    if (!isReadableBaseBlock(bytes)) return std::nullopt;
    const std::string_view base = bytes.substr(0, Edid::kBlockSize);
    Edid edid;
    edid.vendorId = vendorIdText(base);
    edid.monitorName = productName(base);
    edid.firstDetailedTiming = firstDetailedTiming(base);
    edid.bitsPerColour = bitsPerColour(base);
    edid.preferredMode = preferredMode(edid, displayIdSections(intactExtensions(bytes)));
    return edid;
}

}  // namespace tov
