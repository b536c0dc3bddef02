#pragma once

// The launchd job file of tov, as XML property-list text.

#include <string>

namespace tov {

class QVDaemonPlistGenerator {
public:
    static std::string generatePlistWithExecutionInterval(double interval, bool runAtLoad);
};

}  // namespace tov
