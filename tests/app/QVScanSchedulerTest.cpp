// The scheduler's decisions, tick by tick, on a temporary root with the real report manager:
// which scan a tick makes, which it refuses, what reaches the outbox, and what the flags
// and the rest of the daemon see.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "app/SchedulerTest.h"
#include "common/QVSSettings.h"
#include "model/Json.h"
#include "model/QVDiskUtilDisk.h"

namespace tov {
namespace {

using testing::SchedulerTest;

constexpr const char* kEventDriven = R"({"FullScanIntervalHours": 24, "EventDrivenScan": true})";
constexpr const char* kNotEventDriven = R"({"FullScanIntervalHours": 1, "EventDrivenScan": false})";
// Bounds a wait for another thread; it is never reached when the code works.
constexpr std::chrono::seconds kGenerousDeadline {60};

// The change dictionary under "changed" of a delta document.
DictionaryRef changedOf(const std::string& document) {
    const std::optional<Value> parsed = parseJson(document);
    if (!parsed || !parsed->isDictionary()) return nullptr;
    return parsed->dictionary()->get("changed").dictionary();
}

class QVScanSchedulerTest : public SchedulerTest {
protected:
    // An installed machine running: its full report handed over, start-up scan done.
    void runningInstalledMachine(const char* policy = kEventDriven) {
        writePolicy(policy);
        seedHandedOverFullReport();
        scheduler.startup();
        scheduler.setNeedStartupScan(false);
    }

    void addUsbVolume() {
        const auto volume = QVDiskUtilDisk::diskUtilDisk();
        volume->setName("STICK");
        volume->setDeviceName("disk4s1");
        volume->setIdentifier("disk4s1");
        volume->setSize(16000000000);
        volume->setFileSystem("msdos");
        factory->section("diskutil").get("disks").array()->push_back(Value(volume));
    }
};

TEST_F(QVScanSchedulerTest, StartupMakesTheStartupScanDueAndTheDeltaScanTwoHoursAway) {
    scheduler.startup();
    EXPECT_TRUE(scheduler.needStartupScan());
    EXPECT_DOUBLE_EQ(scheduler.nextDeltaScanTime(), kStart - 978307200 + 7200);
}

TEST_F(QVScanSchedulerTest, AFreshInstallationIsScannedByTheFullScanIntervalNotByTheStartupScan) {
    writePolicy(kEventDriven);
    scheduler.startup();
    tick();
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 1);
    EXPECT_NE(logLineWith("Force full scan, FullScanIntervalHours...").find("INFORMATION"), std::string::npos);
    EXPECT_FALSE(logHas("Startup full scan..."));
    EXPECT_FALSE(logHas("Startup delta scan..."));
    EXPECT_FALSE(scheduler.needStartupScan());
    EXPECT_EQ(host.calls(), (std::vector<std::string> {"install 60 atLoad", "memory"}));
    // A new installation's first scan is only stored; no full scan is recorded until a
    // full report is written, so the next tick forces one again, and that one goes out.
    EXPECT_TRUE(manager().getFullReportFromDisk());
    EXPECT_TRUE(reports.empty());
    tick();
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 2);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "full");
    EXPECT_EQ(QVSSettings::defaultSettings().previousFullScanDatetime(), now());
    tick();
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 2);
    EXPECT_FALSE(logHas("Startup full scan..."));
}

TEST_F(QVScanSchedulerTest, AnIntervalBelowOneHourCountsAsOneHour) {
    for (const char* hours : {"0", "0.5", "-3", "\"0\""}) {
        SCOPED_TRACE(hours);
        writePolicy(std::string(R"({"FullScanIntervalHours": )") + hours + "}");
        QVSSettings::defaultSettings().setPreviousFullScanDatetime(now());
        const int before = logCount("Force full scan, FullScanIntervalHours...");
        advance(3599);
        stepAt(7);
        EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), before);
        advance(1);
        stepAt(7);
        EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), before + 1);
    }
}

