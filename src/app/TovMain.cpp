#include "app/TovMain.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "app/InstanceWait.h"
#include "app/InventoryPrinter.h"
#include "app/LogLevelChoice.h"
#include "app/QVAppDaemonUtil.h"
#include "app/QVApplicationDelegate.h"
#include "app/QVDaemonInstaller.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/SystemLog.h"
#include "common/TextUtils.h"
#include "platform/DebuggerGuard.h"
#include "platform/RunLoop.h"

namespace tov {
namespace {

constexpr const char* kLogFileName = "tov";
constexpr std::int64_t kMaximumLogFiles = 5;

// The summary is a view for people that writes nothing at all, not even a log: its logger
// has no folder, so its lines are dropped (failures still reach standard error).
void setUpLogger(const std::string& level, const QVSAppArgument& arguments) {
    QVSLogger::setFilename(kLogFileName, arguments.isSummaryCall() ? "" : Paths::logsFolder());
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

void sleepHalfASecond() { std::this_thread::sleep_for(std::chrono::milliseconds(500)); }

// Without seat0 (a server, a virtual machine) there is no console and the daemon runs;
// with one, it runs only while a user other than root is logged in there.
bool consoleAllowsRun(QVApplicationDelegate& delegate) {
    const QVDiscovererFactory::ConsoleUser user = delegate.currentHumanUsername();
    if (!user.machineHasConsole) return true;
    return !user.name.empty() && user.name != "root";
}

// The daemon. It ends the process itself once the application has terminated: the scan
// thread is not waited for (every file it writes is replaced whole, so it may stop at any
// instant), and nothing is destroyed under its feet.
int runDaemon(const QVSAppArgument& arguments, QVApplicationDelegate& delegate, const char* executablePath) {
    RunLoop::blockTerminationSignal();
    if (!arguments.containArgumentFlag("re") &&
        !waitForOtherInstances(QVAppDaemonUtil::tovInstanceCountExcludingCurrentProcess, sleepHalfASecond)) {
        return 0;
    }
    if (!consoleAllowsRun(delegate)) return 0;
    delegate.setMemoryThreshold(memoryThreshold(arguments));
    delegate.setExecutablePath(executablePath ? executablePath : "");
    const bool ran = delegate.runApplication();
    std::fflush(nullptr);
    std::_Exit(ran ? 0 : 1);
}

int dispatch(const QVSAppArgument& arguments, QVApplicationDelegate& delegate, const char* executablePath) {
    if (arguments.isEnvironmentCall()) {
        writeToStandardOutput(delegate.environment());
        return 0;
    }
    if (arguments.isInstallationCall()) {
        delegate.lazyInstallAsDaemonWithExecutionInterval(QVDaemonInstaller::kExecutionInterval, true);
        return 0;
    }
    if (arguments.isUninstallationCall()) {
        delegate.lazyUninstallDaemon();
        return 0;
    }
    if (InventoryPrinter::isPrintRequest(arguments)) return InventoryPrinter::print(arguments, stdout);
    if (isForcedFullScanCall(arguments)) {
        delegate.forceFullScan();
        return 0;
    }
    return runDaemon(arguments, delegate, executablePath);
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
    setUpLogger(chooseLogLevel(arguments, Paths::debugTrigger()), arguments);
    return dispatch(arguments, delegate, argc > 0 ? argv[0] : nullptr);
}

std::int64_t memoryThreshold(const QVSAppArgument& arguments) {
    const std::optional<std::string> text = arguments.findArgumentAfterOptionFlag("-mm");
    const std::int64_t threshold = text ? leadingIntegerValue(*text) : 0;
    return threshold == 0 ? kDefaultMemoryThreshold : threshold;
}

}  // namespace tov
