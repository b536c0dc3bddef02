#pragma once

// systemd as the service manager, asked through its D-Bus API (sd-bus), so that listing,
// loading and unloading the unit start no process. The job is the unit named by the job
// file's name in /etc/systemd/system.

#include <optional>
#include <string>

#include "platform/ServiceManager.h"

namespace tov {

class SystemdServiceManager : public ServiceManager {
public:
    // Talks to the system bus.
    SystemdServiceManager() = default;
    // Talks to the bus at busAddress (a D-Bus address such as "unix:path=/x/bus"); for tests
    // that serve a manager of their own.
    explicit SystemdServiceManager(std::string busAddress);

    std::string jobFileText(const std::string& label, const std::string& programPath, double interval,
                            bool runAtLoad) const override;
    // "<MainPID or ->\t0\t<label>" while systemd has the unit label.service loaded; "" when it
    // has not; nothing when the bus or systemd could not be asked.
    std::optional<std::string> list(const std::string& label) override;
    // Reloads the unit files, enables the unit and starts it.
    std::string load(const std::string& jobFilePath) override;
    // Stops the unit and disables it.
    std::string unload(const std::string& jobFilePath) override;

    // The unit's name: the job file's name.
    static std::string unitName(const std::string& jobFilePath);

private:
    std::string busAddress_;
};

}  // namespace tov