TEST_F(QVScanSchedulerTest, TheFullScanIntervalOfThePolicyIsKept) {
    runningInstalledMachine();
    advance(86399);
    stepAt(7);
    EXPECT_FALSE(logHas("Force full scan, FullScanIntervalHours..."));
    advance(1);
    stepAt(7);
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 1);
}

TEST_F(QVScanSchedulerTest, WithoutAPolicyNothingIsScannedButTheDaemonIsStillLookedAfter) {
    runningInstalledMachine();
    removePolicy();
    host.clear();
    scheduler.setPendingMountNotification(true);
    scheduler.setPolicyIsChanged(true);
    for (std::uint64_t count : {5, 60, 300, 600}) {
        advance(7200);
        stepAt(count);
    }
    EXPECT_EQ(logCount("No policy found, quit from performScanTimerLogic."), 4);
    EXPECT_NE(logLineWith("No policy found").find("DEBUG"), std::string::npos);
    EXPECT_EQ(host.count("install 60 atLoad"), 4);
    EXPECT_EQ(host.count("memory"), 4);
    EXPECT_TRUE(reports.empty());
    EXPECT_FALSE(logHas("Force"));
    EXPECT_FALSE(logHas("Will detect"));
    EXPECT_FALSE(logHas("Interval delta scan..."));
    EXPECT_TRUE(scheduler.pendingMountNotification());
    EXPECT_TRUE(scheduler.policyIsChanged());
}

TEST_F(QVScanSchedulerTest, TheMemoryGuardComesBeforeThePolicy) {
    removePolicy();
    host.beyondMemory = true;
    stepAt(5);
    EXPECT_EQ(host.calls(), (std::vector<std::string> {"install 60 atLoad", "memory", "installed?", "terminate"}));
    EXPECT_FALSE(logHas("No policy found"));
}

TEST_F(QVScanSchedulerTest, TooMuchMemoryWhenInstalledLeavesTheRespawnToTheServiceManager) {
    writePolicy(kEventDriven);
    scheduler.startup();
    host.beyondMemory = true;
    stepAt(5);
    EXPECT_EQ(host.calls(), (std::vector<std::string> {"install 60 atLoad", "memory", "installed?", "terminate"}));
    EXPECT_NE(logLineWith("TOV is consuming too much memory and will be terminated.  LaunchDaemon will respawn it "
                          "shortly.")
                  .find("INFORMATION"),
              std::string::npos);
    EXPECT_FALSE(logHas("Force full scan"));
    EXPECT_TRUE(scheduler.needStartupScan());
    EXPECT_FALSE(manager().getFullReportFromDisk());
}

TEST_F(QVScanSchedulerTest, TooMuchMemoryWhenNotInstalledSpawnsTheNextInstanceThenTerminates) {
    writePolicy(kEventDriven);
    host.beyondMemory = true;
    host.installed = false;
    stepAt(5);
    EXPECT_EQ(host.calls(),
              (std::vector<std::string> {"install 60 atLoad", "memory", "installed?", "spawn", "terminate"}));
    EXPECT_TRUE(
        logHas("TOV is consuming too much memory and will be terminated.  It will be manually respawned."));
}

TEST_F(QVScanSchedulerTest, TheMemoryGuardReleasesTheLockBeforeAskingToTerminate) {
    writePolicy(kEventDriven);
    host.beyondMemory = true;
    host.installed = false;
    // Terminating may wait for another thread that ticks; that tick must get the lock.
    host.onTerminate = [this] {
        host.beyondMemory = false;
        std::thread([this] { scheduler.performScanTimerLogic(); }).join();
    };
    stepAt(5);
    EXPECT_FALSE(logHas("Scan in progress. Quit performScanTimerLogic."));
    EXPECT_EQ(host.count("install 60 atLoad"), 2);
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 1);
    // And the next tick is not refused either.
    stepAt(10);
    EXPECT_EQ(host.count("install 60 atLoad"), 3);
    EXPECT_FALSE(logHas("Scan in progress. Quit performScanTimerLogic."));
}

