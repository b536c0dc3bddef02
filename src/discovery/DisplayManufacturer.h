#pragma once

// Who made a display, from its vendor id, as both platforms report it: the id of Apple
// ("610") names "Apple" and fixes the refresh rate at 60 Hz whatever was read (so does a
// missing id, which compares as equal to Apple's); the id of Dell ("10ac") names "DELL";
// any other display is named "<description>(<vendor id>)". Ids compare without regard to
// letter case.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

struct DisplayManufacturer {
    std::string name;
    // The refresh rate is reported as 60 Hz, whatever was read.
    bool refreshAtSixty = false;
};

DisplayManufacturer displayManufacturer(std::string_view description, const std::optional<std::string>& vendorId);

// The refresh rate as text (the system profiler's "60.00Hz") or as a number, after the rule.
std::string displayRefreshText(const DisplayManufacturer& manufacturer, const std::string& refreshText);
std::int64_t displayRefreshRate(const DisplayManufacturer& manufacturer, std::int64_t refreshRate);

}  // namespace tov
