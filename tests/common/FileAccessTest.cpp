#include "common/FileAccess.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/TestFolder.h"

namespace tov {
namespace {

TEST(FileAccessRead, ReadsTheWholeFile) {
    testing::TestFolder folder;
    const std::string path = folder.write("a.json", std::string(200000, 'x') + "end");
    int code = 0;
    const std::optional<std::string> bytes = readWholeFile(path, 1 << 20, &code);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->size(), 200003u);
    EXPECT_EQ(bytes->substr(200000), "end");
    EXPECT_EQ(code, 0);
}

TEST(FileAccessRead, MissingFileGivesTheNoSuchFileCode) {
    testing::TestFolder folder;
    int code = 0;
    EXPECT_FALSE(readWholeFile(folder.file("missing"), 100, &code));
    EXPECT_EQ(code, FileErrorCode::kReadNoSuchFile);
}

TEST(FileAccessRead, SymbolicLinkIsNotFollowed) {
    testing::TestFolder folder;
    const std::string target = folder.write("target", "secret");
    ASSERT_EQ(::symlink(target.c_str(), folder.file("link").c_str()), 0);
    int code = 0;
    EXPECT_FALSE(readWholeFile(folder.file("link"), 100, &code));
    EXPECT_NE(code, 0);
}

TEST(FileAccessRead, FolderIsNotRead) {
    testing::TestFolder folder;
    int code = 0;
    EXPECT_FALSE(readWholeFile(folder.path(), 100, &code));
    EXPECT_EQ(code, FileErrorCode::kReadUnknown);
}

TEST(FileAccessRead, FileOverTheLimitIsNotRead) {
    testing::TestFolder folder;
    const std::string path = folder.write("big", std::string(101, 'x'));
    int code = 0;
    EXPECT_FALSE(readWholeFile(path, 100, &code));
    EXPECT_EQ(code, FileErrorCode::kReadTooLarge);
    EXPECT_TRUE(readWholeFile(path, 101));
}

TEST(FileAccessSize, RegularFilesOnly) {
    testing::TestFolder folder;
    const std::string path = folder.write("f", "12345");
    EXPECT_EQ(regularFileSize(path), 5u);
    EXPECT_EQ(regularFileSize(folder.file("missing")), 0u);
    EXPECT_EQ(regularFileSize(folder.path()), 0u);
    ASSERT_EQ(::symlink(path.c_str(), folder.file("link").c_str()), 0);
    EXPECT_EQ(regularFileSize(folder.file("link")), 0u);
}

TEST(FileAccessWrite, ReplacesTheFileWithMode0600AndLeavesNoTemporaryFile) {
    testing::TestFolder folder;
    const std::string path = folder.write("report.json", "old contents that are longer");
    ASSERT_TRUE(writeFileAtomically(path, "new"));
    EXPECT_EQ(testing::readFile(path), "new");
    EXPECT_EQ(testing::lstatOf(path).st_mode & 07777, 0600u);
    int entries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        (void)entry;
        ++entries;
    }
    EXPECT_EQ(entries, 1);
}

TEST(FileAccessWrite, SymbolicLinkIsReplacedNotFollowed) {
    testing::TestFolder folder;
    const std::string target = folder.write("target", "keep me");
    const std::string link = folder.file("link");
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
    ASSERT_TRUE(writeFileAtomically(link, "written"));
    EXPECT_EQ(testing::readFile(target), "keep me");
    EXPECT_TRUE(S_ISREG(testing::lstatOf(link).st_mode));
    EXPECT_EQ(testing::readFile(link), "written");
}

TEST(FileAccessWrite, MissingFolderFailsWithTheNoSuchFileCode) {
    testing::TestFolder folder;
    int code = 0;
    EXPECT_FALSE(writeFileAtomically(folder.file("no/such/file"), "x", &code));
    EXPECT_EQ(code, FileErrorCode::kNoSuchFile);
}

TEST(FileAccessRemove, RemovesFilesAndLinksButNotFolders) {
    testing::TestFolder folder;
    const std::string path = folder.write("f", "x");
    EXPECT_TRUE(removeFile(path));
    EXPECT_TRUE(removeFile(path));
    const std::string sub = folder.makeFolder("sub");
    EXPECT_FALSE(removeFile(sub));
}

}  // namespace
}  // namespace tov
