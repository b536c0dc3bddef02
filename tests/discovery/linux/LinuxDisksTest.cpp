#include "discovery/linux/LinuxDisks.h"

#include <gtest/gtest.h>

#include "common/QVSLogger.h"
#include "model/QVIOKitDisk.h"
#include "support/TemporaryRootTest.h"
#include "support/SysfsBlockTree.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::SysfsBlockTree;

constexpr const char* kSataHost = "/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0";
constexpr const char* kUsbDevice = "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1";
constexpr const char* kNvmeController = "/sys/devices/pci0000:00/0000:00:1d.0/0000:02:00.0/nvme/nvme0";

class LinuxDisksTest : public testing::TemporaryRootTest {
protected:

    // A whole disk whose "device" link leads to deviceFolder, which holds the attributes
    // given (relative to it: "model", "vpd_pg80").
    void drive(const std::string& name, const std::string& deviceFolder, const std::string& blockFolder,
               const std::map<std::string, std::string>& attributes) {
        tree.disk(name, blockFolder, "8:" + std::to_string(++minor * 16), 1000);
        tree.source()->link(blockFolder + "/device", deviceFolder);
        for (const auto& [attribute, value] : attributes) tree.source()->file(deviceFolder + "/" + attribute, value);
    }

    void scsiDisk(const std::string& name, const std::string& scsiFolder,
                  const std::map<std::string, std::string>& attributes) {
        drive(name, scsiFolder, scsiFolder + "/block/" + name, attributes);
    }

    void usbStick(const std::string& name, const std::string& usbDevice, const std::string& serial) {
        const std::string scsi = usbDevice + "/" + usbDevice.substr(usbDevice.rfind('/') + 1) +
                                 ":1.0/host6/target6:0:0/6:0:0:0";
        scsiDisk(name, scsi, {{"model", "Flash Drive     \n"}, {"vendor", "Lexar   \n"}});
        tree.source()->file(usbDevice + "/idVendor", "05dc\n");
        if (!serial.empty()) tree.source()->file(usbDevice + "/serial", serial);
        tree.attribute(name, "removable", "0\n");
    }

    std::vector<std::shared_ptr<QVIOKitDisk>> disks() {
        std::vector<std::shared_ptr<QVIOKitDisk>> found;
        HardwareIds hardwareIds(tree.source());
        const ArrayRef array = discoverLinuxDisks(*tree.source(), hardwareIds);
        for (const Value& value : *array) found.push_back(std::dynamic_pointer_cast<QVIOKitDisk>(value.record()));
        return found;
    }

    std::shared_ptr<QVIOKitDisk> onlyDisk() {
        const auto found = disks();
        EXPECT_EQ(found.size(), 1u);
        return found.empty() ? QVIOKitDisk::ioKitDisk() : found.front();
    }

    SysfsBlockTree tree;
    int minor = 0;
};

std::string vpdPage(const std::string& serial, std::size_t statedLength) {
    return std::string{'\0', '\x80', '\0', static_cast<char>(statedLength)} + serial;
}

std::string vpdPage(const std::string& serial) { return vpdPage(serial, serial.size()); }

TEST_F(LinuxDisksTest, NvmeDriveGivesModelAndControllerSerialTrimmed) {
    drive("nvme0n1", kNvmeController, std::string(kNvmeController) + "/nvme0n1",
          {{"model", "SAMSUNG MZVL2512HCJQ-00B07              \n"}, {"serial", "S675NX0T812345      \n"}});
    tree.attribute("nvme0n1", "removable", "0\n");
    const auto disk = onlyDisk();
    EXPECT_EQ(disk->name(), "SAMSUNG MZVL2512HCJQ-00B07");
    EXPECT_EQ(disk->serialNo(), "S675NX0T812345");
    EXPECT_FALSE(disk->isRemovable());
}

TEST_F(LinuxDisksTest, SataDriveGivesTheSerialOfItsUnitSerialNumberPage) {
    scsiDisk("sda", kSataHost, {{"model", "ST2000DM008-2FR1\n"}, {"vpd_pg80", vpdPage("        ZFL1ABCD")}});
    tree.attribute("sda", "removable", "0\n");
    const auto disk = onlyDisk();
    EXPECT_EQ(disk->name(), "ST2000DM008-2FR1");
    EXPECT_EQ(disk->serialNo(), "ZFL1ABCD");
    EXPECT_FALSE(disk->isRemovable());
}

