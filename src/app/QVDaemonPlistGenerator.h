#pragma once

// The launchd job file of tov, as XML property-list text.

#include <string>

namespace tov {

class QVDaemonPlistGenerator {
public:
    // The program launchd runs: tov in its component folder on macOS.
    static constexpr const char* kProgramPath = "/Library/Application Support/Quorvel/KELD/Components/TOV/tov";

    static std::string generatePlistWithExecutionInterval(double interval, bool runAtLoad);
    // The same job for another label and program path (escaped for XML).
    static std::string generatePlist(const std::string& label, const std::string& programPath, double interval,
                                     bool runAtLoad);
};

}  // namespace tov
