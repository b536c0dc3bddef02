#pragma once

// The object that carries every mode of the executable. So far it reports the
// environment; the daemon's start-up, shut-down and scanning join it later.

#include <string>

namespace tov {

class QVApplicationDelegate {
public:
    static constexpr const char* kVersion = "1.0.0.402";

    // "Version:", "Outbox:" and, when a policy exists, "ConfigHash:" lines, each ended by
    // a line feed.
    std::string environment() const;
};

}  // namespace tov