TEST_F(LinuxDisksTest, ShortOrLyingSerialPagesGiveNoSerialAndALogLine) {
    scsiDisk("sda", kSataHost, {{"model", "ST2000DM008-2FR1\n"}, {"vpd_pg80", vpdPage("ZFL1", 20)}});
    EXPECT_EQ(onlyDisk()->serialNo(), "");
    EXPECT_NE(log().find("The serial number page of sda is left out"), std::string::npos) << log();

    tree.source()->file(std::string(kSataHost) + "/vpd_pg80", std::string("\0\x80", 2));
    EXPECT_EQ(onlyDisk()->serialNo(), "");
    EXPECT_EQ(onlyDisk()->name(), "ST2000DM008-2FR1");
}

TEST_F(LinuxDisksTest, VirtioDiskGivesItsOwnSerialAndTheNameOfItsPciFunction) {
    const std::string function = "/sys/devices/pci0000:00/0000:00:04.0";
    drive("vda", function + "/virtio2", function + "/virtio2/block/vda", {{"device", "0x0002\n"}, {"vendor", "0x1af4\n"}});
    tree.source()->link(function + "/virtio2/subsystem", "../../../../bus/virtio");
    tree.source()->link(function + "/subsystem", "../../../bus/pci");
    tree.source()->file(function + "/vendor", "0x1af4\n");
    tree.source()->file(function + "/device", "0x1001\n");
    tree.source()->file("/usr/share/misc/pci.ids", "1af4  Red Hat, Inc.\n\t1001  Virtio block device\n");
    tree.attribute("vda", "serial", "vm-disk-0042\n");
    const auto disk = onlyDisk();
    EXPECT_EQ(disk->name(), "Virtio block device");
    EXPECT_EQ(disk->serialNo(), "vm-disk-0042");
    EXPECT_FALSE(disk->isRemovable());
}

TEST_F(LinuxDisksTest, MemoryCardGivesItsCardNameAndSerial) {
    const std::string card = "/sys/devices/platform/emmc2bus/fe340000.mmc/mmc_host/mmc0/mmc0:59b4";
    drive("mmcblk0", card, card + "/block/mmcblk0", {{"name", "EB1QT\n"}, {"serial", "0x2a3b4c5d\n"}});
    tree.attribute("mmcblk0", "removable", "0\n");
    const auto disk = onlyDisk();
    EXPECT_EQ(disk->name(), "EB1QT");
    EXPECT_EQ(disk->serialNo(), "0x2a3b4c5d");
    EXPECT_FALSE(disk->isRemovable());
}

TEST_F(LinuxDisksTest, OpticalDriveIsRemovableByItsAttribute) {
    scsiDisk("sr0", "/sys/devices/pci0000:00/0000:00:17.0/ata6/host5/target5:0:0/5:0:0:0",
             {{"model", "DVD+-RW GHB0N    \n"}, {"type", "5\n"}});
    tree.attribute("sr0", "removable", "1\n");
    const auto disk = onlyDisk();
    EXPECT_EQ(disk->name(), "DVD+-RW GHB0N");
    EXPECT_TRUE(disk->isRemovable());
}

TEST_F(LinuxDisksTest, UsbStickWithoutAnOwnSerialGetsTheSerialOfItsUsbDeviceAndIsRemovable) {
    usbStick("sdb", kUsbDevice, "AA04012700012345\n");
    tree.source()->file(std::string(kUsbDevice) + "/2-1:1.0/host6/target6:0:0/6:0:0:0/vpd_pg80", vpdPage("    "));
    const auto disk = onlyDisk();
    EXPECT_EQ(disk->name(), "Flash Drive");
    EXPECT_EQ(disk->serialNo(), "AA04012700012345");
    EXPECT_TRUE(disk->isRemovable());
}

TEST_F(LinuxDisksTest, AUsbDeviceWithoutSerialGivesNoneEvenWhenItsRootHubHasOne) {
    tree.source()->file("/sys/devices/pci0000:00/0000:00:14.0/usb2/idVendor", "1d6b\n");
    tree.source()->file("/sys/devices/pci0000:00/0000:00:14.0/usb2/serial", "0000:00:14.0\n");
    usbStick("sdb", kUsbDevice, "");
    EXPECT_EQ(onlyDisk()->serialNo(), "");
    EXPECT_TRUE(onlyDisk()->isRemovable());
}

