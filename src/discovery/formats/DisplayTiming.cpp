#include "discovery/formats/DisplayTiming.h"

namespace tov {

std::optional<DisplayMode> displayModeOfTiming(const DetailedTiming& timing) {
    if (timing.horizontalActive == 0 || timing.verticalActive == 0) return std::nullopt;
    const std::uint64_t lineLength = std::uint64_t{timing.horizontalActive} + timing.horizontalBlanking;
    const std::uint64_t frameLines = std::uint64_t{timing.verticalActive} + timing.verticalBlanking;
    const std::uint64_t pixelsPerFrame = lineLength * frameLines;
    const std::uint64_t refreshRate = (timing.pixelClockHz + pixelsPerFrame / 2) / pixelsPerFrame;
    if (refreshRate == 0 || refreshRate > static_cast<std::uint64_t>(kMaximumRefreshRate)) return std::nullopt;
    return DisplayMode{timing.horizontalActive, timing.verticalActive, static_cast<std::int64_t>(refreshRate)};
}

}  // namespace tov
