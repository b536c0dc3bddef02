#include "common/QVSMD5Utils.h"

#include <gtest/gtest.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <random>
#include <string>

#include "support/ChildProcess.h"
#include "support/TestFolder.h"
#include "common/QVSCommand.h"

namespace tov {
namespace {

TEST(QVSMD5UtilsData, DigestOfAbc) {
    EXPECT_EQ(QVSMD5Utils::md5OfData("abc"), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(QVSMD5UtilsData, NoBytesGiveEmptyText) {
    EXPECT_EQ(QVSMD5Utils::md5OfData(""), "");
    EXPECT_EQ(QVSMD5Utils::md5OfData(std::string_view()), "");
}

TEST(QVSMD5UtilsData, ZeroBytesAreDigestedLikeAnyOther) {
    EXPECT_EQ(QVSMD5Utils::md5OfData(std::string_view("\0", 1)), "93b885adfe0da089cdf634904fd59f71");
    EXPECT_EQ(QVSMD5Utils::md5OfData("The quick brown fox jumps over the lazy dog"), "9e107d9d372bb6826bd81d3542a419d6");
}

TEST(QVSMD5UtilsFile, DirectoryAndMissingPathGiveEmptyText) {
    testing::TestFolder folder;
    EXPECT_EQ(QVSMD5Utils::md5OfFile(folder.path()), "");
    EXPECT_EQ(QVSMD5Utils::md5OfFile(folder.file("missing")), "");
    EXPECT_EQ(QVSMD5Utils::md5OfFile(""), "");
}

TEST(QVSMD5UtilsFile, EmptyFileHasTheDigestOfNoBytes) {
    testing::TestFolder folder;
    EXPECT_EQ(QVSMD5Utils::md5OfFile(folder.write("empty", "")), "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(QVSMD5UtilsFile, FileSpanningManyChunks) {
    testing::TestFolder folder;
    const std::string path = folder.write("million", std::string(1000000, 'a'));
    EXPECT_EQ(QVSMD5Utils::md5OfFile(path), "7707d6ae4e027c70eea2a935c2296f21");
}

std::string randomBytes(std::size_t count) {
    std::mt19937 generator(20240501);
    std::uniform_int_distribution<int> byte(0, 255);
    std::string bytes(count, '\0');
    for (char& each : bytes) each = static_cast<char>(byte(generator));
    return bytes;
}

// The system's own digest tool, where there is one.
std::optional<std::string> systemToolDigest(const std::string& path) {
    std::optional<std::string> output = QVSCommand::runProgram("/usr/bin/md5sum", {path});
    if (!output) output = QVSCommand::runProgram("/sbin/md5", {"-q", path});
    if (!output || output->size() < 32) return std::nullopt;
    return output->substr(0, 32);
}

TEST(QVSMD5UtilsFile, DigestOfAFileEqualsTheSystemTool) {
    testing::TestFolder folder;
    const std::string bytes = randomBytes(3 * 65536 + 17);
    const std::string path = folder.write("random.bin", bytes);
    const std::optional<std::string> expected = systemToolDigest(path);
    if (!expected) GTEST_SKIP() << "no MD5 tool on this system";
    EXPECT_EQ(QVSMD5Utils::md5OfFile(path), *expected);
    EXPECT_EQ(QVSMD5Utils::md5OfData(bytes), *expected);
}

TEST(QVSMD5UtilsFile, SymbolicLinkToAFileGivesTheFilesDigest) {
    testing::TestFolder folder;
    const std::string target = folder.write("target", "abc");
    const std::string link = folder.file("link");
    ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
    EXPECT_EQ(QVSMD5Utils::md5OfFile(link), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(QVSMD5UtilsFile, PipeGivesEmptyTextWithoutWaiting) {
    testing::TestFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(QVSMD5Utils::md5OfFile(pipe), "");
}

TEST(QVSMD5UtilsFile, UnreadableFileGivesEmptyText) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "needs root to change users";
    testing::TestFolder folder;
    chmod(folder.path().c_str(), 0755);
    const std::string path = folder.write("secret", "abc");
    chmod(path.c_str(), 0600);
    const int verdict = testing::runInChild([&path] {
        if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0) return 2;
        return QVSMD5Utils::md5OfFile(path).empty() ? 0 : 1;
    }).exitCode;
    EXPECT_EQ(verdict, 0);
    EXPECT_EQ(QVSMD5Utils::md5OfFile(path), "900150983cd24fb0d6963f7d28e17f72");
}

}  // namespace
}  // namespace tov
