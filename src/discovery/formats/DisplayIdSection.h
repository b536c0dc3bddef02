#pragma once

// The parts of a DisplayID section (carried in an EDID extension block of tag 0x70) that
// tell a monitor's preferred mode: its detailed timings (type I of DisplayID 1.x, type VII
// of DisplayID 2.0) and its tiled topology. Apple panels and tiled monitors (a 5K monitor
// driven as two tiles over two connectors) describe their native mode only here.

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "discovery/formats/DisplayTiming.h"

namespace tov {

struct DisplayIdTiming {
    DisplayMode mode;
    bool preferred = false;
};

// One enclosure shown as a grid of tiles of equal size, each on its own connector.
struct DisplayIdTiles {
    std::int64_t horizontalTiles = 0;
    std::int64_t verticalTiles = 0;
    std::int64_t tileWidth = 0;
    std::int64_t tileHeight = 0;
};

struct DisplayIdSection {
    // In the order of the section; absurd timings are left out.
    std::vector<DisplayIdTiming> timings;
    std::optional<DisplayIdTiles> tiles;
};

inline constexpr std::uint8_t kDisplayIdExtensionTag = 0x70;

// The section in one 128-byte extension block. Data blocks are read only as far as both
// the section's stated length and the block reach; a data block that would run past them
// ends the reading. Other blocks are skipped.
DisplayIdSection readDisplayIdSection(std::string_view block);

}  // namespace tov
