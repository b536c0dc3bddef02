// What the inotify watcher does beyond the file watcher's shared contract
// (tests/platform/FileWatcherTest.cpp).

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "support/FileWatcherFixture.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

class InotifyFileWatcherTest : public testing::FileWatcherFixture {};

// inotify reports a change of the attributes alone; FSEvents makes no such promise.
TEST_F(InotifyFileWatcherTest, ChangingOnlyThePermissionsCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
    EXPECT_TRUE(waitForCalls(1));
}

// The latency is this watcher's own timer, started when it reads the event: destroying
// the watcher while it runs must cancel it.
TEST_F(InotifyFileWatcherTest, NoCallbackAfterDestructionWhileTheLatencyRuns) {
    constexpr std::chrono::milliseconds kLongLatency = 1000ms;
    watch(file, kLongLatency);
    testing::writeFile(file, "{}");
    settle(kLatency);  // the event was read and the long latency began
    EXPECT_EQ(calls, 0);
    watcher.reset();
    settle(kLongLatency);
    EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace tov
