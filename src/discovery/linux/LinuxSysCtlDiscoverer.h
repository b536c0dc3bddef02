#pragma once

// The "sysctl" section on Linux: the user's time zone, the memory totals and the
// processor, each category an array of one record, with the same keys and codes as the
// macOS section.

#include <chrono>
#include <functional>
#include <memory>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"

namespace tov {

class LinuxSysCtlDiscoverer : public QVSystemInfoDiscoverer {
public:
    static constexpr const char* kSourceName = "sysctl";
    static constexpr const char* kTimezoneKey = "timezone";
    static constexpr const char* kMemoryKey = "memory";
    static constexpr const char* kCpuKey = "cpu";
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    // clock gives the scan's time, at which the zone's offset is taken.
    LinuxSysCtlDiscoverer(std::shared_ptr<SystemSource> source, Clock clock);

    std::string sourceName() const override { return kSourceName; }
    // "timezone", "memory", "cpu", in this order.
    DictionaryRef discoverInfo() override;

    ArrayRef discoverTimezone();
    ArrayRef discoveryMemory();
    ArrayRef discoverCpu();

private:
    std::shared_ptr<SystemSource> source_;
    Clock clock_;
};

}  // namespace tov
