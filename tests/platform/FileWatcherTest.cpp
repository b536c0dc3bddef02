// What every platform's file watcher promises, tested through FileWatcher and RunLoop alone.
// The waits end as soon as what they wait for has happened; no case bounds how soon a
// callback comes, as the platforms' event services deliver with latencies of their own.

#include "platform/FileWatcher.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "support/FileWatcherFixture.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

class FileWatcherContract : public testing::FileWatcherFixture {};

TEST_F(FileWatcherContract, CreationOfTheFileCallsBack) {
    watch(file);
    testing::writeFile(file, "{}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FileWatcherContract, RewritingTheFileCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    testing::writeFile(file, "{\"EventDrivenScan\": true}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FileWatcherContract, ReplacementByARenameCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    testing::writeFile(file + ".new", "{\"ScanAfterRestart\": true}");
    settle();
    EXPECT_EQ(calls, 0);  // the new file's own name is another one
    ASSERT_EQ(std::rename((file + ".new").c_str(), file.c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FileWatcherContract, MovingTheFileAwayCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    ASSERT_EQ(std::rename(file.c_str(), folder.file("elsewhere").c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FileWatcherContract, DeletionCallsBack) {
    testing::writeFile(file, "{}");
    watch(file);
    ASSERT_EQ(::unlink(file.c_str()), 0);
    EXPECT_TRUE(waitForCalls(1));
}

// The writes take a few milliseconds, far less than the latency that gathers them.
TEST_F(FileWatcherContract, ABurstOfWritesGivesOneCallback) {
    constexpr std::chrono::milliseconds kLongLatency = 1000ms;
    watch(file, kLongLatency);
    for (int index = 0; index < 50; ++index) testing::writeFile(file, std::to_string(index));
    ASSERT_TRUE(waitForCalls(1));
    settle(kLongLatency);
    EXPECT_EQ(calls, 1);
}

TEST_F(FileWatcherContract, ChangesAfterACallbackGiveAnotherOne) {
    watch(file);
    testing::writeFile(file, "1");
    ASSERT_TRUE(waitForCalls(1));
    testing::writeFile(file, "2");
    EXPECT_TRUE(waitForCalls(2));
}

TEST_F(FileWatcherContract, UnrelatedEntriesGiveNoCallback) {
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

TEST_F(FileWatcherContract, AFolderThatAppearsLaterTwoLevelsDownIsFollowed) {
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

TEST_F(FileWatcherContract, FoldersMadeAndFilledAtOnceAreFollowed) {
    const std::string deep = folder.file("x/y/z/policy.json");
    watch(deep);
    testing::writeFile(deep, "{}");  // mkdir -p and write, faster than the watcher can follow
    ASSERT_TRUE(waitForCalls(1));
    settle();
    calls = 0;
    testing::writeFile(deep, "{\"a\": 1}");
    EXPECT_TRUE(waitForCalls(1));
}

TEST_F(FileWatcherContract, TheFolderDeletedAndRecreatedIsFollowed) {
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

TEST_F(FileWatcherContract, TheFolderRenamedAwayIsLeftAndItsSuccessorWatched) {
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

TEST_F(FileWatcherContract, AnAncestorRenamedAwayIsFollowedToo) {
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

TEST_F(FileWatcherContract, AFileInTheWayOfTheFolderIsWaitedOut) {
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

TEST_F(FileWatcherContract, AFifoAFolderOrALinkAtThePathIsAChangeAndNeverOpened) {
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

TEST_F(FileWatcherContract, NoCallbackAfterDestruction) {
    watch(file);
    testing::writeFile(file, "{}");
    watcher.reset();
    settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(FileWatcherContract, TheCallbackMayEndItsOwnWatcher) {
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

TEST_F(FileWatcherContract, APathWithoutAFileNameIsRefusedWithALogLine) {
    EXPECT_EQ(FileWatcher::create(*loop, "", kLatency, [] {}), nullptr);
    EXPECT_EQ(FileWatcher::create(*loop, "/", kLatency, [] {}), nullptr);
    EXPECT_EQ(FileWatcher::create(*loop, watched + "/", kLatency, [] {}), nullptr);
    EXPECT_TRUE(logHas("The path [/] names no file to watch."));
}

}  // namespace
}  // namespace tov
