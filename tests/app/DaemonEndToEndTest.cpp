// The daemon as a whole, in this process, on a temporary root: the real run loop, policy
// watcher, scan thread, scheduler and report manager, with fake discoverers, a clock the
// test moves and a scan thread that ticks when the test says so.

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

#include "app/QVApplicationDelegate.h"
#include "common/Paths.h"
#include "common/QVSPolicy.h"
#include "model/QVIOKitKeyboard.h"
#include "platform/RunLoop.h"
#include "report/FakeDiscoverers.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

using namespace std::chrono_literals;
using testing::readFile;
using testing::writeFile;

// The scan thread's sleep: each tick after the first waits for the test's permission.
class TickGate {
public:
    void sleep() {
        std::unique_lock<std::mutex> lock(mutex_);
        ++parked_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return open_ || allowed_ > 0; });
        if (allowed_ > 0) --allowed_;
    }
    // Waits until the thread has finished `count` ticks in all.
    bool waitForTicks(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, 120s, [&] { return parked_ >= count; });
    }
    // Lets one more tick run and waits until it is done.
    bool step() {
        std::unique_lock<std::mutex> lock(mutex_);
        const int before = parked_;
        ++allowed_;
        changed_.notify_all();
        return changed_.wait_for(lock, 120s, [&] { return parked_ > before; });
    }
    void open() {
        std::lock_guard<std::mutex> lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int parked_ = 0;
    int allowed_ = 0;
    bool open_ = false;
};

// A service manager that lists the job once it was loaded.
class RecordingServiceManager : public ServiceManager {
public:
    std::string jobFileText(const std::string& label, const std::string& programPath, double, bool) const override {
        return label + " " + programPath + "\n";
    }
    std::optional<std::string> list(const std::string& label) override {
        return loads > 0 ? "-\t0\t" + label : "";
    }
    std::string load(const std::string&) override {
        ++loads;
        return "";
    }
    std::string unload(const std::string&) override { return ""; }
    std::atomic<int> loads {0};
};

class DaemonEndToEndTest : public testing::ReportTest {
protected:
    void SetUp() override {
        ReportTest::SetUp();
        seconds_ = 1706692500;
        std::filesystem::create_directories(std::filesystem::path(Paths::jobFile()).parent_path());
        QVSReport::setClockForTesting([this] { return now(); });
        pthread_sigmask(SIG_BLOCK, nullptr, &savedMask_);
        RunLoop::blockTerminationSignal();
    }

    void TearDown() override {
        gate_.open();
        if (loop_.joinable()) {
            kill(getpid(), SIGTERM);
            loop_.join();
        }
        delegate_.reset();
        pthread_sigmask(SIG_SETMASK, &savedMask_, nullptr);
        ReportTest::TearDown();
    }

    std::chrono::system_clock::time_point now() const {
        return std::chrono::system_clock::time_point(std::chrono::seconds(seconds_.load()));
    }
    void advanceClock(long long seconds) { seconds_ += seconds; }

    void startDaemon() {
        QVApplicationDelegate::Options options;
        options.clock = [this] { return now(); };
        options.tickSleep = [this] {
            gate_.sleep();
            advanceClock(5);
        };
        options.serviceManager = &manager_;
        options.factory = factory;
        delegate_ = std::make_unique<QVApplicationDelegate>(options);
        // A negative threshold is never exceeded: the sanitizers' own memory makes a test
        // process far larger than the daemon, and the memory guard would end it.
        delegate_->setMemoryThreshold(-1);
        loop_ = std::thread([this] { ranLoop_ = delegate_->runApplication(); });
    }

    bool waitForLog(const std::string& text, std::chrono::seconds limit = 60s) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (std::chrono::steady_clock::now() < deadline) {
            if (logText().find(text) != std::string::npos) return true;
            std::this_thread::sleep_for(20ms);
        }
        return false;
    }

    std::size_t occurrences(const std::string& text) const {
        const std::string log = logText();
        std::size_t count = 0;
        for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
        return count;
    }

    // The scan types of the headers in the outbox, oldest first.
    std::vector<std::string> handedOverScanTypes() const {
        std::vector<std::string> types;
        for (const std::string& name : outboxNames()) {
            if (!name.ends_with(".hdr")) continue;
            const std::string header = readFile(outbox() + "/" + name);
            types.push_back(header.find("\"scanType\":\"full\"") != std::string::npos ? "full" : "delta");
        }
        return types;
    }

    void setConsoleUser(const std::string& name) { factory->section("operatingSystems").set("username", Value(name)); }

    std::atomic<long long> seconds_ {0};
    sigset_t savedMask_ {};
    TickGate gate_;
    RecordingServiceManager manager_;
    std::unique_ptr<QVApplicationDelegate> delegate_;
    std::thread loop_;
    std::atomic<bool> ranLoop_ {false};
};

