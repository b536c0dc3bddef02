#include "model/QVSysCtlTimeZone.h"

namespace tov {
namespace {

constexpr std::string_view kTimeZoneKey = "userTimezone";

}  // namespace

std::shared_ptr<QVSysCtlTimeZone> QVSysCtlTimeZone::sysCtlTimeZone() { return std::make_shared<QVSysCtlTimeZone>(); }

std::optional<std::string> QVSysCtlTimeZone::timeZone() const { return stringForKey(kTimeZoneKey); }
void QVSysCtlTimeZone::setTimeZone(std::optional<std::string_view> timeZone) {
    setStringValue(timeZone, kTimeZoneKey);
}

bool QVSysCtlTimeZone::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kTimeZoneKey);
}

}  // namespace tov
