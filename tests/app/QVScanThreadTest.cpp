// The scan thread: its tick count, its cancelling, and the one thread it starts. The sleep
// between steps is replaced where a test needs many ticks or a cancel inside the sleep.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "app/QVScanThread.h"
#include "app/SchedulerTest.h"

namespace tov {
namespace {

using testing::SchedulerTest;

// Bounds a wait for the scan thread; it is never reached when the code works.
constexpr std::chrono::seconds kGenerousDeadline {60};

class QVScanThreadTest : public SchedulerTest {
protected:
    // The count the scheduler holds at every step.
    std::vector<std::uint64_t> countsAtSteps() const { return counts; }

    void recordCountsAtSteps() {
        host.onInstall = [this] {
            counts.push_back(scheduler.timerSecondsCount());
            stepThreads.push_back(std::this_thread::get_id());
        };
    }

    std::vector<std::uint64_t> counts;
    std::vector<std::thread::id> stepThreads;
};

TEST_F(QVScanThreadTest, EveryPassAddsFiveWhateverTheStepTakes) {
    recordCountsAtSteps();
    // Each step takes the clock an hour on.
    host.onInstall = [this, record = host.onInstall] {
        record();
        advance(3600);
    };
    int sleeps = 0;
    QVScanThread thread(scheduler, [&] {
        if (++sleeps == 4) thread.cancel();
    });
    thread.scanThreadMain();
    EXPECT_EQ(counts, (std::vector<std::uint64_t> {5, 10, 15, 20}));
    EXPECT_TRUE(logHas("mainthread: 5"));
    EXPECT_TRUE(logHas("mainthread: 20"));
    EXPECT_NE(logLineWith("mainthread: 5").find("DEBUG"), std::string::npos);
}

TEST_F(QVScanThreadTest, TheCountStartsAgainFromZero) {
    recordCountsAtSteps();
    scheduler.setTimerSecondsCount(1000);
    QVScanThread thread(scheduler, [&] { thread.cancel(); });
    thread.scanThreadMain();
    EXPECT_EQ(counts, (std::vector<std::uint64_t> {5}));
}

TEST_F(QVScanThreadTest, ACancelDuringTheSleepEndsTheThreadWithoutAFurtherStep) {
    recordCountsAtSteps();
    int sleeps = 0;
    QVScanThread thread(scheduler, [&] {
        ++sleeps;
        if (sleeps == 3) thread.cancel();
    });
    thread.scanThreadMain();
    EXPECT_EQ(sleeps, 3);
    EXPECT_EQ(counts.size(), 3u);
    EXPECT_TRUE(thread.isCancelled());
}

TEST_F(QVScanThreadTest, ACancelledThreadMakesNoStep) {
    recordCountsAtSteps();
    QVScanThread thread(scheduler, [] {});
    thread.cancel();
    thread.scanThreadMain();
    EXPECT_TRUE(counts.empty());
}

TEST_F(QVScanThreadTest, TheFirstMinuteCheckIsOnTheTwelfthTickAndTheFirstFiveMinuteCheckOnTheSixtieth) {
    writePolicy(R"({"FullScanIntervalHours": 24, "EventDrivenScan": true})");
    seedHandedOverFullReport();
    int sleeps = 0;
    int firstMinuteCheck = 0;
    int firstFiveMinuteCheck = 0;
    QVScanThread thread(scheduler, [&] {
        ++sleeps;
        advance(5);
        if (firstMinuteCheck == 0 && logHas("Will detect Username,DeviceName and SerialNumber changes shortly...")) {
            firstMinuteCheck = sleeps;
        }
        if (firstFiveMinuteCheck == 0 && logHas("Will detect IPs changes shortly...")) firstFiveMinuteCheck = sleeps;
        if (sleeps == 60) thread.cancel();
    });
    thread.scanThreadMain();
    EXPECT_EQ(firstMinuteCheck, 12);
    EXPECT_EQ(firstFiveMinuteCheck, 60);
    EXPECT_EQ(logCount("Will detect Username,DeviceName and SerialNumber changes shortly..."), 5);
    EXPECT_EQ(logCount("Will detect IPs changes shortly..."), 1);
}

TEST_F(QVScanThreadTest, ThousandsOfTicksRunWithoutWaiting) {
    writePolicy(R"({"FullScanIntervalHours": 24, "EventDrivenScan": true})");
    seedHandedOverFullReport();
    scheduler.startup();
    scheduler.setNeedStartupScan(false);
    int sleeps = 0;
    QVScanThread thread(scheduler, [&] {
        advance(5);
        if (++sleeps == 2000) thread.cancel();
    });
    thread.scanThreadMain();
    EXPECT_EQ(scheduler.timerSecondsCount(), 10000u);
    EXPECT_EQ(logCount("Interval delta scan..."), 1);
}

TEST_F(QVScanThreadTest, ACancelDuringAStepEndsTheRealSleepAtOnce) {
    recordCountsAtSteps();
    QVScanThread* running = nullptr;
    std::promise<void> stepped;
    host.onInstall = [&running, &stepped, record = host.onInstall] {
        record();
        running->cancel();
        stepped.set_value();
    };
    {
        QVScanThread thread(scheduler);
        running = &thread;
        ASSERT_TRUE(thread.start());
        ASSERT_EQ(stepped.get_future().wait_for(kGenerousDeadline), std::future_status::ready);
    }  // Joined here.
    EXPECT_EQ(counts, (std::vector<std::uint64_t> {5}));
    ASSERT_EQ(stepThreads.size(), 1u);
    EXPECT_NE(stepThreads[0], std::this_thread::get_id());
}

TEST_F(QVScanThreadTest, StartingTwiceStartsOneThread) {
    recordCountsAtSteps();
    std::atomic<int> sleeps {0};
    QVScanThread* running = nullptr;
    std::promise<void> cancelled;
    {
        QVScanThread thread(scheduler, [&] {
            if (++sleeps != 3) return;
            running->cancel();
            cancelled.set_value();
        });
        running = &thread;
        ASSERT_TRUE(thread.start());
        ASSERT_TRUE(thread.start());
        ASSERT_EQ(cancelled.get_future().wait_for(kGenerousDeadline), std::future_status::ready);
    }  // Joined here.
    EXPECT_EQ(counts, (std::vector<std::uint64_t> {5, 10, 15}));
    ASSERT_EQ(stepThreads.size(), 3u);
    EXPECT_EQ(stepThreads[0], stepThreads[1]);
    EXPECT_EQ(stepThreads[1], stepThreads[2]);
    EXPECT_EQ(logCount("mainthread: 5"), 1);
}

}  // namespace
}  // namespace tov
