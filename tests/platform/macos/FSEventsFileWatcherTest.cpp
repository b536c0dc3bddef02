#include "platform/macos/FSEventsFileWatcher.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kLatency = 200ms;
// Bounds a wait that fails; a passing wait ends long before.
constexpr std::chrono::milliseconds kFailureDeadline = 30s;

// The temporary folder lies below /tmp, which is /private/tmp: every path here is given as
// the link spells it, so the watcher must match the real paths FSEvents reports.
class FSEventsFileWatcherTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        loop = RunLoop::create();
        ASSERT_NE(loop, nullptr);
        folder.makeFolder("sentinel");
        watched = folder.makeFolder("watched");
        file = watched + "/policy.json";
    }

    void watch(const std::string& path, std::chrono::milliseconds latency = kLatency) {
        watcher = FileWatcher::create(*loop, path, latency, [this] { ++calls; });
        ASSERT_NE(watcher, nullptr);
    }

    // Runs the loop until done answers true or the failure deadline passes.
    bool runUntil(const std::function<bool()>& done) {
        bool finished = done();
        const RunLoop::TimerId deadline = loop->startTimer(kFailureDeadline, [this] { loop->stop(); });
        RunLoop::TimerId poll = 0;
        std::function<void()> check = [&] {
            if (done()) {
                finished = true;
                loop->stop();
            } else {
                poll = loop->startTimer(5ms, check);
            }
        };
        if (!finished) {
            poll = loop->startTimer(0ms, check);
            loop->run();
        }
        loop->cancelTimer(deadline);
        loop->cancelTimer(poll);
        return finished;
    }

    bool waitForCalls(int count) {
        return runUntil([&] { return calls >= count; });
    }

    // Lets everything done so far reach the watcher under test: a file in another folder is
    // changed after it, and its own watcher, with a longer latency, calls back after any
    // callback the watcher under test owes.
    void settle(std::chrono::milliseconds latency = kLatency) {
        bool sentinelFired = false;
        const std::unique_ptr<FileWatcher> sentinel =
            FileWatcher::create(*loop, folder.file("sentinel/now"), latency * 3, [&] { sentinelFired = true; });
        ASSERT_NE(sentinel, nullptr);
        testing::writeFile(folder.file("sentinel/now"), "x");
        ASSERT_TRUE(runUntil([&] { return sentinelFired; }));
    }

    std::unique_ptr<RunLoop> loop;
    std::unique_ptr<FileWatcher> watcher;
    std::string watched;
    std::string file;
    int calls = 0;
};

TEST_F(FSEventsFileWatcherTest, CreationRewriteAndDeletionOfTheFileCallBack) {
    watch(file);
    testing::writeFile(file, "{}");
    ASSERT_TRUE(waitForCalls(1));
    settle();
    calls = 0;
    testing::writeFile(file, "{\"EventDrivenScan\": true}");
    ASSERT_TRUE(waitForCalls(1));
    settle();
    calls = 0;
    ASSERT_EQ(::unlink(file.c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FSEventsFileWatcherTest, ReplacementByARenameCallsBack) {
    watch(file);
    testing::writeFile(file + ".new", "{}");
    ASSERT_EQ(std::rename((file + ".new").c_str(), file.c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FSEventsFileWatcherTest, UnrelatedEntriesGiveNoCallback) {
    watch(file);
    testing::writeFile(watched + "/other.json", "{}");
    testing::writeFile(file + ".bak", "{}");
    ASSERT_EQ(::mkdir((watched + "/policy").c_str(), 0700), 0);
    testing::writeFile(folder.file("policy.json"), "{}");  // the name, one folder too high
    settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(FSEventsFileWatcherTest, AFolderThatAppearsLaterTwoLevelsDownIsFollowed) {
    const std::string deep = folder.file("a/b/policy.json");
    watch(deep);
    ASSERT_EQ(::mkdir(folder.file("a").c_str(), 0700), 0);
    ASSERT_EQ(::mkdir(folder.file("a/b").c_str(), 0700), 0);
    settle();
    calls = 0;
    testing::writeFile(folder.file("a/b/unrelated"), "x");
    settle();
    EXPECT_EQ(calls, 0);
    testing::writeFile(deep, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FSEventsFileWatcherTest, TheFolderRenamedAwayIsLeftAndItsSuccessorWatched) {
    testing::writeFile(file, "{}");
    watch(file);
    const std::string old = folder.file("watched.old");
    ASSERT_EQ(std::rename(watched.c_str(), old.c_str()), 0);
    ASSERT_TRUE(waitForCalls(1));
    ASSERT_EQ(::mkdir(watched.c_str(), 0700), 0);
    settle();
    calls = 0;
    testing::writeFile(old + "/policy.json", "moved away");
    settle();
    EXPECT_EQ(calls, 0);
    testing::writeFile(file, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FSEventsFileWatcherTest, NoCallbackAfterDestruction) {
    watch(file);
    testing::writeFile(file, "{}");
    watcher.reset();
    settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(FSEventsFileWatcherTest, TheCallbackMayEndItsOwnWatcher) {
    watcher = FileWatcher::create(*loop, file, kLatency, [this] {
        ++calls;
        watcher.reset();
    });
    ASSERT_NE(watcher, nullptr);
    testing::writeFile(file, "{}");
    ASSERT_TRUE(waitForCalls(1));
    EXPECT_EQ(watcher, nullptr);
    testing::writeFile(file, "again");
    settle();
    EXPECT_EQ(calls, 1);
}

TEST_F(FSEventsFileWatcherTest, APathWithoutAFileNameIsRefusedWithALogLine) {
    EXPECT_EQ(FileWatcher::create(*loop, "", kLatency, [] {}), nullptr);
    EXPECT_EQ(FileWatcher::create(*loop, "/", kLatency, [] {}), nullptr);
    EXPECT_EQ(FileWatcher::create(*loop, watched + "/", kLatency, [] {}), nullptr);
    EXPECT_TRUE(logHas("The path [/] names no file to watch."));
}

}  // namespace
}  // namespace tov
