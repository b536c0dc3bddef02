#pragma once

// The "corefoundation" section on Linux: { "operatingSystems": [ one record ] } with the
// system's edition (VERSION_ID), build (BUILD_ID, else the kernel release), install date
// (birth of "/", else of /etc/machine-id, written at installation) and last boot time
// (btime of /proc/stat).

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"

namespace tov {

class LinuxCoreFoundationDiscoverer : public QVSystemInfoDiscoverer {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    static constexpr const char* kOperatingSystemsKey = "operatingSystems";

    explicit LinuxCoreFoundationDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return "corefoundation"; }
    DictionaryRef discoverInfo() override;

    // An array of one QVCoreFoundationOperatingSystem.
    ArrayRef discoverOperatingSystem();
    // The boot time; one second before 1970-01-01 UTC when unknown.
    TimePoint bootTime();
    // When the system was installed; nothing when no file tells.
    std::optional<TimePoint> installTime();

private:
    std::optional<TimePoint> birthTime(const std::string& path);

    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
