#include "platform/WatchPoint.h"

#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/TestFolder.h"

namespace tov {
namespace {

// The folder's real path: the temporary folder may itself lie below a link.
std::string realPathOf(const std::string& path) {
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) ? std::string(resolved) : std::string();
}

class WatchPointTest : public ::testing::Test {
protected:
    testing::TestFolder folder;
    std::string root = realPathOf(folder.path());
};

TEST_F(WatchPointTest, AnExistingFolderIsWatchedItself) {
    folder.makeFolder("watched");
    const std::optional<WatchPoint> point = nearestWatchPoint(folder.file("watched/policy.json"));
    ASSERT_TRUE(point);
    EXPECT_EQ(point->folder, root + "/watched");
    EXPECT_EQ(point->target, root + "/watched/policy.json");
}

TEST_F(WatchPointTest, MissingFoldersAndAFileInTheWayLeadToTheNearestExistingFolder) {
    const std::optional<WatchPoint> missing = nearestWatchPoint(folder.file("a/b/policy.json"));
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->folder, root);
    EXPECT_EQ(missing->target, root + "/a/b/policy.json");

    testing::writeFile(folder.file("blocker"), "not a folder");
    const std::optional<WatchPoint> blocked = nearestWatchPoint(folder.file("blocker/policy.json"));
    ASSERT_TRUE(blocked);
    EXPECT_EQ(blocked->folder, root);
    EXPECT_EQ(blocked->target, root + "/blocker/policy.json");
}

TEST_F(WatchPointTest, ALinkedFolderIsWatchedUnderItsRealPath) {
    folder.makeFolder("private");
    folder.makeFolder("private/tmp");
    ASSERT_EQ(::symlink("private/tmp", folder.file("tmp").c_str()), 0);
    const std::optional<WatchPoint> point = nearestWatchPoint(folder.file("tmp/debug_tov"));
    ASSERT_TRUE(point);
    EXPECT_EQ(point->folder, root + "/private/tmp");
    EXPECT_EQ(point->target, root + "/private/tmp/debug_tov");
}

TEST_F(WatchPointTest, NothingBelowTheRootExistsButTheRoot) {
    const std::optional<WatchPoint> point = nearestWatchPoint("/no-such-folder-of-tov/x/policy.json");
    ASSERT_TRUE(point);
    EXPECT_EQ(point->folder, "/");
    EXPECT_EQ(point->target, "/no-such-folder-of-tov/x/policy.json");
    EXPECT_TRUE(point->isFolderOnTheWay("/"));
    EXPECT_TRUE(point->isFolderOnTheWay("/no-such-folder-of-tov"));
    EXPECT_TRUE(point->isFolderOnTheWay("/no-such-folder-of-tov/x"));
    EXPECT_FALSE(point->isFolderOnTheWay("/no-such-folder-of-tov/x/policy.json"));
}

TEST(WatchPoint, TheFoldersOnTheWayAreTheWatchedOneAndThoseBelowItUpToTheFile) {
    const WatchPoint point{"/private/var", "/private/var/a/b/policy.json"};
    EXPECT_TRUE(point.isFolderOnTheWay("/private/var"));
    EXPECT_TRUE(point.isFolderOnTheWay("/private/var/a"));
    EXPECT_TRUE(point.isFolderOnTheWay("/private/var/a/b"));
    EXPECT_FALSE(point.isFolderOnTheWay("/private"));                       // above the watched folder
    EXPECT_FALSE(point.isFolderOnTheWay("/private/var/a/b/policy.json"));  // the file itself
    EXPECT_FALSE(point.isFolderOnTheWay("/private/var/a/bb"));
    EXPECT_FALSE(point.isFolderOnTheWay("/private/var/ab"));
    EXPECT_FALSE(point.isFolderOnTheWay("/private/variable/a"));
    EXPECT_FALSE(point.isFolderOnTheWay(""));
}

TEST(WatchPoint, OnlyAPathEndingInAFileNameCanBeWatched) {
    EXPECT_FALSE(watchedFilePath(""));
    EXPECT_FALSE(watchedFilePath("/"));
    EXPECT_FALSE(watchedFilePath("/tmp/"));
    EXPECT_EQ(watchedFilePath("/tmp/./x/../debug_tov"), "/tmp/debug_tov");
    const std::optional<std::string> relative = watchedFilePath("policy.json");
    ASSERT_TRUE(relative);
    EXPECT_EQ(relative->front(), '/');
}

}  // namespace
}  // namespace tov
