#pragma once

// What a monitor says of itself in its EDID (the bytes the kernel gives in
// /sys/class/drm/card*-*/edid): a 128-byte base block, whose byte 126 counts the 128-byte
// extension blocks after it.
//
// How damaged bytes are read (each case leaves a debug line in the log):
// - shorter than a base block, without the fixed header, or with a wrong base-block
//   checksum: nothing is read. A flipped bit could change the maker's id or the mode, and
//   an inventory had rather list no monitor than a wrong one; the kernel likewise drops an
//   EDID whose base block is damaged.
// - fewer extension blocks than byte 126 claims: the base block and the extensions
//   present are read; the missing ones are not looked for.
// - an extension block with a wrong checksum: that block is ignored, the rest is read.
// - bytes after the claimed extensions: ignored.
// - a detailed timing that is absurd (no active pixels, a refresh rate of 0 or above
//   1000 Hz): no mode is taken from it.
// Interlaced timings are read as their field size and rate.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "discovery/formats/DisplayTiming.h"

namespace tov {

struct Edid {
    static constexpr std::size_t kBlockSize = 128;

    // Bytes 8-9 as one big-endian number in lower-case hex without leading zeros: the
    // maker's three letters packed ("10ac" for DEL, "610" for APP, "4914" for RHT).
    std::string vendorId;
    // The display product name descriptor (tag 0xFC); nothing when there is none or it is
    // blank.
    std::optional<std::string> monitorName;
    // The base block's first detailed timing descriptor.
    std::optional<DisplayMode> firstDetailedTiming;
    // The mode the whole monitor is meant to be shown at: for a tiled monitor the size of
    // all its tiles together, at the rate of a tile's own timing; else the first detailed
    // timing; else the DisplayID timing marked preferred, or the first DisplayID timing.
    std::optional<DisplayMode> preferredMode;
    // Bits per primary colour of an EDID 1.4 digital input (6 to 16); nothing when the
    // EDID does not say.
    std::optional<int> bitsPerColour;
};

// Nothing when the bytes hold no readable base block (see above).
std::optional<Edid> parseEdid(std::string_view bytes);

}  // namespace tov
