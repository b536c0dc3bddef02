// The disk-change scan over a Linux machine held in memory: a USB stick that appears
// shows up in both disk lists, and a machine that did not change gives no change.

#include <gtest/gtest.h>

#include <algorithm>

#include "discovery/QVDiscovererFactory.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitDisk.h"
#include "report/FakeDiscoverers.h"
#include "report/QVCollectionUtil.h"
#include "report/QVHardwareReportJsonReader.h"
#include "report/QVHardwareReportJsonWriter.h"
#include "report/QVSReport.h"
#include "support/SysfsBlockTree.h"

namespace tov {
namespace {

constexpr const char* kNvmeController = "/sys/devices/pci0000:00/0000:00:06.0/0000:02:00.0/nvme/nvme0";
constexpr const char* kUsbDevice = "/sys/devices/pci0000:00/0000:00:14.0/usb3/3-2";

class LinuxDiskChangeScanTest : public testing::ReportTest {
protected:
    void SetUp() override {
        ReportTest::SetUp();
        tree.disk("nvme0n1", std::string(kNvmeController) + "/nvme0n1", "259:0", 1000215216)
            .partition("nvme0n1", "nvme0n1p1", 1, "259:1", 1000000000)
            .attribute("nvme0n1", "removable", "0\n")
            .mountTable("22 1 259:1 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p1 rw\n");
        tree.source()->link(std::string(kNvmeController) + "/nvme0n1/device", "../../nvme0");
        tree.source()->file(std::string(kNvmeController) + "/model", "KXG80ZNV512G KIOXIA\n");
        tree.source()->file(std::string(kNvmeController) + "/serial", "X1RS10ABCDEF\n");
        QVDiscovererFactory::Options options;
        options.persistAddresses = false;
        QVSReport::setDiscovererFactoryForTesting(std::make_shared<QVDiscovererFactory>(tree.source(), options));
    }

    // The inventory as the report manager keeps it: written as a report and read back.
    DictionaryRef storedInventory() {
        const DictionaryRef top = QVSReport::sharedManager().performFullHardwareDiscovery();
        const std::optional<std::string> json =
            QVHardwareReportJsonWriter::jsonContentOfHardware(top->get("HWInventory").dictionary());
        return QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(json);
    }

    void plugInStick() {
        const std::string scsi = std::string(kUsbDevice) + "/3-2:1.0/host6/target6:0:0/6:0:0:0";
        tree.disk("sda", scsi + "/block/sda", "8:0", 60088320)
            .partition("sda", "sda1", 1, "8:1", 60086272)
            .attribute("sda", "removable", "1\n")
            .udev("8:1", "E:ID_FS_LABEL=STICK\nE:ID_FS_LABEL_ENC=STICK\nE:ID_FS_TYPE=vfat\n");
        tree.source()->link(scsi + "/block/sda/device", "../../../6:0:0:0");
        tree.source()->file(scsi + "/model", "DataTraveler 3.0\n");
        tree.source()->file(std::string(kUsbDevice) + "/idVendor", "0951\n");
        tree.source()->file(std::string(kUsbDevice) + "/serial", "E0D55EA5741CF1A1\n");
    }

    static ArrayRef changedDisks(const DictionaryRef& changes, const char* section) {
        const DictionaryRef found = changes->get(section).dictionary();
        return found ? found->get("disks").array() : nullptr;
    }

    testing::SysfsBlockTree tree;
};

TEST_F(LinuxDiskChangeScanTest, NothingChangesWhenNothingDid) {
    const DictionaryRef stored = storedInventory();
    ASSERT_TRUE(stored);
    EXPECT_EQ(changedDisks(stored, "iokit")->size(), 1u);
    EXPECT_EQ(changedDisks(stored, "diskutil")->size(), 2u);
    const DictionaryRef changes = QVSReport::sharedManager().performDiskChangeDiscoveryWithFullReport(stored);
    ASSERT_TRUE(changes);
    EXPECT_TRUE(changes->empty());
}

TEST_F(LinuxDiskChangeScanTest, AUsbStickThatAppearsIsAddedToBothDiskLists) {
    const DictionaryRef stored = storedInventory();
    ASSERT_TRUE(stored);
    plugInStick();
    const DictionaryRef changes = QVSReport::sharedManager().performDiskChangeDiscoveryWithFullReport(stored);
    ASSERT_TRUE(changes);

    const ArrayRef drives = changedDisks(changes, "iokit");
    ASSERT_TRUE(drives);
    ASSERT_EQ(drives->size(), 1u);
    const auto stick = std::dynamic_pointer_cast<QVIOKitDisk>((*drives)[0].record());
    ASSERT_TRUE(stick);
    EXPECT_EQ(stick->scanResult(), QVScanResultAdded);
    EXPECT_EQ(stick->name(), "DataTraveler 3.0");
    EXPECT_EQ(stick->serialNo(), "E0D55EA5741CF1A1");
    EXPECT_TRUE(stick->isRemovable());

    const ArrayRef volumes = changedDisks(changes, "diskutil");
    ASSERT_TRUE(volumes);
    std::vector<std::string> identifiers;
    for (const Value& volume : *volumes) {
        EXPECT_EQ(volume.record()->scanResult(), QVScanResultAdded);
        identifiers.push_back(volume.record()->identifier().value_or(""));
    }
    std::sort(identifiers.begin(), identifiers.end());
    EXPECT_EQ(identifiers, (std::vector<std::string>{"sda", "sda1"}));
}

TEST_F(LinuxDiskChangeScanTest, AStickThatIsPulledOutIsRemovedFromBothDiskLists) {
    plugInStick();
    const DictionaryRef stored = storedInventory();
    ASSERT_TRUE(stored);
    tree.source()->link("/sys/block/sda", "../nowhere");
    const DictionaryRef changes = QVSReport::sharedManager().performDiskChangeDiscoveryWithFullReport(stored);
    const ArrayRef drives = changedDisks(changes, "iokit");
    ASSERT_TRUE(drives);
    ASSERT_EQ(drives->size(), 1u);
    EXPECT_EQ((*drives)[0].record()->scanResult(), QVScanResultRemoved);
    EXPECT_EQ((*drives)[0].record()->identifier(), "DataTraveler 3.0");
    ASSERT_TRUE(changedDisks(changes, "diskutil"));
}

}  // namespace
}  // namespace tov