TEST_F(QVScanSchedulerTest, NoScanWhileTheRateLimitHoldsReportsBack) {
    runningInstalledMachine();
    // Ten rapid report attempts right after a hand-over reach the limit.
    for (int attempt = 0; attempt < 10; ++attempt) manager().shouldGenerateReportFile();
    ASSERT_FALSE(manager().allowScan());
    scheduler.setPolicyIsChanged(true);
    advance(86400);
    stepAt(300);
    EXPECT_EQ(logCount("No scan is allowd at this time. wait..."), 1);
    EXPECT_FALSE(logHas("Force"));
    EXPECT_TRUE(scheduler.policyIsChanged());
    EXPECT_TRUE(reports.empty());
}

TEST_F(QVScanSchedulerTest, AChangedPolicyForcesAFullScanAndConsumesTheStartupScan) {
    runningInstalledMachine();
    scheduler.setNeedStartupScan(true);
    scheduler.setPolicyIsChanged(true);
    changeDisplay("Dell");
    advance(60);
    stepAt(5);
    EXPECT_EQ(logCount("Policy Is Changed, Force scan..."), 1);
    EXPECT_FALSE(scheduler.policyIsChanged());
    EXPECT_FALSE(scheduler.needStartupScan());
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "full");
}

TEST_F(QVScanSchedulerTest, TheIntervalFullScanClearsThePolicyChangeAndTheStartupScan) {
    runningInstalledMachine();
    scheduler.setNeedStartupScan(true);
    changeDisplay("Dell");
    advance(86400);
    stepAt(5);
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 1);
    EXPECT_FALSE(scheduler.needStartupScan());
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "full");
}

TEST_F(QVScanSchedulerTest, TheStartupScanIsADeltaScanWhenAFullReportIsStored) {
    runningInstalledMachine();
    scheduler.setNeedStartupScan(true);
    changeDisplay("Dell");
    advance(600);
    stepAt(5);
    EXPECT_EQ(logCount("Startup delta scan..."), 1);
    EXPECT_FALSE(scheduler.needStartupScan());
    EXPECT_DOUBLE_EQ(scheduler.nextDeltaScanTime(), referenceDateNow() + 7200);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "delta");
}

TEST_F(QVScanSchedulerTest, TheStartupScanIsAFullScanWhenNoFullReportIsStored) {
    writePolicy(kEventDriven);
    // A recent full scan is recorded, but its report is gone.
    QVSSettings::defaultSettings().setPreviousFullScanDatetime(now());
    scheduler.startup();
    advance(5);
    stepAt(5);
    EXPECT_EQ(logCount("Startup full scan..."), 1);
    EXPECT_FALSE(logHas("Force full scan"));
    EXPECT_TRUE(manager().getFullReportFromDisk());
}

TEST_F(QVScanSchedulerTest, WithoutEventDrivenScanningOnlyTheIntervalScansTheMachine) {
    runningInstalledMachine(kNotEventDriven);
    scheduler.setPendingMountNotification(true);
    scheduler.setPendingUnmountNotification(true);
    factory->local = "10.0.0.9";
    factory->publicAddress = "203.0.113.9";
    factory->section("operatingSystems").set("username", "bob");
    addUsbVolume();
    for (std::uint64_t count = 5; count < 300; count += 5) {
        advance(5);
        stepAt(count);
    }
    // Past the two-hour mark (the full-scan interval not yet elapsed), on a count of both checks.
    advance(7200);
    QVSSettings::defaultSettings().setPreviousFullScanDatetime(now() - 60);
    stepAt(300);
    EXPECT_EQ(logCount("Event Driven Scan is Off."), 60);
    EXPECT_NE(logLineWith("Event Driven Scan is Off.").find("DEBUG"), std::string::npos);
    EXPECT_FALSE(logHas("Force full scan"));
    EXPECT_FALSE(logHas("Will detect"));
    EXPECT_FALSE(logHas("Has a pending disk event"));
    EXPECT_FALSE(logHas("Interval delta scan..."));
    EXPECT_TRUE(scheduler.pendingMountNotification());
    EXPECT_TRUE(scheduler.pendingUnmountNotification());
    EXPECT_EQ(factory->publicQueries, 0);
    EXPECT_TRUE(reports.empty());
    // The one-hour full scan still comes, and carries the changes.
    advance(3600);
    stepAt(305);
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "full");
    EXPECT_NE(reports[0].document.find("bob"), std::string::npos);
}

