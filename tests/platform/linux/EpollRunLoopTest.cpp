// What the epoll run loop does beyond the run loop's shared contract
// (tests/platform/RunLoopTest.cpp).

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

#include "support/ChildProcess.h"
#include "support/RunLoopFixture.h"
#include "support/TestPipe.h"

namespace tov {
namespace {

using testing::kRunLoopFailureDeadline;
using testing::TestPipe;

class EpollRunLoopTest : public testing::RunLoopFixture {};

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
    EXPECT_NE(dynamic_cast<EpollRunLoop*>(loop.get()), nullptr);
}

// epoll refuses what is always ready; CFFileDescriptor watches a regular file like any other.
TEST_F(EpollRunLoopTest, ARegularFileCannotBeWatchedAndIsLogged) {
    const std::string file = folder.write("regular", "epoll refuses regular files");
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(loop->watchDescriptor(descriptor, RunLoop::Readiness::Readable, [] {}), 0u);
    ::close(descriptor);
    EXPECT_TRUE(logHas("The run loop cannot watch descriptor " + std::to_string(descriptor) + ":"));
}

TEST_F(EpollRunLoopTest, EveryDescriptorOfTheLoopIsClosedAtExec) {
    const std::set<int> before = openDescriptors();
    std::unique_ptr<EpollRunLoop> other = EpollRunLoop::open();
    ASSERT_NE(other, nullptr);
    TestPipe pipe;
    other->watchDescriptor(pipe.readEnd(), RunLoop::Readiness::Readable, [] {});
    other->setTerminationHandler([] {});
    const std::set<int> after = openDescriptors();
    int added = 0;
    for (const int descriptor : after) {
        if (before.count(descriptor) || descriptor == pipe.readEnd() || descriptor == pipe.writeEnd()) continue;
        const int flags = ::fcntl(descriptor, F_GETFD);
        ++added;
        EXPECT_TRUE(flags & FD_CLOEXEC) << "descriptor " << descriptor;
    }
    EXPECT_GE(added, 5);  // epoll, eventfd, timerfd, signalfd and the watched copy
}

// SIGTERM is sent to the whole process, as systemd sends it, in a forked child whose only
// threads block it; in the test process another thread could take it and end the run.
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
        loop->startTimer(kRunLoopFailureDeadline, [&] {
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
        const std::thread::id loopThread = std::this_thread::get_id();
        std::atomic<int> handled{0};
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
        loop->startTimer(kRunLoopFailureDeadline, [&] { loop->stop(); });
        loop->run();
        sender.join();
        return handled == 1 && onLoopThread ? 0 : 1;
    });
    EXPECT_EQ(result.exitCode, 0);
}

}  // namespace
}  // namespace tov
