#include "discovery/linux/LinuxMountedVolume.h"

#include <gtest/gtest.h>

#include "support/SysfsBlockTree.h"

namespace tov {
namespace {

using testing::SysfsBlockTree;

constexpr const char* kUsbStick =
    "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0/block/sdb";
constexpr const char* kSataDisk = "/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda";
constexpr const char* kNvmeDisk = "/sys/devices/pci0000:00/0000:00:1d.0/0000:02:00.0/nvme/nvme0/nvme0n1";

SysfsBlockTree machine() {
    SysfsBlockTree tree;
    tree.disk("sda", kSataDisk, "8:0", 1000)
        .partition("sda", "sda1", 1, "8:1", 900)
        .disk("sdb", kUsbStick, "8:16", 3000)
        .partition("sdb", "sdb1", 1, "8:17", 2900)
        .udev("8:17", "E:ID_FS_LABEL=My_Stick\nE:ID_FS_LABEL_ENC=My\\x20Stick\nE:ID_FS_TYPE=exfat\nE:ID_BUS=usb\n")
        .disk("nvme0n1", kNvmeDisk, "259:0", 5000)
        .partition("nvme0n1", "nvme0n1p2", 2, "259:2", 4000)
        .disk("loop0", "/sys/devices/virtual/block/loop0", "7:0", 100)
        .mountTable(
            "22 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw\n"
            "23 22 0:22 / /run rw - tmpfs tmpfs rw\n"
            "40 22 8:1 / /srv/data rw - ext4 /dev/sda1 rw\n"
            "41 22 8:17 / /media/alice/My\\040Stick rw,nosuid - exfat /dev/sdb1 rw\n"
            "42 22 8:17 / /media/odd\\012..\\012name rw - exfat /dev/sdb1 rw\n"
            "43 22 7:0 / /mnt/image rw - ext4 /dev/loop0 rw\n"
            "44 22 0:50 / /mnt/share rw - nfs4 server:/export rw\n");
    return tree;
}

DictionaryRef infoAt(const SysfsBlockTree& tree, const std::string& mountPath) {
    return LinuxMountedVolume::infoForMountPath(*tree.source(), mountPath);
}

TEST(LinuxMountedVolume, UsbStickBehindTheXhciControllerIsUsb) {
    const DictionaryRef info = infoAt(machine(), "/media/alice/My Stick");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->get("MountPoint"), Value("/media/alice/My Stick"));
    EXPECT_EQ(info->get("VolumeName"), Value("My Stick"));
    EXPECT_EQ(info->get("DeviceIdentifier"), Value("sdb1"));
    EXPECT_EQ(info->get("BusProtocol"), Value("USB"));
}

TEST(LinuxMountedVolume, SataNvmeAndLoopDevicesAreNotUsb) {
    const SysfsBlockTree tree = machine();
    EXPECT_EQ(infoAt(tree, "/srv/data")->get("BusProtocol"), Value("SATA"));
    EXPECT_EQ(infoAt(tree, "/srv/data")->get("DeviceIdentifier"), Value("sda1"));
    EXPECT_EQ(infoAt(tree, "/srv/data")->get("VolumeName"), Value(""));
    EXPECT_EQ(infoAt(tree, "/")->get("BusProtocol"), Value("NVMe"));
    EXPECT_EQ(infoAt(tree, "/mnt/image")->get("BusProtocol"), Value("Virtual"));
}

TEST(LinuxMountedVolume, AUsbSubsystemLinkIsEnoughWithoutAUsbBusFolder) {
    SysfsBlockTree tree;
    const std::string port = "/sys/devices/platform/soc/fe980000.xhci/port1";
    tree.disk("sdc", port + "/host0/target0:0:0/0:0:0:0/block/sdc", "8:32", 100)
        .mountTable("5 1 8:32 / /media/card rw - vfat /dev/sdc rw\n");
    EXPECT_EQ(infoAt(tree, "/media/card")->get("BusProtocol"), Value(""));
    tree.source()->link(port + "/subsystem", "../../../../bus/usb");
    EXPECT_EQ(infoAt(tree, "/media/card")->get("BusProtocol"), Value("USB"));
}

TEST(LinuxMountedVolume, FireWireAndExternalPciePortsAreExternalBuses) {
    SysfsBlockTree tree;
    const std::string fireWire = "/sys/devices/pci0000:00/0000:00:1e.0/0000:05:00.0/fw1/fw1.0/host7/target7:0:0/7:0:0:0";
    const std::string tunnel = "/sys/devices/pci0000:00/0000:00:07.0/0000:3b:00.0/nvme/nvme1/nvme1n1";
    auto& source = *tree.source();
    source.folder(fireWire).folder(tunnel).link("/sys/devices/pci0000:00/0000:00:07.0/subsystem", "../../../bus/pci");
    EXPECT_EQ(LinuxMountedVolume::busProtocolOfDevicePath(source, fireWire), "FireWire");
    EXPECT_EQ(LinuxMountedVolume::busProtocolOfDevicePath(source, tunnel), "NVMe");
    source.file("/sys/devices/pci0000:00/0000:00:07.0/removable", "removable\n");
    EXPECT_EQ(LinuxMountedVolume::busProtocolOfDevicePath(source, tunnel), "Thunderbolt");
    for (const char* external : {"USB", "FireWire", "Thunderbolt"}) {
        EXPECT_TRUE(LinuxMountedVolume::isExternalBusProtocol(external)) << external;
    }
    for (const char* internal : {"NVMe", "SATA", "Virtual", ""}) {
        EXPECT_FALSE(LinuxMountedVolume::isExternalBusProtocol(internal)) << internal;
    }
}

TEST(LinuxMountedVolume, HostileMountPathsAreMatchedExactlyAsData) {
    const SysfsBlockTree tree = machine();
    const DictionaryRef info = infoAt(tree, "/media/odd\n..\nname");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->get("MountPoint"), Value("/media/odd\n..\nname"));
    EXPECT_EQ(info->get("BusProtocol"), Value("USB"));
    EXPECT_FALSE(infoAt(tree, "/media/alice/My\\040Stick"));
    EXPECT_FALSE(infoAt(tree, "/media/alice/My Stick/.."));
    EXPECT_FALSE(infoAt(tree, "/media/alice"));
}

