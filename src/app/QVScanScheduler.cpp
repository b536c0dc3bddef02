#include "app/QVScanScheduler.h"

#include <algorithm>

#include "app/QVDaemonInstaller.h"
#include "common/QVSLogger.h"
#include "common/QVSPolicy.h"
#include "common/QVSSettings.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

bool hasEntries(const DictionaryRef& dictionary) { return dictionary && !dictionary->empty(); }

}  // namespace

QVScanScheduler::QVScanScheduler(Host& host, Clock clock)
    : host_(host), clock_(clock ? std::move(clock) : Clock(std::chrono::system_clock::now)) {}

void QVScanScheduler::startup() {
    needStartupScan_ = true;
    nextDeltaScanTime_ = referenceDateNow() + kDeltaScanIntervalSeconds;
}

void QVScanScheduler::performScanTimerLogic() {
    std::unique_lock<std::mutex> lock(scanLock_, std::try_to_lock);
    if (!lock.owns_lock()) {
        QVSLogger::debug("Scan in progress. Quit performScanTimerLogic.");
        return;
    }
    host_.lazyInstallAsDaemonWithExecutionInterval(QVDaemonInstaller::kExecutionInterval, true);
    if (host_.isBeyondMemoryConsumptionThreshold()) {
        if (host_.isInstalledAsDaemon()) {
            QVSLogger::information(
                "TOV is consuming too much memory and will be terminated.  LaunchDaemon will respawn it shortly.");
        } else {
            QVSLogger::information(
                "TOV is consuming too much memory and will be terminated.  It will be manually respawned.");
            host_.spawnNewAppInstance();
        }
        // Terminating may wait for this thread's work to end; it must not find the lock held.
        lock.unlock();
        host_.terminate();
        return;
    }
    decideOnScan();
}

void QVScanScheduler::decideOnScan() {
    QVSPolicy& policy = QVSPolicy::sharedPolicy();
    if (!policy.isPolicyFileExist()) {
        QVSLogger::debug("No policy found, quit from performScanTimerLogic.");
        return;
    }
    if (!QVSReport::sharedManager().allowScan()) {
        QVSLogger::debug("No scan is allowd at this time. wait...");
        return;
    }
    if (performForcedScanIfDue()) return;
    if (needStartupScan_) {
        performStartupScan();
        return;
    }
    if (!policy.eventDrivenScan()) {
        // Without event-driven scanning only the forced and start-up scans above happen.
        QVSLogger::debug("Event Driven Scan is Off.");
        return;
    }
    if (referenceDateNow() > nextDeltaScanTime_) {
        performIntervalDeltaScan();
        return;
    }
    performEventChecks();
}

bool QVScanScheduler::performForcedScanIfDue() {
    if (policyIsChanged_) {
        policyIsChanged_ = false;
        needStartupScan_ = false;
        QVSLogger::information("Policy Is Changed, Force scan...");
        QVSReport::sharedManager().reportHardwareForced();
        return true;
    }
    if (fullScanIntervalElapsed()) {
        policyIsChanged_ = false;
        needStartupScan_ = false;
        QVSLogger::information("Force full scan, FullScanIntervalHours...");
        QVSReport::sharedManager().reportHardwareForced();
        return true;
    }
    return false;
}

bool QVScanScheduler::fullScanIntervalElapsed() const {
    const double last = QVSSettings::defaultSettings().previousFullScanDatetime();
    const double interval = std::max(kShortestFullScanIntervalSeconds, QVSPolicy::sharedPolicy().fullScanIntervalSeconds());
    // With no full scan ever recorded, last is 0 and the interval has elapsed.
    return now() - last >= interval;
}

void QVScanScheduler::performStartupScan() {
    needStartupScan_ = false;
    nextDeltaScanTime_ = referenceDateNow() + kDeltaScanIntervalSeconds;
    QVSReport& manager = QVSReport::sharedManager();
    if (hasEntries(manager.getFullReportFromDisk())) {
        QVSLogger::information("Startup delta scan...");
        manager.reportHardware();
    } else {
        QVSLogger::information("Startup full scan...");
        manager.reportHardwareForced();
    }
}

