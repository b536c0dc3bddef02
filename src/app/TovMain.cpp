#include "app/TovMain.h"

#include <unistd.h>

#include <cstdio>
#include <string>

#include "app/InventoryPrinter.h"
#include "app/LogLevelChoice.h"
#include "app/QVApplicationDelegate.h"
#include "app/QVDaemonInstaller.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/SystemLog.h"
#include "common/TextUtils.h"
#include "platform/DebuggerGuard.h"

namespace tov {
namespace {

constexpr const char* kLogFileName = "tov";
constexpr std::int64_t kMaximumLogFiles = 5;

void setUpLogger(const std::string& level) {
    QVSLogger::setFilename(kLogFileName, Paths::logsFolder());
    QVSLogger::setMaximumLogFileCount(kMaximumLogFiles);
    QVSLogger::setMinimumLogLevel(level);
}

void writeToStandardOutput(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

bool isForcedFullScanCall(const QVSAppArgument& arguments) {
    return arguments.containArgumentFlag("forcefullscan") || arguments.containArgumentFlag("-forcefullscan");
}

// Modes whose machinery has not been built into this executable yet.
int refuseUnavailableMode(const char* mode) {
    QVSLogger::error("The %s mode is not available yet in this version of tov.", mode);
    return 1;
}

int dispatch(const QVSAppArgument& arguments, QVApplicationDelegate& delegate) {
    if (arguments.isEnvironmentCall()) {
        writeToStandardOutput(delegate.environment());
        return 0;
    }
    if (arguments.isInstallationCall()) {
        QVDaemonInstaller().lazyInstallAsDaemonWithExecutionInterval(QVDaemonInstaller::kExecutionInterval, true);
        return 0;
    }
    if (arguments.isUninstallationCall()) {
        QVDaemonInstaller().lazyUninstallDaemon();
        return 0;
    }
    if (InventoryPrinter::isPrintRequest(arguments)) return InventoryPrinter::print(arguments, stdout);
    if (isForcedFullScanCall(arguments)) {
        delegate.forceFullScan();
        return 0;
    }
    return refuseUnavailableMode("daemon");
}

}  // namespace

int runTov(int argc, char** argv) {
    denyDebuggerAttachment();
    if (::geteuid() != 0) {
        writeToSystemLog("tov must be executed with root user privileges.");
        return 1;
    }
    QVApplicationDelegate delegate;
    const QVSAppArgument arguments(argc, argv);
    setUpLogger(chooseLogLevel(arguments, Paths::debugTrigger()));
    return dispatch(arguments, delegate);
}

std::int64_t memoryThreshold(const QVSAppArgument& arguments) {
    const std::optional<std::string> text = arguments.findArgumentAfterOptionFlag("-mm");
    const std::int64_t threshold = text ? leadingIntegerValue(*text) : 0;
    return threshold == 0 ? kDefaultMemoryThreshold : threshold;
}

}  // namespace tov
