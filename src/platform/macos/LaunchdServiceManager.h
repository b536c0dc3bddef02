#pragma once

// launchd as the service manager, through /bin/launchctl: the job is the property list at
// the job file's path.

#include <optional>
#include <string>

#include "platform/ServiceManager.h"

namespace tov {

class LaunchdServiceManager : public ServiceManager {
public:
    std::string jobFileText(const std::string& label, const std::string& programPath, double interval,
                            bool runAtLoad) const override;
    // The lines of "launchctl list" that hold label, each with its line feed.
    std::optional<std::string> list(const std::string& label) override;
    // "launchctl load -w <path>": what it printed.
    std::string load(const std::string& jobFilePath) override;
    // "launchctl unload <path>": what it printed.
    std::string unload(const std::string& jobFilePath) override;
};

}  // namespace tov
