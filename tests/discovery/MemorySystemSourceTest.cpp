#include "support/MemorySystemSource.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace tov::testing {
namespace {

TEST(MemorySystemSource, FollowsFolderLinksLikeSysfs) {
    MemorySystemSource source;
    source.link("/sys/block/sda", "../devices/pci0000:00/ata1/block/sda")
        .file("/sys/devices/pci0000:00/ata1/block/sda/size", "100\n")
        .link("/sys/devices/pci0000:00/ata1/block/sda/device", "../../../ata1");
    EXPECT_EQ(source.readFile("/sys/block/sda/size", 100), "100\n");
    EXPECT_EQ(source.readLink("/sys/block/sda/device"), "../../../ata1");
    EXPECT_EQ(source.pathKind("/sys/block/sda"), PathKind::Link);
    EXPECT_EQ(source.pathKind("/sys/block/sda/size"), PathKind::File);
    EXPECT_EQ(source.listFolder("/sys/block"), (std::vector<std::string>{"sda"}));
    EXPECT_EQ(source.listFolder("/sys/block/sda"), (std::vector<std::string>{"device", "size"}));
    EXPECT_FALSE(source.readFile("/sys/block/sda/size", 2));
    EXPECT_FALSE(source.readFile("/sys/block/sdb/size", 100));
}

TEST(MemorySystemSource, PartsOfAFileAreSlicesOfItsBytes) {
    MemorySystemSource source;
    source.file("/data/real", "0123456789").link("/data/link", "real");
    EXPECT_EQ(source.readFilePart("/data/real", 2, 3), "234");
    EXPECT_EQ(source.readFilePart("/data/link", 0, 4), "0123");
    EXPECT_EQ(source.readFilePart("/data/real", 8, 100), "89");
    EXPECT_EQ(source.readFilePart("/data/real", 10, 5), "");
    EXPECT_EQ(source.readFilePart("/data/real", UINT64_MAX, UINT64_MAX), "");
    EXPECT_FALSE(source.readFilePart("/data/missing", 0, 5));
    EXPECT_FALSE(source.readFilePart("/data", 0, 5));
}

TEST(MemorySystemSource, AnswersToolsAndFactsThatWereSet) {
    MemorySystemSource source;
    source.tool({"/bin/true"}, "out").fact("uname", "", Value("x"));
    EXPECT_EQ(source.runTool({"/bin/true"}), "out");
    EXPECT_FALSE(source.runTool({"/bin/false"}));
    EXPECT_EQ(source.fact("uname", ""), Value("x"));
    EXPECT_TRUE(source.fact("uname", "other").isAbsent());
    EXPECT_EQ(source.toolRuns().size(), 2u);
}

}  // namespace
}  // namespace tov::testing