TEST(LinuxMountedVolume, NothingForPathsWithoutABlockDevice) {
    const SysfsBlockTree tree = machine();
    EXPECT_FALSE(infoAt(tree, "/run"));
    EXPECT_FALSE(infoAt(tree, "/mnt/share"));
    EXPECT_FALSE(infoAt(tree, "/not/mounted"));
    SysfsBlockTree empty;
    EXPECT_FALSE(infoAt(empty, "/"));
}

TEST(LinuxMountedVolume, TheDeviceNumberWinsOverAMisleadingSourceName) {
    SysfsBlockTree tree = machine();
    tree.mountTable("41 22 8:17 / /media/stick rw - exfat /dev/sda1 rw\n"
                    "42 22 8:1 / /srv/data rw - ext4 /dev/.. rw\n"
                    "43 22 8:1 / /srv/other rw - ext4 /dev/../../sys/class/block/sdb1 rw\n");
    EXPECT_EQ(infoAt(tree, "/media/stick")->get("DeviceIdentifier"), Value("sdb1"));
    EXPECT_EQ(infoAt(tree, "/media/stick")->get("BusProtocol"), Value("USB"));
    EXPECT_EQ(infoAt(tree, "/srv/data")->get("DeviceIdentifier"), Value("sda1"));
    EXPECT_EQ(infoAt(tree, "/srv/other")->get("DeviceIdentifier"), Value("sda1"));
}

TEST(LinuxMountedVolume, AnonymousNumbersAreFoundByTheSourceName) {
    SysfsBlockTree tree = machine();
    tree.mountTable("41 22 0:45 /@ /media/stick rw - btrfs /dev/sdb1 rw\n");
    EXPECT_EQ(infoAt(tree, "/media/stick")->get("BusProtocol"), Value("USB"));
}

TEST(LinuxMountedVolume, LinkLoopsUnderSysClassBlockGiveNothing) {
    SysfsBlockTree tree;
    tree.source()->link("/sys/class/block/sdz", "sdz");
    tree.source()->link("/sys/dev/block/8:240", "../../class/block/sdz");
    tree.mountTable("1 0 8:240 / /media/loop rw - ext4 /dev/sdz rw\n2 0 0:9 / /media/anon rw - ext4 /dev/sdz rw\n");
    EXPECT_FALSE(infoAt(tree, "/media/loop"));
    EXPECT_FALSE(infoAt(tree, "/media/anon"));
}

TEST(LinuxMountedVolume, LinksThatLeadOutOfTheDeviceTreeGiveNothing) {
    SysfsBlockTree tree;
    tree.source()->link("/sys/dev/block/8:0", "../../../etc");
    tree.source()->folder("/etc");
    tree.mountTable("1 0 8:0 / /media/x rw - ext4 /dev/sdq rw\n");
    EXPECT_FALSE(infoAt(tree, "/media/x"));
}

TEST(LinuxMountedVolume, MountPathsOfBlockDevicesInTableOrder) {
    EXPECT_EQ(LinuxMountedVolume::blockDeviceMountPaths(*machine().source()),
              (std::vector<std::string>{"/", "/srv/data", "/media/alice/My Stick", "/media/odd\n..\nname",
                                        "/mnt/image"}));
}

}  // namespace
}  // namespace tov
