#include "model/QVCoreFoundationOperatingSystem.h"

#include "model/UtcDateText.h"

namespace tov {
namespace {

constexpr std::string_view kInstallDateKey = "installDate";
constexpr std::string_view kLastBootTimeKey = "lastBootTime";
constexpr std::string_view kBuildKey = "build";
constexpr std::string_view kEditionKey = "edition";

}  // namespace

std::shared_ptr<QVCoreFoundationOperatingSystem> QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem() {
    return std::make_shared<QVCoreFoundationOperatingSystem>();
}

std::optional<QVCoreFoundationOperatingSystem::TimePoint> QVCoreFoundationOperatingSystem::osInstallDate() const {
    return dateForKey(kInstallDateKey);
}

void QVCoreFoundationOperatingSystem::setOSInstallDate(TimePoint installDate) {
    setValue(kInstallDateKey, Value(formatUtcDate(installDate)));
}

void QVCoreFoundationOperatingSystem::setOSInstallDateAsString(std::optional<std::string_view> installDate) {
    setStringValue(installDate, kInstallDateKey);
}

std::optional<QVCoreFoundationOperatingSystem::TimePoint> QVCoreFoundationOperatingSystem::osLastBootTime() const {
    return dateForKey(kLastBootTimeKey);
}

void QVCoreFoundationOperatingSystem::setOSLastBootTime(TimePoint lastBootTime) {
    setValue(kLastBootTimeKey, Value(formatUtcDate(lastBootTime)));
}

void QVCoreFoundationOperatingSystem::setOSLastBootTimeAsString(std::optional<std::string_view> lastBootTime) {
    setStringValue(lastBootTime, kLastBootTimeKey);
}

std::optional<std::string> QVCoreFoundationOperatingSystem::build() const { return stringForKey(kBuildKey); }
void QVCoreFoundationOperatingSystem::setBuild(std::optional<std::string_view> build) {
    setStringValue(build, kBuildKey);
}

std::optional<std::string> QVCoreFoundationOperatingSystem::edition() const { return stringForKey(kEditionKey); }
void QVCoreFoundationOperatingSystem::setEdition(std::optional<std::string_view> edition) {
    setStringValue(edition, kEditionKey);
}

std::optional<std::string> QVCoreFoundationOperatingSystem::identifier() const {
    return stringForKey(kInstallDateKey);
}

bool QVCoreFoundationOperatingSystem::isEqual(const QVSystemInfo& other) const {
    if (!otherIsOfMyKind(other)) return false;
    const std::optional<TimePoint> mine = osInstallDate();
    const std::optional<TimePoint> theirs = static_cast<const QVCoreFoundationOperatingSystem&>(other).osInstallDate();
    if (!mine || !theirs || *mine != *theirs) return false;
    return stringEquals(other, kBuildKey) && stringEquals(other, kEditionKey);
}

std::optional<QVCoreFoundationOperatingSystem::TimePoint> QVCoreFoundationOperatingSystem::dateForKey(
    std::string_view key) const {
    const std::optional<std::string> text = stringForKey(key);
    if (!text || text->empty()) return std::nullopt;
    return parseUtcDate(*text);
}

}  // namespace tov
