#include "discovery/TimeZoneText.h"

#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace tov {
namespace {

constexpr const char* kNameLocale = "en_US_POSIX";

UDate icuDateOf(std::chrono::system_clock::time_point instant) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(instant.time_since_epoch());
    return static_cast<UDate>(milliseconds.count());
}

}  // namespace

std::string timeZoneStringWithTimeZone(std::int64_t offsetSeconds, std::string_view standardName) {
    // Integer division truncates toward zero; only the magnitude of the hours is written.
    const auto hours = static_cast<std::int32_t>(offsetSeconds / 3600);
    const long magnitude = std::labs(static_cast<long>(hours));
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "UTC-0%ld:00 ", magnitude);
    return std::string(prefix) + std::string(standardName);
}

std::optional<ZoneAtInstant> zoneAtInstant(std::string_view zoneId, std::chrono::system_clock::time_point instant) {
    const icu::UnicodeString id = icu::UnicodeString::fromUTF8(icu::StringPiece(zoneId.data(), static_cast<std::int32_t>(zoneId.size())));
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(id));
    if (!zone || *zone == icu::TimeZone::getUnknown()) return std::nullopt;

    std::int32_t rawOffset = 0;
    std::int32_t daylightOffset = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone->getOffset(icuDateOf(instant), false, rawOffset, daylightOffset, status);
    if (U_FAILURE(status)) return std::nullopt;

    icu::UnicodeString name;
    zone->getDisplayName(false, icu::TimeZone::LONG, icu::Locale(kNameLocale), name);
    ZoneAtInstant result;
    result.offsetSeconds = (rawOffset + daylightOffset) / 1000;
    name.toUTF8String(result.standardName);
    return result;
}

}  // namespace tov
