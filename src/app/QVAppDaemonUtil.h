#pragma once

// Process utilities of the daemon: other running instances, its own memory, and the
// reading of the service manager's job listing.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tov {

class QVAppDaemonUtil {
public:
    // Processes whose name holds "tov" in any letter case, this one excepted.
    static std::int64_t tovInstanceCountExcludingCurrentProcess();
    // The count in the output of "ps acx | grep -i tov" for the process currentPid.
    static std::int64_t instanceCountInProcessList(const std::string& output, long currentPid);
    // Resident bytes of this process; 0 when they cannot be measured either way.
    static double memoryConsumptionOfCurrentProcess();
    // The memory of the process currentPid read from "ps aux | grep -i tov" output, as its
    // percentage of ram; 0 when no line is that process's.
    static double memoryFromProcessList(const std::string& output, long currentPid, std::uint64_t ram);
    static std::uint64_t discoverRam();

    static std::optional<std::string> firstNonEmptyComponentOfArray(const std::vector<std::string>& components);
    static std::optional<std::string> lastNonEmptyComponentOfArray(const std::vector<std::string>& components);
    static bool isProcessNamedInstalledAsLaunchDaemonWithListOutput(const std::string& name,
                                                                     const std::string& output);
    static bool isProcessNamedRunningAsLaunchDaemonWithListOutput(const std::string& name, std::int32_t pid,
                                                                  const std::string& output);
};

}  // namespace tov
