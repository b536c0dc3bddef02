#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <optional>
#include <string>

#include "common/QVSLogger.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

namespace tov {
namespace {

// The process's local time zone as the system has it now. CoreFoundation keeps the zone
// it first determined for the life of the process; the daemon runs for weeks, so the
// cached zone is cleared first and a zone changed since the last scan is seen.
OwnedCFReference<CFTimeZoneRef> currentLocalZone() {
    CFTimeZoneResetSystem();
    return OwnedCFReference<CFTimeZoneRef>(CFTimeZoneCopyDefault());
}

// The zone's long standard name in the locale "en_US_POSIX", the same on every machine
// whatever its language.
std::optional<std::string> standardNameOf(CFTimeZoneRef zone) {
    const OwnedCFReference<CFLocaleRef> locale(CFLocaleCreate(kCFAllocatorDefault, CFSTR("en_US_POSIX")));
    if (!locale) return std::nullopt;
    const OwnedCFReference<CFStringRef> name(
        CFTimeZoneCopyLocalizedName(zone, kCFTimeZoneNameStyleStandard, locale.get()));
    return stringOfCFString(name.get());
}

}  // namespace

Value localTimeZoneFact(const std::string& /*key*/) {
    const OwnedCFReference<CFTimeZoneRef> zone = currentLocalZone();
    if (!zone) {
        QVSLogger::debug("The system has no local time zone.");
        return Value();
    }
    DictionaryRef fact = makeDictionary();
    if (const std::optional<std::string> identifier = stringOfCFString(CFTimeZoneGetName(zone.get()))) {
        fact->set("identifier", *identifier);
    }
    const CFTimeInterval offset = CFTimeZoneGetSecondsFromGMT(zone.get(), CFAbsoluteTimeGetCurrent());
    fact->set("offsetSeconds", clampedInteger<std::int64_t>(offset));
    if (const std::optional<std::string> standardName = standardNameOf(zone.get())) {
        fact->set("standardName", *standardName);
    } else {
        QVSLogger::debug("The local time zone has no standard name in the locale en_US_POSIX.");
    }
    return fact;
}

}  // namespace tov
