// What every platform's run loop promises, tested through RunLoop alone.

#include "platform/RunLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/RunLoopFixture.h"
#include "support/TestPipe.h"

namespace tov {
namespace {

using namespace std::chrono_literals;
using testing::TestPipe;

class RunLoopContract : public testing::RunLoopFixture {};

TEST_F(RunLoopContract, WorkPostedFromAnotherThreadRunsOnTheLoopThreadInOrder) {
    constexpr int kPosts = 1000;
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::thread poster([&] {
        for (int index = 0; index < kPosts; ++index) {
            loop->post([&, index] {
                order.push_back(index);
                threads.push_back(std::this_thread::get_id());
                if (index == kPosts - 1) loop->stop();
            });
        }
    });
    EXPECT_TRUE(loop->run());
    poster.join();
    EXPECT_FALSE(timedOut);
    ASSERT_EQ(order.size(), std::size_t(kPosts));
    for (int index = 0; index < kPosts; ++index) EXPECT_EQ(order[std::size_t(index)], index);
    for (const std::thread::id& thread : threads) EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(RunLoopContract, StopFromAnotherThreadEndsRun) {
    std::promise<void> running;
    loop->post([&] { running.set_value(); });
    std::thread stopper([&] {
        running.get_future().wait();
        loop->stop();
    });
    EXPECT_TRUE(loop->run());
    stopper.join();
    EXPECT_FALSE(timedOut);
}

TEST_F(RunLoopContract, StopBeforeRunEndsTheNextRunAtOnceAndTheLoopRunsAgain) {
    std::vector<std::string> order;
    loop->post([&] { order.push_back("before the stop"); });
    loop->stop();
    loop->post([&] {
        order.push_back("after the stop");
        loop->stop();
    });
    EXPECT_TRUE(loop->run());
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(order, std::vector<std::string>({"before the stop", "after the stop"}));
    EXPECT_FALSE(timedOut);
}

TEST_F(RunLoopContract, StopInACallbackLeavesTheRestForTheNextRun) {
    std::vector<int> order;
    loop->post([&] {
        order.push_back(1);
        loop->stop();
    });
    loop->post([&] {
        order.push_back(2);
        loop->stop();
    });
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(order, std::vector<int>({1}));
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(order, std::vector<int>({1, 2}));
}

// Timers due at the same moment run in the order they were started.
TEST_F(RunLoopContract, TimersRunInDeadlineOrderAndANegativeDelayCountsAsNone) {
    std::vector<std::string> order;
    loop->startTimer(300ms, [&] {
        order.push_back("300");
        loop->stop();
    });
    loop->startTimer(200ms, [&] { order.push_back("200"); });
    loop->startTimer(0ms, [&] { order.push_back("0a"); });
    loop->startTimer(0ms, [&] { order.push_back("0b"); });
    loop->startTimer(-5ms, [&] { order.push_back("negative"); });
    loop->startTimer(100ms, [&] { order.push_back("100"); });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(timedOut);
    EXPECT_EQ(order, std::vector<std::string>({"0a", "0b", "negative", "100", "200", "300"}));
}

TEST_F(RunLoopContract, ATimerStartedByATimerRunsLater) {
    std::vector<std::string> order;
    loop->startTimer(10ms, [&] {
        order.push_back("first");
        loop->startTimer(0ms, [&] {
            order.push_back("chained");
            loop->stop();
        });
    });
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(order, std::vector<std::string>({"first", "chained"}));
}

TEST_F(RunLoopContract, CancelledTimerNeverRuns) {
    bool cancelledRan = false;
    const RunLoop::TimerId cancelled = loop->startTimer(10ms, [&] { cancelledRan = true; });
    loop->startTimer(100ms, [&] { loop->stop(); });
    loop->cancelTimer(cancelled);
    loop->cancelTimer(cancelled);   // twice is harmless
    loop->cancelTimer(123456789);  // unknown too
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(cancelledRan);
    EXPECT_FALSE(timedOut);
}

TEST_F(RunLoopContract, ATimerCancelledByAnotherDueInTheSamePassDoesNotRun) {
    bool secondRan = false;
    RunLoop::TimerId second = 0;
    loop->startTimer(0ms, [&] { loop->cancelTimer(second); });
    second = loop->startTimer(0ms, [&] { secondRan = true; });
    loop->startTimer(50ms, [&] { loop->stop(); });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(secondRan);
}

TEST_F(RunLoopContract, ATimerMayCancelItselfWhileRunning) {
    int runs = 0;
    RunLoop::TimerId self = 0;
    self = loop->startTimer(0ms, [&] {
        ++runs;
        loop->cancelTimer(self);
        loop->post([&] { loop->stop(); });
    });
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(runs, 1);
}

// The writer sends its second part only once the loop has read the first, so the watch
// must call back again for data that arrives after a callback.
TEST_F(RunLoopContract, WatchedPipeCallsBackEachTimeDataArrivesFromAnotherThread) {
    TestPipe pipe;
    std::string received;
    std::promise<void> firstPartRead;
    std::future<void> firstPartReadLater = firstPartRead.get_future();
    bool writerTold = false;
    RunLoop::WatchId watch = 0;
    watch = loop->watchDescriptor(pipe.readEnd(), RunLoop::Readiness::Readable, [&] {
        received += pipe.read();
        if (received == "hel" && !writerTold) {
            writerTold = true;
            firstPartRead.set_value();
        }
        if (received == "hello") {
            loop->unwatchDescriptor(watch);
            loop->stop();
        }
    });
    ASSERT_NE(watch, 0u);
    std::thread writer([&] {
        pipe.write("hel");
        if (firstPartReadLater.wait_for(testing::kRunLoopFailureDeadline) == std::future_status::ready) pipe.write("lo");
    });
    EXPECT_TRUE(loop->run());
    writer.join();
    EXPECT_EQ(received, "hello");
    EXPECT_FALSE(timedOut);
}

TEST_F(RunLoopContract, UnwatchingInsideCallbacksIsSafeTakesEffectAtOnceAndLeavesTheDataToTheCaller) {
    TestPipe first;
    TestPipe second;
    first.write("x");
    second.write("y");
    int calls = 0;
    RunLoop::WatchId firstWatch = 0;
    RunLoop::WatchId secondWatch = 0;
    // Both are ready at once; whichever runs first ends both watches, so the other never
    // runs, and the capture of the running callback outlives its own unwatching.
    const auto endBoth = [&, guard = std::make_shared<int>(7)] {
        ++calls;
        loop->unwatchDescriptor(firstWatch);
        loop->unwatchDescriptor(secondWatch);
        EXPECT_EQ(*guard, 7);
        loop->startTimer(50ms, [&] { loop->stop(); });
    };
    firstWatch = loop->watchDescriptor(first.readEnd(), RunLoop::Readiness::Readable, endBoth);
    secondWatch = loop->watchDescriptor(second.readEnd(), RunLoop::Readiness::Readable, endBoth);
    ASSERT_NE(firstWatch, 0u);
    ASSERT_NE(secondWatch, 0u);
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(timedOut);
    // The loop only waited for the data; reading it is the caller's.
    EXPECT_EQ(first.read(), "x");
    EXPECT_EQ(second.read(), "y");
}

TEST_F(RunLoopContract, TheSameDescriptorMayBeWatchedTwiceAndClosedAfterUnwatching) {
    auto pipe = std::make_unique<TestPipe>();
    std::vector<int> calls(2, 0);
    std::vector<RunLoop::WatchId> watches;
    for (std::size_t index = 0; index < calls.size(); ++index) {
        watches.push_back(loop->watchDescriptor(pipe->readEnd(), RunLoop::Readiness::Readable, [&, index] {
            ++calls[index];
            if (calls[0] > 0 && calls[1] > 0) {
                for (const RunLoop::WatchId watch : watches) loop->unwatchDescriptor(watch);
                loop->stop();
            }
        }));
    }
    pipe->write("z");
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(timedOut);
    EXPECT_GE(calls[0], 1);
    EXPECT_GE(calls[1], 1);
    pipe.reset();  // closed while the loop lives on; it runs on undisturbed
    loop->post([&] { loop->stop(); });
    EXPECT_TRUE(loop->run());
}

TEST_F(RunLoopContract, ADescriptorThatCannotBeWatchedIsLoggedAndGivesNoWatch) {
    EXPECT_EQ(loop->watchDescriptor(-1, RunLoop::Readiness::Readable, [] {}), 0u);
    loop->unwatchDescriptor(0);  // no watch: harmless
    EXPECT_TRUE(logHas("The run loop cannot watch descriptor -1:"));
}

TEST_F(RunLoopContract, RunInsideRunIsRefused) {
    bool nestedResult = true;
    loop->post([&] {
        nestedResult = loop->run();
        loop->stop();
    });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(nestedResult);
    EXPECT_TRUE(logHas("The run loop is already running"));
}

}  // namespace
}  // namespace tov
