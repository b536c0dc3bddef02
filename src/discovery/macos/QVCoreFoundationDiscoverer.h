#pragma once

// The "corefoundation" section on a Mac: { "operatingSystems": [ one record ] } with the
// system's edition (ProductUserVisibleVersion) and build (ProductBuildVersion) from the
// system version file, the install date (creation of "/private/var/db/.AppleSetupDone",
// written when setup finished) and the last boot time (the kernel's kern.boottime).

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"

namespace tov {

class QVCoreFoundationDiscoverer : public QVSystemInfoDiscoverer {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    static constexpr const char* kSourceName = "corefoundation";
    static constexpr const char* kOperatingSystemsKey = "operatingSystems";
    static constexpr const char* kSetupDonePath = "/private/var/db/.AppleSetupDone";

    explicit QVCoreFoundationDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return kSourceName; }
    DictionaryRef discoverInfo() override;

    // An array of one QVCoreFoundationOperatingSystem.
    ArrayRef discoverOperatingSystem();
    // The boot time in whole seconds; one second before 1970-01-01 UTC when unknown.
    TimePoint bootTime();
    // When setup finished; nothing when the file's creation date is unknown.
    std::optional<TimePoint> installTime();

private:
    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
