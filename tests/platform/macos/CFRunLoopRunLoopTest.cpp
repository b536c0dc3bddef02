// What the CFRunLoop run loop does beyond the run loop's shared contract
// (tests/platform/RunLoopTest.cpp).

#include "platform/macos/CFRunLoopRunLoop.h"

#include <CoreFoundation/CoreFoundation.h>
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <thread>

#include "support/RunLoopFixture.h"
#include "support/TestPipe.h"

namespace tov {
namespace {

class CFRunLoopRunLoopTest : public testing::RunLoopFixture {};

TEST_F(CFRunLoopRunLoopTest, CreateGivesTheCFRunLoopOfThisThread) {
    const auto* created = dynamic_cast<CFRunLoopRunLoop*>(loop.get());
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(created->cfRunLoop(), CFRunLoopGetCurrent());
}

// macOS has no exceptional condition to wait for on a descriptor.
TEST_F(CFRunLoopRunLoopTest, PriorityReadinessIsRefusedWithALogLine) {
    testing::TestPipe pipe;
    EXPECT_EQ(loop->watchDescriptor(pipe.readEnd(), RunLoop::Readiness::Priority, [] {}), 0u);
    EXPECT_TRUE(logHas("cannot watch descriptor " + std::to_string(pipe.readEnd()) + " for exceptional conditions"));
}

// CoreFoundation cannot be used in a forked child, so SIGTERM is sent to this very test
// process, and to the whole process, as launchd sends it: the kqueue that the loop reads
// records signals sent to the process, not those sent to one thread. SIGTERM stays blocked
// in this test process afterwards, as in the daemon, since it stays pending.
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
