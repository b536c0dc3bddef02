#include "discovery/linux/LinuxCoreFoundationDiscoverer.h"

#include <utility>

#include "common/QVSLogger.h"
#include "discovery/SystemFacts.h"
#include "discovery/linux/LinuxKeyValueFiles.h"
#include "discovery/linux/LinuxUname.h"
#include "discovery/linux/ProcStat.h"
#include "model/QVCoreFoundationOperatingSystem.h"

namespace tov {
namespace {

constexpr std::chrono::seconds kUnknownBootTime{-1};
// 9999-12-31T23:59:59Z: later seconds are no date the report can write.
constexpr std::int64_t kLatestSeconds = 253402300799;

std::optional<std::string> releaseSetting(const std::optional<OsReleaseFile>& file, const char* key) {
    if (!file) return std::nullopt;
    return printableSetting(file->release, key);
}

}  // namespace

LinuxCoreFoundationDiscoverer::LinuxCoreFoundationDiscoverer(std::shared_ptr<SystemSource> source)
    : source_(std::move(source)) {}

DictionaryRef LinuxCoreFoundationDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kOperatingSystemsKey, Value(discoverOperatingSystem()));
    return section;
}

ArrayRef LinuxCoreFoundationDiscoverer::discoverOperatingSystem() {
    const std::optional<OsReleaseFile> file = readOsReleaseFile(*source_);
    std::optional<std::string> build = releaseSetting(file, "BUILD_ID");
    if (!build) build = unameField(*source_, "release");

    const auto system = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    if (const std::optional<TimePoint> installed = installTime()) system->setOSInstallDate(*installed);
    system->setOSLastBootTime(bootTime());
    system->setBuild(build);
    system->setEdition(releaseSetting(file, "VERSION_ID"));
    return makeArray({Value(system)});
}

LinuxCoreFoundationDiscoverer::TimePoint LinuxCoreFoundationDiscoverer::bootTime() {
    const std::optional<std::int64_t> seconds = ProcStat::readBootTime(*source_);
    return TimePoint(seconds ? std::chrono::seconds(*seconds) : kUnknownBootTime);
}

std::optional<LinuxCoreFoundationDiscoverer::TimePoint> LinuxCoreFoundationDiscoverer::installTime() {
    for (const char* path : {"/", "/etc/machine-id"}) {
        if (std::optional<TimePoint> born = birthTime(path)) return born;
    }
    QVSLogger::debug("The install date is unknown: neither / nor /etc/machine-id has a birth time.");
    return std::nullopt;
}

std::optional<LinuxCoreFoundationDiscoverer::TimePoint> LinuxCoreFoundationDiscoverer::birthTime(
    const std::string& path) {
    const DictionaryRef birth = source_->fact(facts::kBirthTime, path).dictionary();
    const Value seconds = birth ? birth->get("seconds") : Value();
    if (!seconds.isNumber() || seconds.isBool()) return std::nullopt;
    const std::int64_t count = seconds.toInt64();
    if (count < 0 || count > kLatestSeconds) {
        QVSLogger::debug("The birth time of %s is out of range: %lld.", path.c_str(), static_cast<long long>(count));
        return std::nullopt;
    }
    return TimePoint(std::chrono::seconds(count));
}

}  // namespace tov
