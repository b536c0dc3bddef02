#include "discovery/formats/UdevDatabase.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

TEST(UdevDatabase, ReadsLinksPropertiesAndTagsAndSkipsBookkeeping) {
    const UdevRecord record = UdevDatabase::parse(
        "S:disk/by-label/Holiday\\x20Photos\n"
        "S:disk/by-uuid/1A2B-3C4D\n"
        "W:7\n"
        "I:123456789\n"
        "E:ID_FS_LABEL=Holiday_Photos\n"
        "E:ID_FS_LABEL_ENC=Holiday\\x20Photos\n"
        "E:ID_FS_TYPE=vfat\n"
        "G:systemd\n"
        "Q:systemd\n"
        "V:1\n");
    EXPECT_EQ(record.links, (std::vector<std::string>{"disk/by-label/Holiday\\x20Photos", "disk/by-uuid/1A2B-3C4D"}));
    EXPECT_EQ(record.tags, (std::vector<std::string>{"systemd"}));
    ASSERT_EQ(record.properties.size(), 3u);
    EXPECT_EQ(record.property("ID_FS_TYPE"), "vfat");
    EXPECT_EQ(record.property("ID_FS_LABEL"), "Holiday_Photos");
    EXPECT_EQ(record.decodedProperty("ID_FS_LABEL"), "Holiday Photos");
    EXPECT_EQ(record.property("ID_FS_UUID"), std::nullopt);
}

TEST(UdevDatabase, DecodedPropertyFallsBackToThePlainValue) {
    const UdevRecord record = UdevDatabase::parse("E:ID_FS_LABEL=rootfs\n");
    EXPECT_EQ(record.decodedProperty("ID_FS_LABEL"), "rootfs");
    EXPECT_EQ(record.decodedProperty("ID_MODEL"), std::nullopt);
}

TEST(UdevDatabase, ValuesKeepTheirEqualsSignsAndTheLastRepeatWins) {
    const UdevRecord record = UdevDatabase::parse("E:A=b=c\nE:KEY=first\nE:KEY=second\nE:EMPTY=\n");
    EXPECT_EQ(record.property("A"), "b=c");
    EXPECT_EQ(record.property("KEY"), "second");
    EXPECT_EQ(record.property("EMPTY"), "");
}

TEST(UdevDatabase, MalformedLinesAreSkipped) {
    const UdevRecord record =
        UdevDatabase::parse("garbage\nE\nE:\nE:NOVALUE\nE:=value\nS:\n:x\nEX:Y=1\r\nE:GOOD=1\r\nE:LAST=2");
    ASSERT_EQ(record.properties.size(), 2u);
    EXPECT_EQ(record.property("GOOD"), "1");
    EXPECT_EQ(record.property("LAST"), "2");
    EXPECT_TRUE(record.links.empty());
}

TEST(UdevDatabase, HexEscapesDecodeToBytesAndBrokenOnesStayAsTheyAre) {
    EXPECT_EQ(UdevDatabase::decodeHexEscapes("EFI\\x20System"), "EFI System");
    EXPECT_EQ(UdevDatabase::decodeHexEscapes("a\\x2fb\\x5C"), "a/b\\");
    EXPECT_EQ(UdevDatabase::decodeHexEscapes("\\xff\\x01"), std::string("\xff\x01"));
    EXPECT_EQ(UdevDatabase::decodeHexEscapes("\\x2"), "\\x2");
    EXPECT_EQ(UdevDatabase::decodeHexEscapes("\\xzz\\"), "\\xzz\\");
    EXPECT_EQ(UdevDatabase::decodeHexEscapes(""), "");
}

TEST(UdevDatabase, HostileRecordsGrowNoFurtherThanTheEntryLimit) {
    std::string text;
    for (std::size_t index = 0; index < UdevDatabase::kMaximumEntries + 10; ++index) {
        text += "E:K" + std::to_string(index) + "=v\nS:link" + std::to_string(index) + "\n";
    }
    const UdevRecord record = UdevDatabase::parse(text);
    EXPECT_EQ(record.properties.size(), UdevDatabase::kMaximumEntries);
    EXPECT_EQ(record.links.size(), UdevDatabase::kMaximumEntries);
}

TEST(UdevDatabase, BlockDeviceRecordsAreReadByNumberWithinTheLimit) {
    testing::MemorySystemSource source;
    EXPECT_EQ(UdevDatabase::blockDevicePath(8, 17), "/run/udev/data/b8:17");
    source.file("/run/udev/data/b8:17", "E:ID_FS_TYPE=exfat\n");
    source.file("/run/udev/data/b8:18", std::string(UdevDatabase::kReadLimit + 1, 'E'));
    const std::optional<UdevRecord> record = UdevDatabase::readBlockDevice(source, 8, 17);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->property("ID_FS_TYPE"), "exfat");
    EXPECT_FALSE(UdevDatabase::readBlockDevice(source, 8, 18));
    EXPECT_FALSE(UdevDatabase::readBlockDevice(source, 8, 19));
}

}  // namespace
}  // namespace tov
