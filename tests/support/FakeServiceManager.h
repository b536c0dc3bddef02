#pragma once

// A service manager that records what it is asked and keeps a listing the way launchd
// does: a loaded job is listed until it is unloaded.

#include <optional>
#include <string>
#include <vector>

#include "platform/ServiceManager.h"

namespace tov::testing {

class FakeServiceManager : public ServiceManager {
public:
    // "job <label> <program> <whole seconds> <run at load 0 or 1>", one line.
    std::string jobFileText(const std::string& label, const std::string& programPath, double interval,
                            bool runAtLoad) const override;
    std::optional<std::string> list(const std::string& label) override;
    std::string load(const std::string& jobFilePath) override;
    std::string unload(const std::string& jobFilePath) override;

    // The listing of a loaded job.
    static std::string listingOf(const std::string& label) { return "4242\t0\t" + label; }

    // What list answers now: "" (not listed), a listing, or nothing (the manager cannot be asked).
    std::optional<std::string> listing = "";
    // Whether a load makes the job listed (an unload always ends the listing).
    bool loadLists = true;
    // What load and unload answer.
    std::string loadOutput;
    std::string unloadOutput;
    // "list <label>", "load <path>", "unload <path>", in order.
    std::vector<std::string> calls;

    int count(const std::string& prefix) const;
};

}  // namespace tov::testing