TEST_F(DaemonEndToEndTest, ScansInTheSchedulersOrderFollowsThePolicyAndEndsOnSigterm) {
    testing::fillTypicalInventory(*factory);
    setConsoleUser("ada");
    writeFile(Paths::policyFile(), R"({"ScanAfterRestart": true, "EventDrivenScan": true})");

    // Start-up: the scan after restart finds no full scan recorded and forces one; the
    // first report of a new installation is kept back, and its time is not recorded. The
    // first tick either meets that scan (and is skipped) or comes after it and forces the
    // scan whose report is handed over.
    startDaemon();
    ASSERT_TRUE(waitForLog("ScanAfterRestartKey is true, performScanTimerLogic."));
    ASSERT_TRUE(gate_.waitForTicks(1));
    ASSERT_TRUE(waitForLog("Force full scan, FullScanIntervalHours..."));
    EXPECT_TRUE(waitForLog("TOV started."));
    EXPECT_TRUE(waitForLog("Setup USB disk notification system."));
    const std::size_t forcedScans = occurrences("Force full scan, FullScanIntervalHours...");
    EXPECT_GE(forcedScans, 1u);
    EXPECT_LE(forcedScans, 2u);
    EXPECT_EQ(handedOverScanTypes().size(), forcedScans - 1);
    EXPECT_EQ(manager_.loads.load(), 1);
    EXPECT_TRUE(std::filesystem::is_regular_file(Paths::jobFile()));

    // A changed policy file reaches the delegate through the watcher; the next tick forces a
    // full scan, whose report is handed over.
    writeFile(Paths::policyFile(), R"({"ScanAfterRestart": true, "EventDrivenScan": true, "FullScanIntervalHours": 48})");
    ASSERT_TRUE(waitForLog(" POC:Applied new policy.", 60s));
    ASSERT_TRUE(waitForLog("didPolicyChanged"));
    ASSERT_TRUE(gate_.step());
    EXPECT_TRUE(waitForLog("Policy Is Changed, Force scan..."));
    const std::vector<std::string> afterPolicy = handedOverScanTypes();
    ASSERT_FALSE(afterPolicy.empty());
    EXPECT_EQ(afterPolicy.back(), "full");

    // The console user changes; the user check of the next full minute of ticks finds it
    // and hands over a delta report.
    setConsoleUser("grace");
    for (int tick = 0; tick < 12; ++tick) ASSERT_TRUE(gate_.step());
    EXPECT_TRUE(waitForLog("Username,DeviceName and SerialNumber change detected."));
    const std::vector<std::string> afterUser = handedOverScanTypes();
    ASSERT_EQ(afterUser.size(), afterPolicy.size() + 1);
    EXPECT_EQ(afterUser.back(), "delta");

    // The outbox is deleted while the daemon runs and a second keyboard is plugged in: two
    // hours later the interval delta scan makes the outbox again and hands its report over.
    std::filesystem::remove_all(outbox());
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("USB Keyboard");
    factory->section("iokit").get("keyboards").array()->push_back(Value(keyboard));
    advanceClock(7200);
    ASSERT_TRUE(gate_.step());
    EXPECT_TRUE(waitForLog("Interval delta scan..."));
    EXPECT_EQ(handedOverScanTypes(), std::vector<std::string> {"delta"});

    // SIGTERM: settings persisted, shut-down logged, the loop returns.
    kill(getpid(), SIGTERM);
    gate_.open();
    loop_.join();
    EXPECT_TRUE(ranLoop_.load());
    EXPECT_TRUE(waitForLog("TOV finished."));
    EXPECT_TRUE(waitForLog("Remove USB disk notification system."));
    EXPECT_TRUE(std::filesystem::is_regular_file(Paths::settingsFile()));
}

TEST_F(DaemonEndToEndTest, WithoutAPolicyNothingIsScannedButTheServiceIsKept) {
    testing::fillTypicalInventory(*factory);
    startDaemon();
    ASSERT_TRUE(waitForLog("The policy file does not exit."));
    ASSERT_TRUE(gate_.waitForTicks(1));
    ASSERT_TRUE(gate_.step());
    EXPECT_TRUE(waitForLog("No policy found, quit from performScanTimerLogic."));
    EXPECT_FALSE(logText().find("Setup USB disk notification system.") != std::string::npos);
    EXPECT_TRUE(outboxNames().empty());
    EXPECT_EQ(manager_.loads.load(), 1);
    EXPECT_TRUE(std::filesystem::is_regular_file(Paths::jobFile()));
}

// The debug trigger is watched from start-up on: "DEBUG" written there switches the level
// half a second later; removing it restores the default.
TEST_F(DaemonEndToEndTest, TheDebugTriggerSwitchesTheLevelWhileTheDaemonRuns) {
    startDaemon();
    ASSERT_TRUE(waitForLog("The policy file does not exit."));
    writeFile(Paths::debugTrigger(), "DEBUG\n");
    EXPECT_TRUE(waitForLog("Set new loglevel [DEBUG]"));
    std::filesystem::remove(Paths::debugTrigger());
    EXPECT_TRUE(waitForLog("Set new loglevel [INFORMATION]"));
}

}  // namespace
}  // namespace tov
