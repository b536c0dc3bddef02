#include "discovery/macos/FollowedPath.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

MemorySystemSource volumes() {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.folder("/Volumes/Backup")
        .file("/Volumes/notes.txt", "text")
        .link("/Volumes/Macintosh HD", "/")
        .link("/Volumes/Notes", "/Volumes/notes.txt")
        .link("/Volumes/Gone", "/Volumes/nowhere")
        .link("/Volumes/Relative", "Backup");
    return source;
}

TEST(FollowedPath, AFolderOrALinkToAListableFolderIsAFolder) {
    MemorySystemSource source = volumes();
    EXPECT_TRUE(pathIsFolderFollowingLinks(source, "/Volumes/Backup"));
    EXPECT_TRUE(pathIsFolderFollowingLinks(source, "/Volumes/Macintosh HD"));
    EXPECT_TRUE(pathIsFolderFollowingLinks(source, "/Volumes/Relative"));
    EXPECT_FALSE(pathIsFolderFollowingLinks(source, "/Volumes/notes.txt"));
    EXPECT_FALSE(pathIsFolderFollowingLinks(source, "/Volumes/Notes"));
    EXPECT_FALSE(pathIsFolderFollowingLinks(source, "/Volumes/Gone"));
    EXPECT_FALSE(pathIsFolderFollowingLinks(source, "/Volumes/Missing"));
}

TEST(FollowedPath, ALinkExistsWhenItLeadsToSomething) {
    MemorySystemSource source = volumes();
    EXPECT_TRUE(pathExistsFollowingLinks(source, "/Volumes/notes.txt"));
    EXPECT_TRUE(pathExistsFollowingLinks(source, "/Volumes/Backup"));
    EXPECT_TRUE(pathExistsFollowingLinks(source, "/Volumes/Notes"));
    EXPECT_TRUE(pathExistsFollowingLinks(source, "/Volumes/Macintosh HD"));
    EXPECT_FALSE(pathExistsFollowingLinks(source, "/Volumes/Gone"));
    EXPECT_FALSE(pathExistsFollowingLinks(source, "/Volumes/Missing"));
}

}  // namespace
}  // namespace tov
