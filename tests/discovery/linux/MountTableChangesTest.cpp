#include "discovery/linux/MountTableChanges.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

const std::string kBefore =
    "22 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw\n"
    "40 22 0:35 / /tmp rw - tmpfs tmpfs rw\n"
    "41 22 8:17 / /media/USB\\040Stick rw - vfat /dev/sdb1 rw\n";

std::string describe(const std::vector<VolumeEvent>& events) {
    std::string text;
    for (const VolumeEvent& event : events) {
        text += event.kind == VolumeEvent::Kind::Mounted ? "+" : "-";
        text += event.mountPath + "|" + event.volumeName + ";";
    }
    return text;
}

std::string changes(const std::string& before, const std::string& after) {
    return describe(mountTableChanges(MountInfo::parse(before), MountInfo::parse(after)));
}

TEST(MountTableChanges, SameTableGivesNothing) { EXPECT_EQ(changes(kBefore, kBefore), ""); }

TEST(MountTableChanges, NewMountIsReportedWithItsPathAndName) {
    EXPECT_EQ(changes(kBefore, kBefore + "42 22 8:33 / /media/Backup rw - ext4 /dev/sdc1 rw\n"),
              "+/media/Backup|Backup;");
}

TEST(MountTableChanges, GoneMountIsReportedAsUnmounted) {
    const std::string after =
        "22 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw\n"
        "40 22 0:35 / /tmp rw - tmpfs tmpfs rw\n";
    EXPECT_EQ(changes(kBefore, after), "-/media/USB Stick|USB Stick;");
}

TEST(MountTableChanges, UnmountsComeFirstThenMountsEachInTableOrder) {
    const std::string before = kBefore + "50 22 0:50 / /b rw - tmpfs tmpfs rw\n51 22 0:51 / /a rw - tmpfs tmpfs rw\n";
    const std::string after = kBefore + "53 22 0:53 / /z rw - tmpfs tmpfs rw\n52 22 0:52 / /y rw - tmpfs tmpfs rw\n";
    EXPECT_EQ(changes(before, after), "-/b|b;-/a|a;+/z|z;+/y|y;");
}

TEST(MountTableChanges, RemountWithOtherOptionsOrANewMountIdIsNoChange) {
    const std::string after =
        "22 1 259:2 / / ro,relatime shared:1 - ext4 /dev/nvme0n1p2 ro\n"
        "99 22 0:35 / /tmp rw,nosuid - tmpfs tmpfs rw,size=10k\n"
        "41 22 8:17 / /media/USB\\040Stick rw - vfat /dev/sdb1 rw\n";
    EXPECT_EQ(changes(kBefore, after), "");
}

TEST(MountTableChanges, StackedMountOnTheSamePathIsAMountOfItsOwn) {
    const std::string stacked = kBefore + "60 40 0:60 / /tmp rw - tmpfs tmpfs rw\n";
    EXPECT_EQ(changes(kBefore, stacked), "+/tmp|tmp;");
    EXPECT_EQ(changes(stacked, kBefore), "-/tmp|tmp;");
}

TEST(MountTableChanges, SameFileSystemMountedTwiceAtOnePathCountsTwice) {
    const std::string line = "70 22 8:1 / /srv/data rw - ext4 /dev/sda1 rw\n";
    const std::string bind = "71 70 8:1 / /srv/data rw - ext4 /dev/sda1 rw\n";
    EXPECT_EQ(changes(kBefore + line, kBefore + line + bind), "+/srv/data|data;");
    EXPECT_EQ(changes(kBefore + line + bind, kBefore + line), "-/srv/data|data;");
    EXPECT_EQ(changes(kBefore + line + bind, kBefore), "-/srv/data|data;-/srv/data|data;");
}

TEST(MountTableChanges, AnotherFileSystemReplacingOneAtThePathIsAnUnmountAndAMount) {
    const std::string first = kBefore + "80 22 8:49 / /mnt/stick rw - vfat /dev/sdd1 rw\n";
    const std::string second = kBefore + "81 22 8:65 / /mnt/stick rw - exfat /dev/sde1 rw\n";
    EXPECT_EQ(changes(first, second), "-/mnt/stick|stick;+/mnt/stick|stick;");
}

TEST(MountTableChanges, PathsAreBytesWithBlanksNewlinesAndInvalidUtf8) {
    const std::string after = kBefore + "90 22 0:90 / /mnt/a\\040b\\012c\\011d\\134e\xff\xfe rw - tmpfs tmpfs rw\n";
    const std::vector<VolumeEvent> events = mountTableChanges(MountInfo::parse(kBefore), MountInfo::parse(after));
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].kind, VolumeEvent::Kind::Mounted);
    EXPECT_EQ(events[0].mountPath, "/mnt/a b\nc\td\\e\xff\xfe");
    EXPECT_EQ(events[0].volumeName, "a b\nc\td\\e\xff\xfe");
}

TEST(MountTableChanges, EmptyTablesReportEverythingTheOtherHolds) {
    EXPECT_EQ(changes("", kBefore), "+/|/;+/tmp|tmp;+/media/USB Stick|USB Stick;");
    EXPECT_EQ(changes(kBefore, ""), "-/|/;-/tmp|tmp;-/media/USB Stick|USB Stick;");
}

TEST(MountTableChanges, AThousandMountsAreAllReportedInOrder) {
    std::string after = kBefore;
    std::string expected;
    for (int index = 0; index < 1000; ++index) {
        const std::string name = "m" + std::to_string(index);
        after += std::to_string(100 + index) + " 22 0:" + std::to_string(100 + index) + " / /mnt/" + name +
                 " rw - tmpfs tmpfs rw\n";
        expected += "+/mnt/" + name + "|" + name + ";";
    }
    EXPECT_EQ(changes(kBefore, after), expected);
}

TEST(MountTableChanges, VolumeNameIsTheLastComponentOrTheRoot) {
    EXPECT_EQ(volumeNameOfMountPath("/"), "/");
    EXPECT_EQ(volumeNameOfMountPath("/media/user/My Disk"), "My Disk");
    EXPECT_EQ(volumeNameOfMountPath("/mnt/x/"), "x");
    EXPECT_EQ(volumeNameOfMountPath("//"), "/");
    EXPECT_EQ(volumeNameOfMountPath("relative"), "relative");
    EXPECT_EQ(volumeNameOfMountPath(""), "");
}

}  // namespace
}  // namespace tov
