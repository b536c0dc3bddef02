#include "platform/linux/EpollRunLoop.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/CloseOnExecPipe.h"
#include "support/ChildProcess.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

// Bounds a test that fails by never stopping; a passing test stops long before.
constexpr std::chrono::milliseconds kFailureDeadline = 60s;

class EpollRunLoopTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        loop = EpollRunLoop::open();
        ASSERT_NE(loop, nullptr);
        loop->startTimer(kFailureDeadline, [this] {
            timedOut = true;
            loop->stop();
        });
    }

    std::unique_ptr<EpollRunLoop> loop;
    bool timedOut = false;
};

struct Pipe {
    Pipe() { EXPECT_TRUE(openCloseOnExecPipe(ends)); }
    ~Pipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    void write(const std::string& bytes) const { EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), ssize_t(bytes.size())); }
    std::string read() const {
        char buffer[256];
        const ssize_t count = ::read(ends[0], buffer, sizeof buffer);
        return count > 0 ? std::string(buffer, size_t(count)) : std::string();
    }
    int ends[2] = {-1, -1};
};

std::set<int> openDescriptors() {
    std::set<int> descriptors;
    DIR* folder = ::opendir("/proc/self/fd");
    while (const dirent* entry = folder ? ::readdir(folder) : nullptr) {
        if (entry->d_name[0] != '.' && std::stoi(entry->d_name) != ::dirfd(folder)) {
            descriptors.insert(std::stoi(entry->d_name));
        }
    }
    if (folder) ::closedir(folder);
    return descriptors;
}

TEST_F(EpollRunLoopTest, CreateGivesTheEpollLoop) {
    const std::unique_ptr<RunLoop> created = RunLoop::create();
    EXPECT_NE(dynamic_cast<EpollRunLoop*>(created.get()), nullptr);
}

