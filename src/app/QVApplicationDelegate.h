#pragma once

// The object that carries every mode of the executable. So far it reports the environment
// and runs the forced full scan; the daemon's start-up, shut-down and scanning join it later.

#include <string>

#include "common/Version.h"

namespace tov {

class QVApplicationDelegate {
public:
    static constexpr const char* kVersion = kTovVersion;

    // "Version:", "Outbox:" and, when a policy exists, "ConfigHash:" lines, each ended by
    // a line feed.
    std::string environment() const;
    // Writes "Force Full Scan." and a line feed to standard output, then runs a forced full
    // scan and its report decision on this thread.
    void forceFullScan();
};

}  // namespace tov
