#include "app/QVDaemonInstaller.h"

#include <cerrno>
#include <optional>
#include <system_error>
#include <vector>

#include "app/QVAppDaemonUtil.h"
#include "common/FileAccess.h"
#include "common/Paths.h"
#include "common/QVFileUtil.h"
#include "common/QVSLogger.h"

namespace tov {
namespace {

// The job file is written in ISO Latin-1: each character of the UTF-8 text up to U+00FF
// becomes one byte. Nothing for text that is not UTF-8 or holds a character beyond.
std::optional<std::string> latin1FromUtf8(const std::string& text) {
    std::string bytes;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto lead = static_cast<unsigned char>(text[index]);
        if (lead < 0x80) {
            bytes += static_cast<char>(lead);
            continue;
        }
        // Two-byte sequences from C2 80 to C3 BF are U+0080 to U+00FF.
        if ((lead != 0xC2 && lead != 0xC3) || index + 1 == text.size()) return std::nullopt;
        const auto next = static_cast<unsigned char>(text[index + 1]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        bytes += static_cast<char>(((lead & 0x03) << 6) | (next & 0x3F));
        ++index;
    }
    return bytes;
}

bool writeJobFile(const std::string& path, const std::string& contents) {
    const std::optional<std::string> bytes = latin1FromUtf8(contents);
    if (!bytes) {
        QVSLogger::debug("The daemon config file text cannot be written in ISO Latin-1.");
        return false;
    }
    if (!writeFileAtomically(path, *bytes)) {
        QVSLogger::debug("Writing [%s] failed: %s", path.c_str(), std::system_category().message(errno).c_str());
        return false;
    }
    return true;
}

// Root only: owner root, group 0, mode 0600. False, with the error logged, when that failed.
bool restrictToRoot(const std::string& path) {
    QVFileUtilErrorSlot error;
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, &error);
    if (error && error->domain == QVFileUtilError::kDomain) {
        QVSLogger::error("%s", error->message.c_str());
        return false;
    }
    return true;
}

}  // namespace

QVDaemonInstaller::QVDaemonInstaller() : QVDaemonInstaller(ServiceManager::shared()) {}

QVDaemonInstaller::QVDaemonInstaller(ServiceManager& manager) : manager_(manager) {}

bool QVDaemonInstaller::lazyInstallAsDaemonWithExecutionInterval(double interval, bool runAtLoad) {
    const std::string contents = manager_.jobFileText(kDaemonLabel, Paths::executable(), interval, runAtLoad);
    return lazyInstallAsDaemonWithName(kDaemonLabel, Paths::jobFile(), contents);
}

bool QVDaemonInstaller::lazyInstallAsDaemonWithName(const std::string& name, const std::string& configPath,
                                                    const std::string& plistContents) {
    if (name.empty() || configPath.empty() || plistContents.empty()) {
        QVSLogger::debug("The daemon is not installed without a name, a config file path and its contents.");
        return false;
    }
    // Asked before the file is written: the answer is about the manager, not the file.
    const bool needsLoading = needsInstallationAsDaemonWithDaemonName(name);
    if (!writeJobFile(configPath, plistContents)) {
        QVSLogger::error("Filed to write Daemon config file.  Maybe not running as root?");
        return false;
    }
    if (!restrictToRoot(configPath)) return false;
    if (!needsLoading) return true;
    const std::string output = manager_.load(configPath);
    if (!output.empty()) {
        QVSLogger::warning("Loading the daemon results: [%s].", output.c_str());
    } else {
        QVSLogger::debug("Successfully loaded the daemon.");
    }
    return true;
}

bool QVDaemonInstaller::lazyUninstallDaemon() { return lazyUninstallDaemonWithName(kDaemonLabel, Paths::jobFile()); }

bool QVDaemonInstaller::lazyUninstallDaemonWithName(const std::string& name, const std::string& configPath) {
    if (name.empty() || configPath.empty()) return false;
    if (isInstalledAsDaemonWithDaemonName(name)) {
        QVSLogger::debug("Will attempt to remove the daemon.");
        const std::string output = manager_.unload(configPath);
        if (!output.empty()) {
            QVSLogger::warning("Unloading the daemon results: [%s].", output.c_str());
        } else {
            QVSLogger::debug("Successfully removed the daemon.");
        }
    }
    if (!itemExists(configPath)) {
        QVSLogger::debug("The daemon plist file at path [%s] does not exist.", configPath.c_str());
        return true;
    }
    QVSLogger::debug("Will attempt to remove the daemon plist file at path [%s].", configPath.c_str());
    if (!itemExists(configPath)) return true;
    if (!removeFile(configPath)) {
        QVSLogger::error("Could not remove the daemon plist file, with error [%s].",
                         std::system_category().message(errno).c_str());
        return false;
    }
    QVSLogger::debug("Successfully removed the daemon plist file.");
    return true;
}

bool QVDaemonInstaller::needsInstallationAsDaemonWithDaemonName(const std::string& name) {
    const std::optional<std::string> listing = manager_.list(name);
    return !listing || listing->empty();
}

bool QVDaemonInstaller::isInstalledAsDaemon() { return isInstalledAsDaemonWithDaemonName(kDaemonLabel); }

bool QVDaemonInstaller::isInstalledAsDaemonWithDaemonName(const std::string& name) {
    if (name.empty()) return false;
    const std::optional<std::string> listing = manager_.list(name);
    if (!listing || listing->empty()) return false;
    return QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(name, *listing);
}

}  // namespace tov
