#include "app/QVApplicationDelegate.h"

#include <cstdio>
#include <utility>

#include "app/QVDebugFileChange.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/QVSPolicy.h"
#include "common/QVSSettings.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

ServiceManager& managerOf(const QVApplicationDelegate::Options& options) {
    return options.serviceManager ? *options.serviceManager : ServiceManager::shared();
}

}  // namespace

QVApplicationDelegate::QVApplicationDelegate() : QVApplicationDelegate(Options {}) {}

QVApplicationDelegate::QVApplicationDelegate(Options options)
    : options_(std::move(options)),
      installer_(managerOf(options_)),
      scheduler_(*this, options_.clock),
      removableMedia_(
          scheduler_, [this](const std::string& mountPath) { return factory().volumeInfoForMountPath(mountPath); },
          [this] { return factory().volumeMountPaths(); },
          [this](VolumeWatcher::Handler handler) { return startVolumeWatcher(std::move(handler)); }) {}

// Everything that lives on the run loop goes before the loop does; the scan thread ends
// first, so that no step runs while the rest is taken down.
QVApplicationDelegate::~QVApplicationDelegate() {
    scanThread_.reset();
    removableMedia_.discardArrivalDepartureNotificationSystem();
    QVSPolicy& policy = QVSPolicy::sharedPolicy();
    policy.releaseFileSystemEventStream();
    policy.setDelegate(nullptr);
    debugFileSystemEventStream_.reset();
    runLoop_.reset();
}

std::string QVApplicationDelegate::environment() const {
    std::string text = std::string("Version:") + kVersion + "\n";
    text += "Outbox:" + Paths::outboxFolder() + "\n";
    const std::string configHash = QVSPolicy::sharedPolicy().md5();
    if (!configHash.empty()) text += "ConfigHash:" + configHash + "\n";
    return text;
}

void QVApplicationDelegate::forceFullScan() {
    std::fputs("Force Full Scan.\n", stdout);
    std::fflush(stdout);
    QVSReport::sharedManager().reportHardwareForced();
}

bool QVApplicationDelegate::lazyInstallAsDaemonWithExecutionInterval(double interval, bool runAtLoad) {
    return installer_.lazyInstallAsDaemonWithExecutionInterval(interval, runAtLoad);
}

bool QVApplicationDelegate::lazyUninstallDaemon() { return installer_.lazyUninstallDaemon(); }

bool QVApplicationDelegate::isInstalledAsDaemon() { return installer_.isInstalledAsDaemon(); }

QVDiscovererFactory::ConsoleUser QVApplicationDelegate::currentHumanUsername() {
    return factory().currentHumanUsername();
}

void QVApplicationDelegate::setExecutablePath(const std::string& path) { memoryGuard_.setExecutablePath(path); }

const std::string& QVApplicationDelegate::executablePath() const { return memoryGuard_.executablePath(); }

void QVApplicationDelegate::setMemoryThreshold(std::int64_t threshold) { memoryGuard_.setMemoryThreshold(threshold); }

std::int64_t QVApplicationDelegate::memoryThreshold() const { return memoryGuard_.memoryThreshold(); }

bool QVApplicationDelegate::runApplication() {
    runLoop_ = RunLoop::create();
    if (!runLoop_) {
        QVSLogger::critical("TOV cannot run: its event loop could not be set up.");
        return false;
    }
    runLoop_->post([this] { applicationDidFinishLaunching(); });
    return runLoop_->run();
}

void QVApplicationDelegate::applicationDidFinishLaunching() { startup(); }

void QVApplicationDelegate::applicationWillTerminate() { shutdown(); }

