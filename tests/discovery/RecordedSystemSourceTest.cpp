#include "discovery/RecordedSystemSource.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TestFolder.h"

namespace tov {
namespace {

namespace fs = std::filesystem;
using testing::TestFolder;
using testing::writeFile;

class RecordedSystemSourceTest : public ::testing::Test {
protected:
    void SetUp() override {
        writeFile(capture("platform"), "linux\n");
        writeFile(capture("files/sys/devices/pci0000:00/ata1/block/sda/size"), "976773168\n");
        fs::create_directories(capture("files/sys/block"));
        fs::create_symlink("../devices/pci0000:00/ata1/block/sda", capture("files/sys/block/sda"));
        writeFile(capture("files/usr/share/zoneinfo/Asia/Tokyo"), "TZif");
        fs::create_directories(capture("files/etc"));
        fs::create_symlink("/usr/share/zoneinfo/Asia/Tokyo", capture("files/etc/localtime"));
    }
    std::string capture(const std::string& name) const { return folder_.file("capture/" + name); }
    std::unique_ptr<RecordedSystemSource> open() const { return RecordedSystemSource::open(folder_.file("capture")); }

    TestFolder folder_;
    TestFolder outside_;
};

TEST_F(RecordedSystemSourceTest, AnswersFilesFoldersAndLinksAsTheMachineHadThem) {
    const auto source = open();
    ASSERT_TRUE(source);
    EXPECT_EQ(source->platform(), "linux");
    EXPECT_EQ(source->readFile("/sys/block/sda/size", 100), "976773168\n");
    EXPECT_EQ(source->listFolder("/sys/block"), (std::vector<std::string>{"sda"}));
    EXPECT_EQ(source->listFolder("/sys/block/sda"), (std::vector<std::string>{"size"}));
    EXPECT_EQ(source->readLink("/etc/localtime"), "/usr/share/zoneinfo/Asia/Tokyo");
    EXPECT_EQ(source->readFile("/etc/localtime", 100), "TZif");
    EXPECT_EQ(source->pathKind("/sys/block/sda"), PathKind::Link);
    EXPECT_EQ(source->pathKind("/sys/block/sda/size"), PathKind::File);
    EXPECT_EQ(source->pathKind("/sys/block"), PathKind::Folder);
    EXPECT_EQ(source->pathKind("/sys/nothing"), PathKind::None);
}

TEST_F(RecordedSystemSourceTest, MissingThingsAndLargeFilesGiveNothing) {
    const auto source = open();
    EXPECT_FALSE(source->readFile("/sys/block/sdb/size", 100));
    EXPECT_FALSE(source->readFile("/sys/block/sda/size", 5));
    EXPECT_FALSE(source->readFile("/sys/block", 100));
    EXPECT_FALSE(source->listFolder("/sys/block/sda/size"));
    EXPECT_FALSE(source->readLink("/sys/block/sda/size"));
    EXPECT_FALSE(source->runTool({"/bin/lsblk"}));
    EXPECT_TRUE(source->fact("uname", "").isAbsent());
}

TEST_F(RecordedSystemSourceTest, PartsOfAFileAreReadThroughItsLinks) {
    const auto source = open();
    EXPECT_EQ(source->readFilePart("/sys/block/sda/size", 0, 3), "976");
    EXPECT_EQ(source->readFilePart("/sys/block/sda/size", 6, 100), "168\n");
    EXPECT_EQ(source->readFilePart("/sys/block/sda/size", 10, 5), "");
    EXPECT_EQ(source->readFilePart("/sys/block/sda/size", 400, 5), "");
    EXPECT_EQ(source->readFilePart("/etc/localtime", 1, 2), "Zi");
    EXPECT_FALSE(source->readFilePart("/sys/block/sdb/size", 0, 3));
    EXPECT_FALSE(source->readFilePart("/sys/block", 0, 3));
}

TEST_F(RecordedSystemSourceTest, HostilePathsAndLinksNeverLeaveTheCapture) {
    writeFile(outside_.file("secret"), "secret");
    fs::create_symlink("../../../../../../../../../../.." + outside_.path(), capture("files/sys/escape"));
    fs::create_symlink(outside_.path(), capture("files/sys/absolute"));
    fs::create_symlink("loopy", capture("files/sys/loopy"));
    const auto source = open();
    EXPECT_FALSE(source->readFile("/sys/escape/secret", 100));
    EXPECT_FALSE(source->readFile("/sys/absolute/secret", 100));
    EXPECT_FALSE(source->readFile("/sys/loopy/x", 100));
    EXPECT_FALSE(source->readFilePart("/sys/escape/secret", 0, 100));
    EXPECT_FALSE(source->listFolder("/sys/loopy"));
    EXPECT_FALSE(source->readFile("/sys/../../" + outside_.path() + "/secret", 100));
    EXPECT_FALSE(source->readFile("relative/path", 100));
}

TEST_F(RecordedSystemSourceTest, ToolsAreAnsweredByExactArgumentVector) {
    writeFile(capture("commands/1.argv"), R"(["/usr/sbin/diskutil","list","-plist"])");
    writeFile(capture("commands/1.out"), "plist output");
    writeFile(capture("commands/2.argv"), R"(["/usr/bin/missing"])");
    writeFile(capture("commands/3.argv"), R"({"not":"an array"})");
    writeFile(outside_.file("secret"), "secret");
    writeFile(capture("commands/4.argv"), R"(["/bin/cat","secret"])");
    fs::create_symlink(outside_.file("secret"), capture("commands/4.out"));
    const auto source = open();
    EXPECT_EQ(source->runTool({"/usr/sbin/diskutil", "list", "-plist"}), "plist output");
    EXPECT_FALSE(source->runTool({"/usr/sbin/diskutil", "list"}));
    EXPECT_FALSE(source->runTool({"/usr/bin/missing"}));
    EXPECT_FALSE(source->runTool({"/bin/cat", "secret"}));
}

TEST_F(RecordedSystemSourceTest, FactsComeFromFactsJsonByNameAndKey) {
    writeFile(capture("facts.json"), R"({"statvfs /": {"blockSize": 4096}, "uname ": {"machine": "x86_64"}})");
    const auto source = open();
    EXPECT_EQ(source->fact("statvfs", "/").dictionary()->get("blockSize"), Value(4096));
    EXPECT_EQ(source->fact("uname", "").dictionary()->get("machine"), Value("x86_64"));
    EXPECT_TRUE(source->fact("statvfs", "/home").isAbsent());
}

TEST_F(RecordedSystemSourceTest, CorruptFactsAreNoFacts) {
    writeFile(capture("facts.json"), R"({"uname ": {"machine": )");
    EXPECT_TRUE(open()->fact("uname", "").isAbsent());
}

TEST_F(RecordedSystemSourceTest, AFolderWithoutAPlatformIsNoCapture) {
    writeFile(capture("platform"), "windows\n");
    EXPECT_FALSE(open());
    EXPECT_FALSE(RecordedSystemSource::open(folder_.file("does-not-exist")));
}

}  // namespace
}  // namespace tov
