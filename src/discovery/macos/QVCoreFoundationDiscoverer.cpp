#include "discovery/macos/QVCoreFoundationDiscoverer.h"

#include <cstdint>
#include <utility>

#include "discovery/SystemFacts.h"
#include "discovery/macos/MacSystemVersion.h"
#include "model/QVCoreFoundationOperatingSystem.h"

namespace tov {
namespace {

constexpr std::chrono::seconds kUnknownBootTime{-1};
// 9999-12-31T23:59:59Z: later seconds are no date the report can write.
constexpr std::int64_t kLatestSeconds = 253402300799;

// The whole seconds under "seconds" of a fact; nothing when absent, not a number, or
// outside the dates the report can write.
std::optional<std::int64_t> secondsOf(const Value& fact) {
    const DictionaryRef times = fact.dictionary();
    const Value seconds = times ? times->get("seconds") : Value();
    if (!seconds.isNumber() || seconds.isBool()) return std::nullopt;
    const std::int64_t count = seconds.toInt64();
    if (count < 0 || count > kLatestSeconds) return std::nullopt;
    return count;
}

}  // namespace

QVCoreFoundationDiscoverer::QVCoreFoundationDiscoverer(std::shared_ptr<SystemSource> source)
    : source_(std::move(source)) {}

DictionaryRef QVCoreFoundationDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kOperatingSystemsKey, Value(discoverOperatingSystem()));
    return section;
}

ArrayRef QVCoreFoundationDiscoverer::discoverOperatingSystem() {
    const DictionaryRef version = readSystemVersion(*source_);
    const auto system = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    if (const std::optional<TimePoint> installed = installTime()) system->setOSInstallDate(*installed);
    system->setOSLastBootTime(bootTime());
    system->setBuild(systemVersionText(version, "ProductBuildVersion"));
    system->setEdition(systemVersionText(version, "ProductUserVisibleVersion"));
    return makeArray({Value(system)});
}

QVCoreFoundationDiscoverer::TimePoint QVCoreFoundationDiscoverer::bootTime() {
    // The microseconds are dropped: the date is the seconds alone.
    const std::optional<std::int64_t> seconds = secondsOf(source_->fact(facts::kSysctl, "kern.boottime"));
    return TimePoint(seconds ? std::chrono::seconds(*seconds) : kUnknownBootTime);
}

std::optional<QVCoreFoundationDiscoverer::TimePoint> QVCoreFoundationDiscoverer::installTime() {
    const std::optional<std::int64_t> seconds = secondsOf(source_->fact(facts::kBirthTime, kSetupDonePath));
    if (!seconds) return std::nullopt;
    return TimePoint(std::chrono::seconds(*seconds));
}

}  // namespace tov
