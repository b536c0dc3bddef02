#pragma once

// The user's time zone as the "sysctl" section writes it, on every platform: the whole
// hours of the zone's offset with a fixed "UTC-0" prefix, then the zone's long standard
// name in English. The text is compared between scans, so its odd form is kept as it is.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

// "UTC-0<h>:00 <name>", h being the magnitude of the offset's whole hours (truncated
// toward zero): +19800 s and -18000 s both give "UTC-05:00", -36000 s "UTC-010:00".
std::string timeZoneStringWithTimeZone(std::int64_t offsetSeconds, std::string_view standardName);

// A zone as it stands at one instant.
struct ZoneAtInstant {
    // Offset from GMT in seconds, daylight-saving time included when in effect.
    std::int32_t offsetSeconds = 0;
    // The long standard (non-daylight) name for the locale "en_US_POSIX".
    std::string standardName;
};

// The zone with the given id ("Europe/Berlin") at the instant; nothing when the time-zone
// database does not know the id.
std::optional<ZoneAtInstant> zoneAtInstant(std::string_view zoneId, std::chrono::system_clock::time_point instant);

}  // namespace tov
