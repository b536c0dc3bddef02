#pragma once

// The "sysctl" section on macOS: the user's time zone, the memory totals and the
// processor, each category an array of one record, read from kernel parameters, the
// clock's zone, vm_stat and the hardware profile. No read is checked for errors: a
// parameter that is missing or of the wrong type reads as 0 (or "" for text), as a failed
// kernel call leaves its zeroed variable. Nothing is logged.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"

namespace tov {

class QVSysCtlHardwareInfoDiscoverer : public QVSystemInfoDiscoverer {
public:
    static constexpr const char* kSourceName = "sysctl";
    static constexpr const char* kTimezoneKey = "timezone";
    static constexpr const char* kMemoryKey = "memory";
    static constexpr const char* kCpuKey = "cpu";
    static constexpr const char* kVmStatPath = "/usr/bin/vm_stat";

    explicit QVSysCtlHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return kSourceName; }
    // "timezone", "memory", "cpu", in this order.
    DictionaryRef discoverInfo() override;

    ArrayRef discoverTimezone();
    ArrayRef discoveryMemory();
    ArrayRef discoverCpu();

    // A size text of the system profiler in kilobytes: "256 KB" gives "256", "4 MB"
    // "4096". The unit is recognised in any letter case at the end but looked for in
    // upper case only, so "12 mb" stays "12 mb"; any other text ("8 GB") and an absent one
    // come back unchanged.
    static std::optional<std::string> getKBValueFromSizeString(const std::optional<std::string>& size);

    // What vm_stat prints; "" when it cannot be run.
    static std::string vmStatResponse(SystemSource& source);
    // Stores the page counts of "Pages active:" and "Pages wired down:" as numbers under
    // "active" and "wired". Words are separated by runs of blanks. A count is read up to
    // its full stop; a line whose count has no full stop is left out (vm_stat always
    // prints one, so such a line is cut short). Nothing happens for a null dictionary or
    // an empty text.
    static void populateDictionaryWithVmStatResponse(Dictionary* dictionary, const std::string& response);
    // One line's words: see above.
    static void populateDictionaryWithFields(Dictionary* dictionary, const std::vector<std::string>& fields);

private:
    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
