#include "platform/linux/InotifyFileWatcher.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "platform/linux/EpollRunLoop.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kLatency = 200ms;
// Bounds a wait that fails; a passing wait ends long before.
constexpr std::chrono::milliseconds kFailureDeadline = 30s;

class InotifyFileWatcherTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        loop = EpollRunLoop::open();
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

    std::unique_ptr<EpollRunLoop> loop;
    std::unique_ptr<FileWatcher> watcher;
    std::string watched;
    std::string file;
    int calls = 0;
};

TEST_F(InotifyFileWatcherTest, CreationOfTheFileCallsBack) {
    watch(file);
    testing::writeFile(file, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, RewritingTheFileCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    testing::writeFile(file, "{\"EventDrivenScan\": true}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, ChangingOnlyThePermissionsCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, ReplacementByARenameCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    testing::writeFile(file + ".new", "{\"ScanAfterRestart\": true}");
    settle();
    EXPECT_EQ(calls, 0);  // the new file's own name is another one
    ASSERT_EQ(std::rename((file + ".new").c_str(), file.c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, MovingTheFileAwayCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    ASSERT_EQ(std::rename(file.c_str(), folder.file("elsewhere").c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, DeletionCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    ASSERT_EQ(::unlink(file.c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, ABurstOfWritesGivesOneCallback) {
    constexpr std::chrono::milliseconds kLongLatency = 1000ms;
    watch(file, kLongLatency);
    for (int index = 0; index < 50; ++index) testing::writeFile(file, std::to_string(index));
    ASSERT_TRUE(waitForCalls(1));
    settle(kLongLatency);
    EXPECT_EQ(calls, 1);
}

TEST_F(InotifyFileWatcherTest, ChangesAfterACallbackGiveAnotherOne) {
    watch(file);
    testing::writeFile(file, "1");
    ASSERT_TRUE(waitForCalls(1));
    testing::writeFile(file, "2");
    EXPECT_TRUE(waitForCalls(2));
}

TEST_F(InotifyFileWatcherTest, UnrelatedEntriesGiveNoCallback) {
    testing::writeFile(file + ".bak", "{}");
    watch(file);
    testing::writeFile(watched + "/other.json", "{}");
    testing::writeFile(file + ".bak", "changed");
    ASSERT_EQ(::unlink((file + ".bak").c_str()), 0);
    ASSERT_EQ(::mkdir((watched + "/policy").c_str(), 0700), 0);
    ASSERT_EQ(::mkdir(folder.file("watchedx").c_str(), 0700), 0);
    testing::writeFile(folder.file("policy.json"), "{}");  // the name, one folder too high
    settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(InotifyFileWatcherTest, AFolderThatAppearsLaterTwoLevelsDownIsFollowed) {
    const std::string deep = folder.file("a/b/policy.json");
    watch(deep);
    ASSERT_EQ(::mkdir(folder.file("a").c_str(), 0700), 0);
    testing::writeFile(folder.file("a/unrelated"), "x");
    settle();
    ASSERT_EQ(::mkdir(folder.file("a/b").c_str(), 0700), 0);
    settle();
    calls = 0;
    testing::writeFile(folder.file("a/b/unrelated"), "x");
    settle();
    EXPECT_EQ(calls, 0);
    testing::writeFile(deep, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, FoldersMadeAndFilledAtOnceAreFollowed) {
    const std::string deep = folder.file("x/y/z/policy.json");
    watch(deep);
    testing::writeFile(deep, "{}");  // mkdir -p and write, faster than the watcher can follow
    ASSERT_TRUE(waitForCalls(1));
    settle();
    calls = 0;
    testing::writeFile(deep, "{\"a\": 1}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, TheFolderDeletedAndRecreatedIsFollowed) {
    testing::writeFile(file, "{}");
    watch(file);
    ASSERT_EQ(::unlink(file.c_str()), 0);
    ASSERT_EQ(::rmdir(watched.c_str()), 0);
    ASSERT_TRUE(waitForCalls(1));
    ASSERT_EQ(::mkdir(watched.c_str(), 0700), 0);
    settle();
    calls = 0;
    testing::writeFile(file, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, TheFolderRenamedAwayIsLeftAndItsSuccessorWatched) {
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

TEST_F(InotifyFileWatcherTest, AnAncestorRenamedAwayIsFollowedToo) {
    const std::string deep = folder.file("a/b/policy.json");
    testing::writeFile(deep, "{}");
    watch(deep);
    ASSERT_EQ(std::rename(folder.file("a").c_str(), folder.file("a.old").c_str()), 0);
    ASSERT_TRUE(waitForCalls(1));
    settle();
    calls = 0;
    testing::writeFile(folder.file("a.old/b/policy.json"), "gone");
    settle();
    EXPECT_EQ(calls, 0);
    testing::writeFile(deep, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, AFifoAFolderOrALinkAtThePathIsAChangeAndNeverOpened) {
    watch(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);  // opening it would block the loop
    ASSERT_TRUE(waitForCalls(1));
    ASSERT_EQ(::unlink(file.c_str()), 0);
    settle();
    calls = 0;
    ASSERT_EQ(::mkdir(file.c_str(), 0700), 0);
    ASSERT_TRUE(waitForCalls(1));
    testing::writeFile(file + "/inside", "x");  // inside a folder of the file's name
    ASSERT_EQ(::unlink((file + "/inside").c_str()), 0);
    ASSERT_EQ(::rmdir(file.c_str()), 0);
    settle();
    calls = 0;
    ASSERT_EQ(::symlink("/dev/zero", file.c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(InotifyFileWatcherTest, NoCallbackAfterDestruction) {
    watch(file);
    testing::writeFile(file, "{}");
    watcher.reset();
    settle();
    EXPECT_EQ(calls, 0);
}

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

TEST_F(InotifyFileWatcherTest, TheCallbackMayEndItsOwnWatcher) {
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

TEST_F(InotifyFileWatcherTest, APathWithoutAFileNameIsRefusedWithALogLine) {
    EXPECT_EQ(FileWatcher::create(*loop, "", kLatency, [] {}), nullptr);
    EXPECT_EQ(FileWatcher::create(*loop, "/", kLatency, [] {}), nullptr);
    EXPECT_EQ(FileWatcher::create(*loop, watched + "/", kLatency, [] {}), nullptr);
    EXPECT_TRUE(logHas("The path [/] names no file to watch."));
}

TEST_F(InotifyFileWatcherTest, AFileInTheWayOfTheFolderIsWaitedOut) {
    testing::writeFile(folder.file("blocker"), "not a folder");
    const std::string deep = folder.file("blocker/policy.json");
    watch(deep);
    ASSERT_EQ(::unlink(folder.file("blocker").c_str()), 0);
    ASSERT_EQ(::mkdir(folder.file("blocker").c_str(), 0700), 0);
    settle();
    calls = 0;
    testing::writeFile(deep, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

}  // namespace
}  // namespace tov