TEST_F(EpollRunLoopTest, WorkPostedFromAnotherThreadRunsOnTheLoopThreadInOrder) {
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::thread poster([&] {
        for (int index = 0; index < 100; ++index) {
            loop->post([&, index] {
                order.push_back(index);
                threads.push_back(std::this_thread::get_id());
                if (index == 99) loop->stop();
            });
        }
    });
    EXPECT_TRUE(loop->run());
    poster.join();
    EXPECT_FALSE(timedOut);
    ASSERT_EQ(order.size(), 100u);
    for (int index = 0; index < 100; ++index) EXPECT_EQ(order[size_t(index)], index);
    for (const std::thread::id& thread : threads) EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(EpollRunLoopTest, StopFromAnotherThreadEndsRun) {
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

TEST_F(EpollRunLoopTest, StopBeforeRunEndsTheNextRunAtOnceAndTheLoopRunsAgain) {
    loop->stop();
    bool ran = false;
    loop->post([&] {
        ran = true;
        loop->stop();
    });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(ran);
    EXPECT_TRUE(loop->run());
    EXPECT_TRUE(ran);
    EXPECT_FALSE(timedOut);
}

TEST_F(EpollRunLoopTest, StopInACallbackLeavesTheRestForTheNextRun) {
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

TEST_F(EpollRunLoopTest, TimersRunInDeadlineOrderAndANegativeDelayCountsAsNone) {
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

TEST_F(EpollRunLoopTest, ATimerStartedByATimerRunsLater) {
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

TEST_F(EpollRunLoopTest, CancelledTimerNeverRuns) {
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

TEST_F(EpollRunLoopTest, ATimerCancelledByAnotherDueInTheSamePassDoesNotRun) {
    bool secondRan = false;
    RunLoop::TimerId second = 0;
    loop->startTimer(0ms, [&] { loop->cancelTimer(second); });
    second = loop->startTimer(0ms, [&] { secondRan = true; });
    loop->startTimer(50ms, [&] { loop->stop(); });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(secondRan);
}

TEST_F(EpollRunLoopTest, ATimerMayCancelItselfWhileRunning) {
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

TEST_F(EpollRunLoopTest, WatchedPipeCallsBackWhenDataArrivesFromAnotherThread) {
    Pipe pipe;
    std::string received;
    RunLoop::WatchId watch = 0;
    watch = loop->watchDescriptor(pipe.ends[0], RunLoop::Readiness::Readable, [&] {
        received += pipe.read();
        if (received == "hello") {
            loop->unwatchDescriptor(watch);
            loop->stop();
        }
    });
    ASSERT_NE(watch, 0u);
    std::promise<void> running;
    loop->post([&] { running.set_value(); });
    std::thread writer([&] {
        running.get_future().wait();
        pipe.write("hel");
        pipe.write("lo");
    });
    EXPECT_TRUE(loop->run());
    writer.join();
    EXPECT_EQ(received, "hello");
    EXPECT_FALSE(timedOut);
}

TEST_F(EpollRunLoopTest, UnwatchingInsideCallbacksIsSafeAndTakesEffectAtOnce) {
    Pipe first;
    Pipe second;
    first.write("x");
    second.write("y");
    int calls = 0;
    RunLoop::WatchId firstWatch = 0;
    RunLoop::WatchId secondWatch = 0;
    // Both are ready in the same pass; whichever runs first ends both watches, so the other
    // never runs, and the capture of the running callback outlives its own unwatching.
    const auto endBoth = [&, guard = std::make_shared<int>(7)] {
        ++calls;
        loop->unwatchDescriptor(firstWatch);
        loop->unwatchDescriptor(secondWatch);
        EXPECT_EQ(*guard, 7);
        loop->startTimer(50ms, [&] { loop->stop(); });
    };
    firstWatch = loop->watchDescriptor(first.ends[0], RunLoop::Readiness::Readable, endBoth);
    secondWatch = loop->watchDescriptor(second.ends[0], RunLoop::Readiness::Readable, endBoth);
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(timedOut);
}

TEST_F(EpollRunLoopTest, TheSameDescriptorMayBeWatchedTwiceAndClosedAfterUnwatching) {
    Pipe pipe;
    int calls = 0;
    std::vector<RunLoop::WatchId> watches;
    for (int index = 0; index < 2; ++index) {
        watches.push_back(loop->watchDescriptor(pipe.ends[0], RunLoop::Readiness::Readable, [&] {
            if (++calls == 2) {
                for (const RunLoop::WatchId watch : watches) loop->unwatchDescriptor(watch);
                loop->stop();
            }
        }));
    }
    pipe.write("z");
    EXPECT_TRUE(loop->run());
    EXPECT_EQ(calls, 2);
}

TEST_F(EpollRunLoopTest, ADescriptorThatCannotBeWatchedIsLoggedAndGivesNoWatch) {
    EXPECT_EQ(loop->watchDescriptor(-1, RunLoop::Readiness::Readable, [] {}), 0u);
    const std::string file = folder.write("regular", "epoll refuses regular files");
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(loop->watchDescriptor(descriptor, RunLoop::Readiness::Readable, [] {}), 0u);
    ::close(descriptor);
    loop->unwatchDescriptor(0);
    EXPECT_TRUE(logHas("The run loop cannot watch descriptor -1:"));
}

TEST_F(EpollRunLoopTest, EveryDescriptorOfTheLoopIsClosedAtExec) {
    const std::set<int> before = openDescriptors();
    std::unique_ptr<EpollRunLoop> other = EpollRunLoop::open();
    ASSERT_NE(other, nullptr);
    Pipe pipe;
    other->watchDescriptor(pipe.ends[0], RunLoop::Readiness::Readable, [] {});
    other->setTerminationHandler([] {});
    const std::set<int> after = openDescriptors();
    int added = 0;
    for (const int descriptor : after) {
        if (before.count(descriptor) || descriptor == pipe.ends[0] || descriptor == pipe.ends[1]) continue;
        const int flags = ::fcntl(descriptor, F_GETFD);
        ++added;
        EXPECT_TRUE(flags & FD_CLOEXEC) << "descriptor " << descriptor;
    }
    EXPECT_GE(added, 5);  // epoll, eventfd, timerfd, signalfd and the watched copy
}

TEST_F(EpollRunLoopTest, RunInsideRunIsRefused) {
    bool nestedResult = true;
    loop->post([&] {
        nestedResult = loop->run();
        loop->stop();
    });
    EXPECT_TRUE(loop->run());
    EXPECT_FALSE(nestedResult);
    EXPECT_TRUE(logHas("The run loop is already running"));
}

TEST(EpollRunLoopSignal, SigtermReachesTheTerminationHandlerOnTheLoopThread) {
    const testing::ChildResult result = testing::runInChild([] {
        RunLoop::blockTerminationSignal();
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        if (!loop) return 2;
        bool handled = false;
        bool timedOut = false;
        loop->setTerminationHandler([&] {
            handled = true;
            loop->stop();
        });
        loop->startTimer(kFailureDeadline, [&] {
            timedOut = true;
            loop->stop();
        });
        loop->post([] { ::kill(::getpid(), SIGTERM); });
        if (!loop->run()) return 3;
        if (timedOut) return 4;
        return handled ? 0 : 1;
    });
    EXPECT_EQ(result.exitCode, 0);
}

TEST(EpollRunLoopSignal, SigtermFromAnotherThreadWhileTheLoopWaits) {
    const testing::ChildResult result = testing::runInChild([] {
        RunLoop::blockTerminationSignal();
        std::unique_ptr<RunLoop> loop = RunLoop::create();
        if (!loop) return 2;
        std::atomic<int> handled{0};
        loop->setTerminationHandler([&] {
            ++handled;
            loop->stop();
        });
        std::promise<void> running;
        loop->post([&] { running.set_value(); });
        std::thread sender([&] {
            running.get_future().wait();
            ::kill(::getpid(), SIGTERM);
        });
        loop->startTimer(kFailureDeadline, [&] { loop->stop(); });
        loop->run();
        sender.join();
        return handled == 1 ? 0 : 1;
    });
    EXPECT_EQ(result.exitCode, 0);
}

}  // namespace
}  // namespace tov
