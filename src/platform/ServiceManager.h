#pragma once

// The system's service manager as the daemon's installer sees it: a job file, and "list",
// "load" and "unload" of the job. launchd on macOS; systemd (through its D-Bus API, so
// that no process is started) on Linux.

#include <optional>
#include <string>

namespace tov {

class ServiceManager {
public:
    // The platform's manager, unless a test set another.
    static ServiceManager& shared();
    // A test's manager (null restores the platform's); the caller keeps it alive.
    static void setForTesting(ServiceManager* manager);

    virtual ~ServiceManager() = default;

    // The text of the job file that runs programPath every interval seconds (the interval
    // truncated to whole seconds), and at boot when runAtLoad.
    virtual std::string jobFileText(const std::string& label, const std::string& programPath, double interval,
                                    bool runAtLoad) const = 0;
    // The manager's listing of the job labelled label, in launchctl's "PID Status Label"
    // form ("-" for the PID of a job that is not running): "" when the job is not listed,
    // nothing when the manager could not be asked.
    virtual std::optional<std::string> list(const std::string& label) = 0;
    // Loads the job whose file is at jobFilePath and starts it: "" when that went well,
    // else the manager's words about what went wrong.
    virtual std::string load(const std::string& jobFilePath) = 0;
    // Stops the job and unloads it: "" or the manager's words, as load.
    virtual std::string unload(const std::string& jobFilePath) = 0;
};

// The platform's own manager (launchd or systemd), made once; each platform folder defines it.
ServiceManager& platformServiceManager();

}  // namespace tov