TEST_F(QVScanSchedulerTest, TheIntervalDeltaScanComesStrictlyAfterTwoHoursOnTheReferenceClock) {
    runningInstalledMachine();
    const double due = scheduler.nextDeltaScanTime();
    changeDisplay("Dell");
    advance(7200);
    ASSERT_DOUBLE_EQ(referenceDateNow(), due);
    stepAt(7);
    EXPECT_FALSE(logHas("Interval delta scan..."));
    advance(1);
    stepAt(7);
    EXPECT_EQ(logCount("Interval delta scan..."), 1);
    EXPECT_DOUBLE_EQ(scheduler.nextDeltaScanTime(), referenceDateNow() + 7200);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "delta");
}

TEST_F(QVScanSchedulerTest, TheIntervalDeltaScanWithoutAStoredReportWaitsTwoHoursMore) {
    writePolicy(kEventDriven);
    QVSSettings::defaultSettings().setPreviousFullScanDatetime(now());
    scheduler.startup();
    scheduler.setNeedStartupScan(false);
    advance(7201);
    stepAt(7);
    EXPECT_FALSE(logHas("Interval delta scan..."));
    EXPECT_FALSE(logHas("Force"));
    EXPECT_FALSE(manager().getFullReportFromDisk());
    EXPECT_DOUBLE_EQ(scheduler.nextDeltaScanTime(), referenceDateNow() + 7200);
}

TEST_F(QVScanSchedulerTest, NoCheckIsDueOnAnOrdinaryTick) {
    runningInstalledMachine();
    factory->section("operatingSystems").set("username", "bob");
    advance(5);
    stepAt(65);
    EXPECT_FALSE(logHas("Will detect"));
    EXPECT_FALSE(logHas("Has a pending disk event"));
    EXPECT_TRUE(reports.empty());
}

TEST_F(QVScanSchedulerTest, EveryMinuteTheUserDeviceNameAndSerialNumberAreChecked) {
    runningInstalledMachine();
    factory->section("operatingSystems").set("username", "bob");
    advance(5);
    stepAt(120);
    EXPECT_EQ(logCount("Will detect Username,DeviceName and SerialNumber changes shortly..."), 1);
    EXPECT_EQ(logCount("Username,DeviceName and SerialNumber change detected."), 1);
    EXPECT_FALSE(logHas("Will detect IPs changes shortly..."));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "delta");
    const DictionaryRef changed = changedOf(reports[0].document);
    ASSERT_TRUE(changed);
    EXPECT_TRUE(changed->contains("operatingSystems"));
}

TEST_F(QVScanSchedulerTest, EveryFiveMinutesBothChecksGoIntoOneDeltaReport) {
    runningInstalledMachine();
    factory->local = "10.0.0.9";
    factory->publicAddress = "203.0.113.9";
    factory->section("operatingSystems").set("username", "bob");
    advance(5);
    stepAt(300);
    EXPECT_EQ(logCount("Will detect IPs changes shortly..."), 1);
    EXPECT_EQ(logCount("IP change detected."), 1);
    EXPECT_EQ(logCount("Will detect Username,DeviceName and SerialNumber changes shortly..."), 1);
    EXPECT_EQ(logCount("Username,DeviceName and SerialNumber change detected."), 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "delta");
    const DictionaryRef changed = changedOf(reports[0].document);
    ASSERT_TRUE(changed);
    EXPECT_TRUE(changed->contains("events"));
    EXPECT_TRUE(changed->contains("operatingSystems"));
    EXPECT_NE(reports[0].document.find("203.0.113.9"), std::string::npos);
    EXPECT_NE(reports[0].document.find("bob"), std::string::npos);
}

