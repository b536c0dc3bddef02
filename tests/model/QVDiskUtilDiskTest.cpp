#include "model/QVDiskUtilDisk.h"

#include <gtest/gtest.h>

#include "RecordSamples.h"
#include "model/QVRecordFactory.h"

namespace tov {
namespace {

using testing::compactJson;
using testing::recordFromJson;

std::shared_ptr<QVDiskUtilDisk> disk() {
    auto record = QVDiskUtilDisk::diskUtilDisk();
    record->setName("Macintosh HD");
    record->setDeviceName("APPLE SSD");
    record->setIdentifier("disk1s1");
    record->setSize(500107862016u);
    record->setFreeSpace(123456789u);
    record->setFileSystem("APFS");
    return record;
}

TEST(QVDiskUtilDisk, ANewDiskHoldsItsDefaults) {
    const auto record = QVDiskUtilDisk::diskUtilDisk();
    EXPECT_EQ(compactJson(*record), R"({"boot":false,"opticalMedia":false,"fileSystem":""})");
    EXPECT_FALSE(record->isBootVolume());
    EXPECT_FALSE(record->isOpticalMedia());
    EXPECT_EQ(record->fileSystem(), "");
    EXPECT_FALSE(record->identifier());
    EXPECT_FALSE(record->mountPoint());
}

TEST(QVDiskUtilDisk, WritesItsKeys) {
    auto record = disk();
    record->setBootVolume(true);
    record->setOpticalMedia(true);
    record->setMountPoint("/");
    EXPECT_EQ(compactJson(*record),
              R"({"boot":true,"opticalMedia":true,"fileSystem":"APFS","name":"Macintosh HD",)"
              R"("deviceName":"APPLE SSD","deviceId":"disk1s1","sizeBytes":500107862016,)"
              R"("freeSpaceBytes":123456789})");
    EXPECT_EQ(record->name(), "Macintosh HD");
    EXPECT_EQ(record->deviceName(), "APPLE SSD");
    EXPECT_EQ(record->identifier(), "disk1s1");
    EXPECT_EQ(record->size(), 500107862016u);
    EXPECT_EQ(record->freeSpace(), 123456789u);
    EXPECT_EQ(record->fileSystem(), "APFS");
    EXPECT_TRUE(record->isBootVolume());
    EXPECT_TRUE(record->isOpticalMedia());
    EXPECT_EQ(record->mountPoint(), "/");
}

TEST(QVDiskUtilDisk, DisksThatDifferOnlyInTheBootOrOpticalFlagAreEqual) {
    const auto first = disk();
    auto boot = disk();
    boot->setBootVolume(true);
    auto optical = disk();
    optical->setOpticalMedia(true);
    EXPECT_TRUE(first->isEqual(*boot));
    EXPECT_TRUE(boot->isEqual(*first));
    EXPECT_TRUE(first->isEqual(*optical));
    EXPECT_TRUE(optical->isEqual(*first));
}

TEST(QVDiskUtilDisk, EqualityComparesNameDeviceIdentifierSizeAndFileSystem) {
    const auto first = disk();
    auto other = disk();
    other->setFreeSpace(1);
    other->setMountPoint("/Volumes/Other");
    EXPECT_TRUE(first->isEqual(*other));

    other = disk();
    other->setName("Data");
    EXPECT_FALSE(first->isEqual(*other));
    other = disk();
    other->setDeviceName("Other SSD");
    EXPECT_FALSE(first->isEqual(*other));
    other = disk();
    other->setIdentifier("disk1s2");
    EXPECT_FALSE(first->isEqual(*other));
    other = disk();
    other->setSize(1);
    EXPECT_FALSE(first->isEqual(*other));
    other = disk();
    other->setFileSystem("HFS+");
    EXPECT_FALSE(first->isEqual(*other));
}

TEST(QVDiskUtilDisk, ADiskWithoutDeviceNameEqualsNothing) {
    auto record = QVDiskUtilDisk::diskUtilDisk();
    record->setName("Untitled");
    record->setIdentifier("disk4s1");
    EXPECT_FALSE(record->isEqual(*record));
}

TEST(QVDiskUtilDisk, TheMountPointIsNeitherWrittenCopiedNorCoded) {
    auto record = disk();
    record->setMountPoint("/Volumes/USB Stick");
    EXPECT_EQ(compactJson(*record).find("USB Stick"), std::string::npos);

    const auto copy = std::dynamic_pointer_cast<QVDiskUtilDisk>(record->copy());
    ASSERT_TRUE(copy);
    EXPECT_FALSE(copy->mountPoint());
    EXPECT_TRUE(copy->isEqual(*record));

    Dictionary archive;
    QVRecordFactory::encodeRecord(*record, archive);
    EXPECT_EQ(writeJson(Value(std::make_shared<Dictionary>(archive)), JsonStyle::Compact).find("USB Stick"),
              std::string::npos);
    const auto decoded = std::dynamic_pointer_cast<QVDiskUtilDisk>(QVRecordFactory::decodeRecord(archive));
    ASSERT_TRUE(decoded);
    EXPECT_FALSE(decoded->mountPoint());
}

TEST(QVDiskUtilDisk, ACopyHoldsTheSourceValuesNotFreshDefaults) {
    auto record = disk();
    record->setBootVolume(true);
    const auto copy = std::dynamic_pointer_cast<QVDiskUtilDisk>(record->copy());
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->isBootVolume());
    EXPECT_EQ(compactJson(*copy), compactJson(*record));
}

TEST(QVDiskUtilDisk, ReadsNumbersAndFlagsOfAnyType) {
    const auto readBack =
        recordFromJson<QVDiskUtilDisk>(R"({"sizeBytes":1000,"freeSpaceBytes":1.0e3,"boot":1,"opticalMedia":0})");
    EXPECT_EQ(readBack->size(), 1000u);
    EXPECT_EQ(readBack->freeSpace(), 1000u);
    EXPECT_TRUE(readBack->isBootVolume());
    EXPECT_FALSE(readBack->isOpticalMedia());
}

}  // namespace
}  // namespace tov
