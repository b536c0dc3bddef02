#pragma once

// A monitor's video mode as EDID and DisplayID describe it: a detailed timing gives the
// pixel clock, the active and blanking pixels of a line and the active and blanking lines
// of a frame; the refresh rate follows from them.

#include <cstdint>
#include <optional>

namespace tov {

struct DisplayMode {
    std::int64_t width = 0;
    std::int64_t height = 0;
    // Hz, rounded to the nearest integer.
    std::int64_t refreshRate = 0;

    bool operator==(const DisplayMode&) const = default;
};

struct DetailedTiming {
    std::uint64_t pixelClockHz = 0;
    std::uint32_t horizontalActive = 0;
    std::uint32_t horizontalBlanking = 0;
    std::uint32_t verticalActive = 0;
    std::uint32_t verticalBlanking = 0;
};

// Refresh rates outside this range mean corrupt bytes, not a monitor.
inline constexpr std::int64_t kMaximumRefreshRate = 1000;

// The mode of a timing; nothing when it is absurd (no active pixels or lines, or a refresh
// rate that rounds to 0 or exceeds kMaximumRefreshRate).
std::optional<DisplayMode> displayModeOfTiming(const DetailedTiming& timing);

}  // namespace tov