TEST_F(LinuxDisksTest, FireWireAndThunderboltDrivesAreRemovable) {
    scsiDisk("sdc", "/sys/devices/pci0000:00/0000:00:1e.0/0000:05:00.0/fw1/fw1.0/host7/target7:0:0/7:0:0:0",
             {{"model", "Rugged FW800\n"}});
    const std::string bridge = "/sys/devices/pci0000:00/0000:00:07.0";
    const std::string controller = bridge + "/0000:3b:00.0/nvme/nvme1";
    drive("nvme1n1", controller, controller + "/nvme1n1", {{"model", "Thunderbolt SSD\n"}, {"serial", "TB1\n"}});
    tree.source()->link(bridge + "/subsystem", "../../../bus/pci");
    tree.source()->file(bridge + "/removable", "removable\n");
    const auto found = disks();
    ASSERT_EQ(found.size(), 2u);
    for (const auto& disk : found) EXPECT_TRUE(disk->isRemovable()) << *disk->name();
}

TEST_F(LinuxDisksTest, AnInternalPciDeviceMarkedFixedIsNotRemovable) {
    drive("nvme0n1", std::string(kNvmeController), std::string(kNvmeController) + "/nvme0n1", {{"model", "PM9A1\n"}});
    tree.source()->link("/sys/devices/pci0000:00/0000:00:1d.0/subsystem", "../../../bus/pci");
    tree.source()->file("/sys/devices/pci0000:00/0000:00:1d.0/removable", "fixed\n");
    EXPECT_FALSE(onlyDisk()->isRemovable());
}

TEST_F(LinuxDisksTest, DevicesBuiltFromOthersOrMemoryAreNoDrives) {
    for (const char* name : {"loop0", "ram0", "zram0", "dm-0", "md0", "md127", "nbd0", "zd0", "mmcblk0boot0",
                             "mmcblk0rpmb", "nvme0c0n1", "sda1x", "srx"}) {
        const std::string device = std::string("/sys/devices/virtual/block/") + name;
        drive(name, device + "/fake", device, {{"model", "Some Model\n"}});
    }
    EXPECT_TRUE(disks().empty());
}

TEST_F(LinuxDisksTest, ADriveWithAnEmptyModelIsNotReported) {
    scsiDisk("sda", kSataHost, {{"model", "   \n"}, {"vpd_pg80", vpdPage("ZFL1ABCD")}});
    EXPECT_TRUE(disks().empty());
    EXPECT_NE(log().find("The drive sda is left out: it has no model name."), std::string::npos) << log();
}

TEST_F(LinuxDisksTest, SerialsLoseControlCharactersAndKeepInnerBlanks) {
    scsiDisk("sda", kSataHost, {{"model", "ST2000DM008\n"}, {"vpd_pg80", vpdPage(std::string("  ZF\x01L1 A\x1b\0\0", 12))}});
    EXPECT_EQ(onlyDisk()->serialNo(), "ZFL1 A");
}

TEST_F(LinuxDisksTest, PartitionsAreNoDrivesAndEqualDrivesAreReportedOnce) {
    scsiDisk("sda", kSataHost, {{"model", "ST2000DM008\n"}});
    tree.partition("sda", "sda1", 1, "8:1", 900);
    scsiDisk("sdb", "/sys/devices/pci0000:00/0000:00:17.0/ata4/host3/target3:0:0/3:0:0:0", {{"model", "ST2000DM008\n"}});
    EXPECT_EQ(disks().size(), 1u);
}

TEST_F(LinuxDisksTest, ALinkLoopOrNoBlockFolderGivesWhatCanBeRead) {
    EXPECT_TRUE(disks().empty());
    tree.source()->link("/sys/block/sdx", "../class/block/sdx");
    tree.source()->link("/sys/class/block/sdx", "../../block/sdx");
    scsiDisk("sda", kSataHost, {{"model", "ST2000DM008\n"}});
    const auto found = disks();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]->name(), "ST2000DM008");
}

}  // namespace
}  // namespace tov
