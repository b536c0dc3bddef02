#include "common/QVSFileUtils.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "support/TestFolder.h"

namespace tov {
namespace {

const std::string kSignature("PK\x03\x04", 4);

TEST(QVSFileUtils, ThreeBytesOfTheSignatureAreNotEnough) {
    testing::TestFolder folder;
    EXPECT_FALSE(QVSFileUtils::IsZipFile(folder.write("short", "PK\x03")));
}

TEST(QVSFileUtils, FileBeginningWithTheSignatureIsAZipFile) {
    testing::TestFolder folder;
    EXPECT_TRUE(QVSFileUtils::IsZipFile(folder.write("exact", kSignature)));
    EXPECT_TRUE(QVSFileUtils::IsZipFile(folder.write("longer", kSignature + std::string("\0\xff anything", 11))));
}

TEST(QVSFileUtils, OtherBeginningsAreNotZipFiles) {
    testing::TestFolder folder;
    EXPECT_FALSE(QVSFileUtils::IsZipFile(folder.write("empty", "")));
    EXPECT_FALSE(QVSFileUtils::IsZipFile(folder.write("text", "{\"json\": true}")));
    EXPECT_FALSE(QVSFileUtils::IsZipFile(folder.write("near", std::string("PK\x05\x06", 4))));
    EXPECT_FALSE(QVSFileUtils::IsZipFile(folder.write("shifted", " " + kSignature)));
}

TEST(QVSFileUtils, MissingPathAndFolderAreNotZipFiles) {
    testing::TestFolder folder;
    EXPECT_FALSE(QVSFileUtils::IsZipFile(folder.file("missing")));
    EXPECT_FALSE(QVSFileUtils::IsZipFile(folder.path()));
    EXPECT_FALSE(QVSFileUtils::IsZipFile(""));
}

TEST(QVSFileUtils, PipeIsNotAZipFileAndDoesNotBlock) {
    testing::TestFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(QVSFileUtils::IsZipFile(pipe));
}

}  // namespace
}  // namespace tov