TEST_F(QVScanSchedulerTest, AVolumeMountedAndUnmountedBeforeATickIsCheckedOnce) {
    runningInstalledMachine();
    scheduler.setPendingMountNotification(true);
    scheduler.setPendingUnmountNotification(true);
    advance(5);
    stepAt(5);
    EXPECT_EQ(logCount("Has a pending disk event, re-scan shortly..."), 1);
    EXPECT_FALSE(logHas("USB disk changes detected."));
    EXPECT_FALSE(scheduler.pendingMountNotification());
    EXPECT_FALSE(scheduler.pendingUnmountNotification());
    EXPECT_TRUE(reports.empty());
    advance(5);
    stepAt(10);
    EXPECT_EQ(logCount("Has a pending disk event, re-scan shortly..."), 1);
}

TEST_F(QVScanSchedulerTest, AMountedVolumeMakesOneDeltaReport) {
    runningInstalledMachine();
    addUsbVolume();
    scheduler.setPendingMountNotification(true);
    scheduler.setPendingUnmountNotification(true);
    advance(5);
    stepAt(5);
    EXPECT_EQ(logCount("USB disk changes detected."), 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].scanType, "delta");
    EXPECT_NE(reports[0].document.find("STICK"), std::string::npos);
    EXPECT_FALSE(scheduler.pendingMountNotification());
    EXPECT_FALSE(scheduler.pendingUnmountNotification());
}

TEST_F(QVScanSchedulerTest, ADueCheckWithoutAStoredReportForcesAFullScanAndKeepsThePendingFlags) {
    writePolicy(kEventDriven);
    QVSSettings::defaultSettings().setPreviousFullScanDatetime(now());
    scheduler.startup();
    scheduler.setNeedStartupScan(false);
    scheduler.setPendingMountNotification(true);
    advance(5);
    stepAt(5);
    EXPECT_EQ(logCount("Should do Event Scanning, but no previous full report is found, so, Force scan..."), 1);
    EXPECT_FALSE(logHas("Has a pending disk event"));
    EXPECT_TRUE(scheduler.pendingMountNotification());
    ASSERT_TRUE(manager().getFullReportFromDisk());
    // The next tick checks the media against the new report.
    advance(5);
    stepAt(10);
    EXPECT_EQ(logCount("Has a pending disk event, re-scan shortly..."), 1);
    EXPECT_FALSE(scheduler.pendingMountNotification());
}

TEST_F(QVScanSchedulerTest, AStartupCallAndATickAtTheSameMomentRunOnlyOnce) {
    writePolicy(kEventDriven);
    QVSSettings::defaultSettings().setPreviousFullScanDatetime(now());
    scheduler.startup();
    std::promise<void> entered;
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<bool> first {true};
    host.onInstall = [&entered, &first, released] {
        if (!first.exchange(false)) return;
        entered.set_value();
        released.wait();
    };
    // The scan thread's tick holds the lock while the main thread's start-up call comes.
    std::thread scanThread([this] { scheduler.performScanTimerLogic(); });
    const bool holding = entered.get_future().wait_for(kGenerousDeadline) == std::future_status::ready;
    if (holding) scheduler.performScanTimerLogic();
    release.set_value();
    scanThread.join();
    ASSERT_TRUE(holding);
    EXPECT_EQ(logCount("Scan in progress. Quit performScanTimerLogic."), 1);
    EXPECT_EQ(host.count("install 60 atLoad"), 1);
    EXPECT_EQ(logCount("Startup full scan..."), 1);
    // The lock is free again.
    host.onInstall = nullptr;
    stepAt(7);
    EXPECT_EQ(host.count("install 60 atLoad"), 2);
    EXPECT_EQ(logCount("Scan in progress. Quit performScanTimerLogic."), 1);
}

}  // namespace
}  // namespace tov
