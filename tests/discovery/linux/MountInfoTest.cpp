#include "discovery/linux/MountInfo.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

TEST(MountInfo, ReadsDevicesPathsTypesAndSourcesPastTheOptionalFields) {
    const auto entries = MountInfo::parse(
        "22 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw\n"
        "36 22 259:1 / /boot/efi rw,relatime shared:5 master:2 - vfat /dev/nvme0n1p1 rw,fmask=0077\n"
        "40 22 0:35 / /tmp rw - tmpfs tmpfs rw");
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].major, 259u);
    EXPECT_EQ(entries[0].minor, 2u);
    EXPECT_EQ(entries[0].mountPoint, "/");
    EXPECT_EQ(entries[0].fileSystem, "ext4");
    EXPECT_EQ(entries[0].source, "/dev/nvme0n1p2");
    EXPECT_EQ(entries[1].mountPoint, "/boot/efi");
    EXPECT_EQ(entries[1].fileSystem, "vfat");
    EXPECT_EQ(entries[2].source, "tmpfs");
}

TEST(MountInfo, DecodesEscapedBlanksAndBackslashesInPaths) {
    const auto entries =
        MountInfo::parse("50 22 8:17 / /media/USB\\040Stick\\134x rw - vfat /dev/sdb1 rw\n");
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].mountPoint, "/media/USB Stick\\x");
    EXPECT_EQ(MountInfo::decodeOctalEscapes("a\\04"), "a\\04");
    EXPECT_EQ(MountInfo::decodeOctalEscapes("\\012\\011"), "\n\t");
}

TEST(MountInfo, LeavesOutMalformedLines) {
    const auto entries = MountInfo::parse(
        "garbage\n"
        "22 1 259:x / / rw - ext4 /dev/a rw\n"
        "22 1 8:1 / / rw shared:1 ext4 /dev/a rw\n"
        "22 1 8:1 / /ok rw - ext4 /dev/a rw\n"
        "22 1 8:1 / /cut rw -\n");
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].mountPoint, "/ok");
}

TEST(MountInfo, TheLastMountAtAPathIsTheVisibleOne) {
    const auto entries = MountInfo::parse(
        "1 0 8:1 / /mnt rw - ext4 /dev/sda1 rw\n"
        "2 1 8:2 / /mnt rw - ext4 /dev/sda2 rw\n");
    ASSERT_NE(MountInfo::visibleAt(entries, "/mnt"), nullptr);
    EXPECT_EQ(MountInfo::visibleAt(entries, "/mnt")->source, "/dev/sda2");
    EXPECT_EQ(MountInfo::visibleAt(entries, "/other"), nullptr);
}

TEST(MountInfo, AnUnreadableTableGivesNothing) {
    testing::MemorySystemSource source;
    EXPECT_FALSE(MountInfo::read(source));
    source.file(MountInfo::kPath, "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n");
    ASSERT_TRUE(MountInfo::read(source));
    EXPECT_EQ(MountInfo::read(source)->size(), 1u);
}

}  // namespace
}  // namespace tov
