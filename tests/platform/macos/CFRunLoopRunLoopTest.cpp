#include "platform/macos/CFRunLoopRunLoop.h"

#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

#include "platform/CloseOnExecPipe.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

// Bounds a test that fails by never stopping; a passing test stops long before.
constexpr std::chrono::milliseconds kFailureDeadline = 60s;

class CFRunLoopRunLoopTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        loop = RunLoop::create();
        ASSERT_NE(loop, nullptr);
        deadline = loop->startTimer(kFailureDeadline, [this] {
            timedOut = true;
            loop->stop();
        });
    }

    std::unique_ptr<RunLoop> loop;
    RunLoop::TimerId deadline = 0;
    bool timedOut = false;
};

struct Pipe {
    Pipe() { EXPECT_TRUE(openCloseOnExecPipe(ends)); }
    ~Pipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    void write(const std::string& bytes) const {
        EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), ssize_t(bytes.size()));
    }
    std::string read() const {
        char buffer[256];
        const ssize_t count = ::read(ends[0], buffer, sizeof buffer);
        return count > 0 ? std::string(buffer, size_t(count)) : std::string();
    }
    int ends[2] = {-1, -1};
};

TEST_F(CFRunLoopRunLoopTest, CreateGivesTheCFRunLoopOfThisThread) {
    EXPECT_NE(dynamic_cast<CFRunLoopRunLoop*>(loop.get()), nullptr);
}

TEST_F(CFRunLoopRunLoopTest, WorkPostedFromAnotherThreadRunsOnTheLoopThreadInOrder) {
    const std::thread::id loopThread = std::this_thread::get_id();
    std::vector<int> order;
    bool onLoopThread = true;
    std::thread poster([&] {
        for (int index = 0; index < 1000; ++index) {
            loop->post([&, index] {
                order.push_back(index);
                onLoopThread = onLoopThread && std::this_thread::get_id() == loopThread;
                if (index == 999) loop->stop();
            });
        }
    });
    EXPECT_TRUE(loop->run());
    poster.join();
    EXPECT_FALSE(timedOut);
    ASSERT_EQ(order.size(), 1000u);
    for (int index = 0; index < 1000; ++index) EXPECT_EQ(order[size_t(index)], index);
    EXPECT_TRUE(onLoopThread);
}

TEST_F(CFRunLoopRunLoopTest, StopFromAnotherThreadEndsRun) {
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

TEST_F(CFRunLoopRunLoopTest, StopBeforeRunEndsTheNextRunAtOnceAndTheLoopRunsAgain) {
    bool ran = false;
    loop->post([&] { ran = true; });
    loop->stop();
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(ran);
    loop->post([&] { loop->stop(); });
    EXPECT_TRUE(loop->run());
    EXPECT_TRUE(ran);
    EXPECT_FALSE(timedOut);
}

TEST_F(CFRunLoopRunLoopTest, StopInACallbackLeavesTheRestForTheNextRun) {
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

TEST_F(CFRunLoopRunLoopTest, TimersRunInDeadlineOrderAndANegativeDelayCountsAsNone) {
    std::vector<int> order;
    loop->startTimer(60ms, [&] {
        order.push_back(3);
        loop->stop();
    });
    loop->startTimer(30ms, [&] { order.push_back(2); });
    loop->startTimer(-5ms, [&] { order.push_back(1); });
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(order, std::vector<int>({1, 2, 3}));
    EXPECT_FALSE(timedOut);
}

TEST_F(CFRunLoopRunLoopTest, CancelledTimersNeverRunAndATimerMayCancelItself) {
    bool cancelledRan = false;
    const RunLoop::TimerId cancelled = loop->startTimer(10ms, [&] { cancelledRan = true; });
    loop->cancelTimer(cancelled);
    RunLoop::TimerId self = 0;
    self = loop->startTimer(20ms, [&] { loop->cancelTimer(self); });
    loop->startTimer(50ms, [&] { loop->stop(); });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(cancelledRan);
    EXPECT_FALSE(timedOut);
}

TEST_F(CFRunLoopRunLoopTest, WatchedPipeCallsBackEachTimeDataArrivesFromAnotherThread) {
    Pipe pipe;
    std::string received;
    const RunLoop::WatchId watch = loop->watchDescriptor(pipe.ends[0], RunLoop::Readiness::Readable, [&] {
        received += pipe.read();
        if (received == "ab") loop->stop();
    });
    ASSERT_NE(watch, 0u);
    std::thread writer([&] {
        pipe.write("a");
        std::this_thread::sleep_for(50ms);
        pipe.write("b");
    });
    EXPECT_TRUE(loop->run());
    writer.join();
    EXPECT_EQ(received, "ab");
    EXPECT_FALSE(timedOut);
    loop->unwatchDescriptor(watch);
}

TEST_F(CFRunLoopRunLoopTest, UnwatchingInsideACallbackIsSafeAndTheDescriptorStaysTheCallers) {
    Pipe pipe;
    int calls = 0;
    RunLoop::WatchId watch = 0;
    watch = loop->watchDescriptor(pipe.ends[0], RunLoop::Readiness::Readable, [&] {
        ++calls;
        loop->unwatchDescriptor(watch);
        loop->startTimer(100ms, [&] { loop->stop(); });
    });
    ASSERT_NE(watch, 0u);
    pipe.write("x");
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(pipe.read(), "x");  // the loop watched its own copy and never read
}

TEST_F(CFRunLoopRunLoopTest, PriorityReadinessAndABadDescriptorAreRefusedWithALogLine) {
    Pipe pipe;
    EXPECT_EQ(loop->watchDescriptor(pipe.ends[0], RunLoop::Readiness::Priority, [] {}), 0u);
    EXPECT_TRUE(logHas("cannot watch descriptor"));
    EXPECT_EQ(loop->watchDescriptor(-1, RunLoop::Readiness::Readable, [] {}), 0u);
}

TEST_F(CFRunLoopRunLoopTest, RunInsideRunIsRefused) {
    bool nested = true;
    loop->post([&] {
        nested = loop->run();
        loop->stop();
    });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(nested);
}

// SIGTERM stays blocked in this test process afterwards, as in the daemon.
TEST_F(CFRunLoopRunLoopTest, SigtermFromAnotherThreadReachesTheTerminationHandlerOnTheLoopThread) {
    RunLoop::blockTerminationSignal();
    const std::thread::id loopThread = std::this_thread::get_id();
    int handled = 0;
    bool onLoopThread = false;
    loop->setTerminationHandler([&] {
        ++handled;
        onLoopThread = std::this_thread::get_id() == loopThread;
        loop->stop();
    });
    std::promise<void> running;
    loop->post([&] { running.set_value(); });
    std::thread sender([&] {
        running.get_future().wait();
        ::kill(::getpid(), SIGTERM);
    });
    EXPECT_TRUE(loop->run());
    sender.join();
    EXPECT_FALSE(timedOut);
    EXPECT_EQ(handled, 1);
    EXPECT_TRUE(onLoopThread);
}

}  // namespace
}  // namespace tov