void QVScanScheduler::performIntervalDeltaScan() {
    policyIsChanged_ = false;
    needStartupScan_ = false;
    nextDeltaScanTime_ = referenceDateNow() + kDeltaScanIntervalSeconds;
    QVSReport& manager = QVSReport::sharedManager();
    // Without a previous full report there is nothing to compare with; the next try is
    // two hours away (the event checks force a full scan meanwhile).
    if (!hasEntries(manager.getFullReportFromDisk())) return;
    QVSLogger::information("Interval delta scan...");
    manager.reportHardware();
}

void QVScanScheduler::performEventChecks() {
    QVSReport& manager = QVSReport::sharedManager();
    const DictionaryRef collected = makeDictionary();
    const std::uint64_t t = timerSecondsCount_;
    const bool ipCheck = t % kIpCheckSeconds == 0;
    const bool systemCheck = t % kSystemCheckSeconds == 0;
    DictionaryRef fullReport;
    if (ipCheck || systemCheck || pendingMountNotification_ || pendingUnmountNotification_) {
        fullReport = manager.getFullReportFromDisk();
        if (!hasEntries(fullReport)) {
            // The pending flags stay set, so the next tick checks the media against the new report.
            QVSLogger::information(
                "Should do Event Scanning, but no previous full report is found, so, Force scan...");
            policyIsChanged_ = false;
            manager.reportHardwareForced();
            return;
        }
    }
    if (ipCheck) {
        QVSLogger::debug("Will detect IPs changes shortly...");
        addEntries(*collected, manager.performIPChangeDiscoveryWithFullReport(fullReport), "IP change detected.");
    }
    if (systemCheck) {
        QVSLogger::debug("Will detect Username,DeviceName and SerialNumber changes shortly...");
        addEntries(*collected, manager.performSysChangeDiscoveryWithFullReport(fullReport),
                   "Username,DeviceName and SerialNumber change detected.");
    }
    // Read again: a volume event since the first reading is handled on this tick.
    if (pendingMountNotification_ || pendingUnmountNotification_) {
        QVSLogger::debug("Has a pending disk event, re-scan shortly...");
        addEntries(*collected, manager.performDiskChangeDiscoveryWithFullReport(fullReport),
                   "USB disk changes detected.");
        pendingUnmountNotification_ = false;
        pendingMountNotification_ = false;
    }
    // All changes of one tick make one delta report.
    if (!collected->empty()) manager.outputJsonFileWithDeltaDictionary(collected);
}

void QVScanScheduler::addEntries(Dictionary& collected, const DictionaryRef& changes, const char* detectedLine) {
    if (!hasEntries(changes)) return;
    QVSLogger::information("%s", detectedLine);
    // A later check's entry replaces an earlier one under the same key.
    for (const auto& [key, value] : *changes) collected.set(key, value);
}

void QVScanScheduler::setTimerSecondsCount(std::uint64_t seconds) { timerSecondsCount_ = seconds; }

std::uint64_t QVScanScheduler::timerSecondsCount() const { return timerSecondsCount_; }

void QVScanScheduler::setPolicyIsChanged(bool changed) { policyIsChanged_ = changed; }

bool QVScanScheduler::policyIsChanged() const { return policyIsChanged_; }

void QVScanScheduler::setNeedStartupScan(bool needed) { needStartupScan_ = needed; }

bool QVScanScheduler::needStartupScan() const { return needStartupScan_; }

void QVScanScheduler::setPendingMountNotification(bool pending) { pendingMountNotification_ = pending; }

bool QVScanScheduler::pendingMountNotification() const { return pendingMountNotification_; }

void QVScanScheduler::setPendingUnmountNotification(bool pending) { pendingUnmountNotification_ = pending; }

bool QVScanScheduler::pendingUnmountNotification() const { return pendingUnmountNotification_; }

double QVScanScheduler::nextDeltaScanTime() const { return nextDeltaScanTime_; }

double QVScanScheduler::now() const { return std::chrono::duration<double>(clock_().time_since_epoch()).count(); }

double QVScanScheduler::referenceDateNow() const { return now() - kReferenceDateOffsetSeconds; }

}  // namespace tov