void QVApplicationDelegate::startup() {
    QVSLogger::information("TOV started.");
    runLoop_->setTerminationHandler([this] { catchSigterm(); });
    lazyInitializeDebugFileEventStream();
    scheduler_.startup();
    QVSSettings::defaultSettings();
    QVSReport::sharedManager().lazyCreateOutboxAndDeltaFolders();
    lazyInstallAsDaemonWithExecutionInterval(QVDaemonInstaller::kExecutionInterval, true);
    QVSPolicy& policy = QVSPolicy::sharedPolicy();
    policy.setDelegate(this);
    policy.lazyInitializeFileSystemEventStream(*runLoop_);
    lazyInitScanThread();
    removableMedia_.collectAllUSBPath();
    if (!policy.isPolicyFileExist()) {
        QVSLogger::information("The policy file does not exit.");
        return;
    }
    if (policy.eventDrivenScan()) removableMedia_.setupUsbArrivalDepartureNotificationSystem();
    if (policy.scanAfterRestart()) {
        QVSLogger::information("ScanAfterRestartKey is true, performScanTimerLogic.");
        performScanTimerLogic();
    }
}

void QVApplicationDelegate::shutdown() {
    QVSSettings::defaultSettings().synchronize();
    removableMedia_.discardArrivalDepartureNotificationSystem();
    if (scanThread_) scanThread_->cancel();
    QVSLogger::information("TOV finished.");
}

// The settings are persisted before anything else, so that a failure on the way out
// loses nothing; shut-down persists them again.
void QVApplicationDelegate::catchSigterm() {
    QVSSettings::defaultSettings().synchronize();
    terminate();
}

void QVApplicationDelegate::terminate() {
    if (!runLoop_) return;
    runLoop_->post([this] {
        if (terminating_) return;
        terminating_ = true;
        applicationWillTerminate();
        runLoop_->stop();
    });
}

void QVApplicationDelegate::didPolicyChanged(QVSPolicy& policy) {
    QVSLogger::debug("didPolicyChanged");
    const bool eventDriven = policy.eventDrivenScan();
    const bool registered = removableMedia_.isRegisteredForUsbDeviceEvents();
    if (eventDriven && !registered) removableMedia_.setupUsbArrivalDepartureNotificationSystem();
    if (!eventDriven && registered) removableMedia_.discardArrivalDepartureNotificationSystem();
    if (policy.isPolicyFileExist()) scheduler_.setPolicyIsChanged(true);
}

void QVApplicationDelegate::lazyInitScanThread() {
    if (scanThread_) return;
    scanThread_ = options_.tickSleep ? std::make_unique<QVScanThread>(scheduler_, options_.tickSleep)
                                     : std::make_unique<QVScanThread>(scheduler_);
    if (!scanThread_->start()) scanThread_.reset();
}

void QVApplicationDelegate::performScanTimerLogic() { scheduler_.performScanTimerLogic(); }

void QVApplicationDelegate::lazyInitializeDebugFileEventStream() {
    std::lock_guard<std::recursive_mutex> guard(monitor_);
    if (debugFileSystemEventStream_ || !runLoop_) return;
    debugFileSystemEventStream_ = FileWatcher::create(*runLoop_, Paths::debugTrigger(), kDebugFileLatency,
                                                      [] { didDebugFileChanged(Paths::debugTrigger()); });
}

bool QVApplicationDelegate::isBeyondMemoryConsumptionThreshold() {
    return memoryGuard_.isBeyondMemoryConsumptionThreshold();
}

void QVApplicationDelegate::spawnNewAppInstance() {
    memoryGuard_.spawnNewAppInstanceWithMemoryThreshold(memoryGuard_.memoryThreshold());
}

QVDiscovererFactory& QVApplicationDelegate::factory() {
    if (!options_.factory) options_.factory = std::make_shared<QVDiscovererFactory>();
    return *options_.factory;
}

std::unique_ptr<VolumeWatcher> QVApplicationDelegate::startVolumeWatcher(VolumeWatcher::Handler handler) {
    if (!runLoop_) return nullptr;
    return VolumeWatcher::create(*runLoop_, std::move(handler));
}

}  // namespace tov
