#pragma once

// Keeps tov registered with the system's service manager: writes the job file (on every
// call, so an edited or deleted file is repaired), loads the job when the manager does not
// list it, and removes both on request.

#include <string>

#include "platform/ServiceManager.h"

namespace tov {

class QVDaemonInstaller {
public:
    static constexpr const char* kDaemonLabel = "com.quorvel.keldservice.tov";
    static constexpr double kExecutionInterval = 60;

    // The manager defaults to ServiceManager::shared().
    QVDaemonInstaller();
    explicit QVDaemonInstaller(ServiceManager& manager);

    bool lazyInstallAsDaemonWithExecutionInterval(double interval, bool runAtLoad);
    bool lazyInstallAsDaemonWithName(const std::string& name, const std::string& configPath,
                                     const std::string& plistContents);
    bool lazyUninstallDaemon();
    bool lazyUninstallDaemonWithName(const std::string& name, const std::string& configPath);

    bool needsInstallationAsDaemonWithDaemonName(const std::string& name);
    bool isInstalledAsDaemon();
    bool isInstalledAsDaemonWithDaemonName(const std::string& name);

private:
    ServiceManager& manager_;
};

}  // namespace tov
