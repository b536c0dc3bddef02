#include "discovery/linux/LinuxVolumeDiscoverer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "discovery/QVDiscovererFactory.h"
#include "model/Json.h"
#include "support/SysfsBlockTree.h"

namespace tov {
namespace {

using testing::SysfsBlockTree;

constexpr const char* kNvmeDisk = "/sys/devices/pci0000:00/0000:00:1d.0/0000:02:00.0/nvme/nvme0/nvme0n1";
constexpr const char* kSataDisk = "/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda";
constexpr const char* kSecondSataDisk =
    "/sys/devices/pci0000:00/0000:00:17.0/ata4/host3/target3:0:0/3:0:0:0/block/sdb";
constexpr const char* kDvdDrive = "/sys/devices/pci0000:00/0000:00:17.0/ata5/host4/target4:0:0/4:0:0:0/block/sr0";

std::vector<std::shared_ptr<QVDiskUtilDisk>> disksOf(const SysfsBlockTree& tree) {
    const DictionaryRef section = LinuxVolumeDiscoverer(tree.source()).discoverInfo();
    std::vector<std::shared_ptr<QVDiskUtilDisk>> disks;
    for (const Value& value : *section->get("disks").array()) {
        disks.push_back(std::dynamic_pointer_cast<QVDiskUtilDisk>(value.record()));
    }
    return disks;
}

std::vector<std::string> identifiersOf(const SysfsBlockTree& tree) {
    std::vector<std::string> identifiers;
    for (const auto& disk : disksOf(tree)) identifiers.push_back(disk->identifier().value_or("?"));
    return identifiers;
}

std::shared_ptr<QVDiskUtilDisk> diskNamed(const SysfsBlockTree& tree, const std::string& identifier) {
    for (const auto& disk : disksOf(tree)) {
        if (disk->identifier() == identifier) return disk;
    }
    return nullptr;
}

// A scsi disk with its model and peripheral type in the scsi device folder above it.
void scsiDisk(SysfsBlockTree& tree, const std::string& name, const std::string& folder, const std::string& dev,
              std::uint64_t sectors, const std::string& model, const std::string& type) {
    tree.disk(name, folder, dev, sectors);
    const std::string scsiDevice = folder.substr(0, folder.rfind("/block/"));
    tree.source()->link(folder + "/device", "../../../" + scsiDevice.substr(scsiDevice.rfind('/') + 1));
    tree.source()->file(scsiDevice + "/model", model);
    tree.source()->file(scsiDevice + "/type", type + "\n");
}

void nvmeDisk(SysfsBlockTree& tree) {
    tree.disk("nvme0n1", kNvmeDisk, "259:0", 1000215216);
    tree.source()->link(std::string(kNvmeDisk) + "/device", "../../nvme0");
    tree.source()->file("/sys/devices/pci0000:00/0000:00:1d.0/0000:02:00.0/nvme/nvme0/model",
                        "Samsung SSD 980 PRO 1TB                 \n");
}

SysfsBlockTree desktop() {
    SysfsBlockTree tree;
    nvmeDisk(tree);
    tree.partition("nvme0n1", "nvme0n1p1", 1, "259:1", 1048576)
        .partition("nvme0n1", "nvme0n1p10", 10, "259:10", 2048)
        .partition("nvme0n1", "nvme0n1p2", 2, "259:2", 999164928)
        .udev("259:1", "E:ID_FS_LABEL=ESP\nE:ID_FS_LABEL_ENC=ESP\nE:ID_FS_TYPE=vfat\n")
        .udev("259:2", "E:ID_FS_TYPE=ext4\n")
        .udev("259:10", "E:ID_FS_TYPE=swap\n");
    scsiDisk(tree, "sda", kSataDisk, "8:0", 3907029168, "ST2000DM008-2FR1\n", "0");
    tree.partition("sda", "sda1", 1, "8:1", 3907026944)
        .udev("8:1", "E:ID_FS_LABEL=Data_Disk\nE:ID_FS_LABEL_ENC=Data\\x20Disk\nE:ID_FS_TYPE=ext4\n");
    scsiDisk(tree, "sr0", kDvdDrive, "11:0", 0, "DVD+-RW GH24NSD1\n", "5");
    tree.mountTable(
            "22 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw\n"
            "23 22 0:22 / /run rw - tmpfs tmpfs rw\n"
            "36 22 259:1 / /boot/efi rw,relatime shared:5 - vfat /dev/nvme0n1p1 rw,fmask=0077\n"
            "40 22 8:1 / /home/data rw,relatime shared:7 - ext4 /dev/sda1 rw\n")
        .freeSpace("/", 4096, 100000)
        .freeSpace("/boot/efi", 512, 2000)
        .freeSpace("/home/data", 4096, 300);
    return tree;
}

TEST(LinuxVolumeDiscoverer, NamesItsSectionAndListsDisks) {
    const SysfsBlockTree tree = desktop();
    LinuxVolumeDiscoverer discoverer(tree.source());
    EXPECT_EQ(discoverer.sourceName(), "diskutil");
    const DictionaryRef section = discoverer.discoverInfo();
    ASSERT_EQ(section->size(), 1u);
    ASSERT_TRUE(section->get("disks").array());
    EXPECT_EQ(section->get("disks").array()->size(), 7u);
}

TEST(LinuxVolumeDiscoverer, WholeDisksThenTheirPartitionsInNumberOrder) {
    EXPECT_EQ(identifiersOf(desktop()),
              (std::vector<std::string>{"nvme0n1", "nvme0n1p1", "nvme0n1p2", "nvme0n1p10", "sda", "sda1", "sr0"}));
}

TEST(LinuxVolumeDiscoverer, NvmeAndSataRecordsCarryModelSizeLabelTypeAndFreeSpace) {
    const SysfsBlockTree tree = desktop();
    const auto disk = diskNamed(tree, "nvme0n1");
    ASSERT_TRUE(disk);
    EXPECT_EQ(disk->name(), "");
    EXPECT_EQ(disk->deviceName(), "Samsung SSD 980 PRO 1TB");
    EXPECT_EQ(disk->size(), 1000215216ull * 512);
    EXPECT_EQ(disk->freeSpace(), 0u);
    EXPECT_EQ(disk->fileSystem(), "");
    EXPECT_FALSE(disk->isBootVolume());
    EXPECT_FALSE(disk->isOpticalMedia());

    const auto root = diskNamed(tree, "nvme0n1p2");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->deviceName(), "Samsung SSD 980 PRO 1TB");
    EXPECT_EQ(root->size(), 999164928ull * 512);
    EXPECT_EQ(root->freeSpace(), 4096ull * 100000);
    EXPECT_EQ(root->fileSystem(), "ext4");
    EXPECT_EQ(root->mountPoint(), "/");
    EXPECT_TRUE(root->isBootVolume());

    const auto data = diskNamed(tree, "sda1");
    ASSERT_TRUE(data);
    EXPECT_EQ(data->name(), "Data Disk");
    EXPECT_EQ(data->deviceName(), "ST2000DM008-2FR1");
    EXPECT_EQ(data->freeSpace(), 4096u * 300);
    EXPECT_FALSE(data->isBootVolume());
}

TEST(LinuxVolumeDiscoverer, DvdDriveIsOpticalMedia) {
    const SysfsBlockTree tree = desktop();
    const auto drive = diskNamed(tree, "sr0");
    ASSERT_TRUE(drive);
    EXPECT_TRUE(drive->isOpticalMedia());
    EXPECT_EQ(drive->deviceName(), "DVD+-RW GH24NSD1");
    EXPECT_EQ(drive->size(), 0u);
    EXPECT_FALSE(diskNamed(tree, "sda")->isOpticalMedia());
}

TEST(LinuxVolumeDiscoverer, ScsiTypeFiveIsOpticalWhateverItsName) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sdc", kSecondSataDisk, "8:32", 0, "BD-RE BH16NS40\n", "5");
    ASSERT_EQ(disksOf(tree).size(), 1u);
    EXPECT_TRUE(disksOf(tree)[0]->isOpticalMedia());
}

TEST(LinuxVolumeDiscoverer, UnmountedPartitionHasNoFreeSpaceButItsUdevType) {
    const SysfsBlockTree tree = desktop();
    const auto swap = diskNamed(tree, "nvme0n1p10");
    ASSERT_TRUE(swap);
    EXPECT_EQ(swap->freeSpace(), 0u);
    EXPECT_EQ(swap->fileSystem(), "swap");
    EXPECT_FALSE(swap->mountPoint());
    EXPECT_FALSE(swap->isBootVolume());
}

TEST(LinuxVolumeDiscoverer, MountedVolumeWithoutStatisticsHasNoFreeSpace) {
    SysfsBlockTree tree = desktop();
    tree.mountTable("22 1 259:2 / / rw - ext4 /dev/nvme0n1p2 rw\n40 22 8:1 / /mnt/x rw - ext4 /dev/sda1 rw\n");
    EXPECT_EQ(diskNamed(tree, "sda1")->freeSpace(), 0u);
    EXPECT_EQ(diskNamed(tree, "sda1")->mountPoint(), "/mnt/x");
}

TEST(LinuxVolumeDiscoverer, BootFlagForRootBootAndEfiMountsOnly) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sda", kSataDisk, "8:0", 100000, "Disk\n", "0");
    const char* mountPoints[] = {"/", "/boot", "/boot/efi", "/boot/firmware", "/home", "/bootx"};
    std::string table;
    for (unsigned index = 0; index < 6; ++index) {
        const std::string name = "sda" + std::to_string(index + 1);
        tree.partition("sda", name, index + 1, "8:" + std::to_string(index + 1), 100);
        table += std::to_string(30 + index) + " 1 8:" + std::to_string(index + 1) + " / " + mountPoints[index] +
                 " rw - ext4 /dev/" + name + " rw\n";
    }
    tree.mountTable(table);
    const std::vector<bool> expected{false, true, true, true, false, false, false};
    const auto disks = disksOf(tree);
    ASSERT_EQ(disks.size(), expected.size());
    for (std::size_t index = 0; index < disks.size(); ++index) {
        EXPECT_EQ(disks[index]->isBootVolume(), expected[index]) << *disks[index]->identifier();
    }
}

TEST(LinuxVolumeDiscoverer, LogicalVolumeOnAPartitionIsReportedUnderItsMapperName) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sda", kSataDisk, "8:0", 500118192, "Disk\n", "0");
    tree.partition("sda", "sda1", 1, "8:1", 2097152)
        .partition("sda", "sda2", 2, "8:2", 498018304)
        .holder("sda2", "dm-0")
        .udev("8:2", "E:ID_FS_TYPE=LVM2_member\n")
        .disk("dm-0", "/sys/devices/virtual/block/dm-0", "253:0", 146800640)
        .attribute("dm-0", "dm/name", "fedora-root\n")
        .udev("253:0", "E:DM_NAME=fedora-root\nE:ID_FS_TYPE=xfs\nE:ID_FS_LABEL=root\n")
        .mountTable("29 1 253:0 / / rw,relatime shared:1 - xfs /dev/mapper/fedora-root rw\n"
                    "30 29 8:1 / /boot rw - ext4 /dev/sda1 rw\n")
        .freeSpace("/", 4096, 5000);
    EXPECT_EQ(identifiersOf(tree), (std::vector<std::string>{"sda", "sda1", "fedora-root"}));
    const auto root = diskNamed(tree, "fedora-root");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name(), "root");
    EXPECT_EQ(root->fileSystem(), "xfs");
    EXPECT_EQ(root->deviceName(), "");
    EXPECT_EQ(root->size(), 146800640ull * 512);
    EXPECT_EQ(root->freeSpace(), 4096u * 5000);
    EXPECT_TRUE(root->isBootVolume());
}

TEST(LinuxVolumeDiscoverer, DeviceMapperWithoutANameKeepsItsKernelName) {
    SysfsBlockTree tree;
    tree.disk("dm-3", "/sys/devices/virtual/block/dm-3", "253:3", 2048);
    EXPECT_EQ(identifiersOf(tree), (std::vector<std::string>{"dm-3"}));
}

TEST(LinuxVolumeDiscoverer, RaidMembersGiveWayToTheArray) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sda", kSataDisk, "8:0", 1000, "Disk A\n", "0");
    scsiDisk(tree, "sdb", kSecondSataDisk, "8:16", 1000, "Disk B\n", "0");
    tree.partition("sda", "sda1", 1, "8:1", 900)
        .partition("sdb", "sdb1", 1, "8:17", 900)
        .holder("sda1", "md0")
        .holder("sdb1", "md0")
        .disk("md0", "/sys/devices/virtual/block/md0", "9:0", 880)
        .udev("9:0", "E:MD_LEVEL=raid1\nE:ID_FS_TYPE=ext4\n")
        .mountTable("25 1 9:0 / / rw - ext4 /dev/md0 rw\n");
    EXPECT_EQ(identifiersOf(tree), (std::vector<std::string>{"sda", "sdb", "md0"}));
    EXPECT_TRUE(diskNamed(tree, "md0")->isBootVolume());
    EXPECT_EQ(diskNamed(tree, "md0")->fileSystem(), "ext4");
}

TEST(LinuxVolumeDiscoverer, EncryptedContainerAndItsVolumeGroupGiveWayToTheLogicalVolume) {
    SysfsBlockTree tree;
    nvmeDisk(tree);
    tree.partition("nvme0n1", "nvme0n1p3", 3, "259:3", 800000)
        .holder("nvme0n1p3", "dm-0")
        .udev("259:3", "E:ID_FS_TYPE=crypto_LUKS\n")
        .disk("dm-0", "/sys/devices/virtual/block/dm-0", "253:0", 799000)
        .attribute("dm-0", "dm/name", "luks-0b5f\n")
        .holder("dm-0", "dm-1")
        .disk("dm-1", "/sys/devices/virtual/block/dm-1", "253:1", 700000)
        .attribute("dm-1", "dm/name", "vg0-home\n")
        .udev("253:1", "E:ID_FS_TYPE=ext4\n");
    EXPECT_EQ(identifiersOf(tree), (std::vector<std::string>{"nvme0n1", "vg0-home"}));
}

TEST(LinuxVolumeDiscoverer, LoopDevicesCountOnlyWhenAFileBacksThem) {
    SysfsBlockTree tree;
    tree.disk("loop0", "/sys/devices/virtual/block/loop0", "7:0", 204800)
        .attribute("loop0", "loop/backing_file", "/var/lib/images/data.img\n")
        .udev("7:0", "E:ID_FS_TYPE=ext4\nE:ID_FS_LABEL=images\n")
        .disk("loop1", "/sys/devices/virtual/block/loop1", "7:1", 0)
        .disk("loop2", "/sys/devices/virtual/block/loop2", "7:2", 0)
        .attribute("loop2", "loop/backing_file", "\n")
        .mountTable("50 1 7:0 / /mnt/data rw - ext4 /dev/loop0 rw\n")
        .freeSpace("/mnt/data", 1024, 80000);
    EXPECT_EQ(identifiersOf(tree), (std::vector<std::string>{"loop0"}));
    const auto loop = diskNamed(tree, "loop0");
    EXPECT_EQ(loop->name(), "images");
    EXPECT_EQ(loop->freeSpace(), 1024u * 80000);
    EXPECT_EQ(loop->size(), 204800u * 512);
}

TEST(LinuxVolumeDiscoverer, RamDisksAreNeverReported) {
    SysfsBlockTree tree;
    tree.disk("ram0", "/sys/devices/virtual/block/ram0", "1:0", 8192)
        .disk("zram0", "/sys/devices/virtual/block/zram0", "252:0", 8192)
        .mountTable("1 0 252:0 / /tmp rw - ext4 /dev/zram0 rw\n");
    EXPECT_TRUE(identifiersOf(tree).empty());
}

TEST(LinuxVolumeDiscoverer, DrivesComeBeforeBuiltDevicesAndNamesSortNaturally) {
    SysfsBlockTree tree;
    tree.disk("dm-0", "/sys/devices/virtual/block/dm-0", "253:0", 10)
        .disk("loop0", "/sys/devices/virtual/block/loop0", "7:0", 10)
        .attribute("loop0", "loop/backing_file", "/a.img\n");
    for (const char* name : {"sdaa", "sdb", "sda", "nvme10n1", "nvme2n1"}) {
        const std::string folder = std::string("/sys/devices/pci0000:00/x/") + name;
        tree.disk(name, folder, "8:0", 10);
        tree.source()->link(folder + "/device", "../x");
    }
    EXPECT_EQ(identifiersOf(tree),
              (std::vector<std::string>{"nvme2n1", "nvme10n1", "sda", "sdb", "sdaa", "dm-0", "loop0"}));
}

TEST(LinuxVolumeDiscoverer, HostileLabelsBecomeValidTextThatSurvivesJson) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sdb", kSecondSataDisk, "8:16", 1000, "Stick\n", "0");
    tree.partition("sdb", "sdb1", 1, "8:17", 900)
        .udev("8:17", "E:ID_FS_LABEL=__Bad_Name\nE:ID_FS_LABEL_ENC=\\x01Bad\\xffName\\x07\\x0aX\\x20\\x20\n");
    const auto disk = diskNamed(tree, "sdb1");
    ASSERT_TRUE(disk);
    EXPECT_EQ(disk->name(), "Bad\xEF\xBF\xBDNameX");
    const std::string json = writeJson(Value(disk), JsonStyle::Compact);
    const auto parsed = nlohmann::json::parse(json);
    EXPECT_EQ(parsed["name"].get<std::string>(), *disk->name());
}

TEST(LinuxVolumeDiscoverer, VeryLongLabelsAreCutAtACharacterBoundary) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sdb", kSecondSataDisk, "8:16", 1000, "Stick\n", "0");
    std::string label;
    for (int index = 0; index < 400; ++index) label += "\xC3\xA9";  // é
    tree.udev("8:16", "E:ID_FS_LABEL_ENC=" + label + "\n");
    const auto name = disksOf(tree)[0]->name();
    ASSERT_TRUE(name);
    EXPECT_EQ(name->size(), 254u);
    EXPECT_EQ(*name, label.substr(0, 254));
}

TEST(LinuxVolumeDiscoverer, LabelFromByLabelLinksWhenUdevHasNone) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sdb", kSecondSataDisk, "8:16", 1000, "Stick\n", "0");
    tree.partition("sdb", "sdb1", 1, "8:17", 900).partition("sdb", "sdb2", 2, "8:18", 90);
    tree.source()->link("/dev/disk/by-label/Other", "../../sda9");
    tree.source()->link("/dev/disk/by-label/My\\x20Photos", "../../sdb1");
    EXPECT_EQ(diskNamed(tree, "sdb1")->name(), "My Photos");
    EXPECT_EQ(diskNamed(tree, "sdb2")->name(), "");
}

TEST(LinuxVolumeDiscoverer, MissingSizeGivesZeroAndTheRestOfTheRecord) {
    SysfsBlockTree bare;
    scsiDisk(bare, "sdb", kSecondSataDisk, "8:16", 1000, "Old Disk\n", "0");
    bare.source()->file(std::string(kSecondSataDisk) + "/size", "not a number\n");
    bare.partition("sdb", "sdb1", 1, "8:17", 900);
    const auto disks = disksOf(bare);
    ASSERT_EQ(disks.size(), 2u);
    EXPECT_EQ(disks[0]->size(), 0u);
    EXPECT_EQ(disks[0]->deviceName(), "Old Disk");
    EXPECT_EQ(disks[1]->size(), 900u * 512);

    SysfsBlockTree missing;
    missing.source()->link("/sys/block/sdc", "../devices/pci0000:00/y/sdc");
    missing.source()->file("/sys/devices/pci0000:00/y/sdc/dev", "8:32\n");
    ASSERT_EQ(disksOf(missing).size(), 1u);
    EXPECT_EQ(disksOf(missing)[0]->size(), 0u);
}

TEST(LinuxVolumeDiscoverer, SectorCountsThatWouldOverflowGiveZero) {
    SysfsBlockTree tree;
    tree.disk("sdb", kSecondSataDisk, "8:16", 1);
    tree.source()->file(std::string(kSecondSataDisk) + "/size", "36028797018963968\n");
    EXPECT_EQ(disksOf(tree)[0]->size(), 0u);
}

TEST(LinuxVolumeDiscoverer, LinkLoopsUnderSysAreLeftOutAndTheRestIsReported) {
    SysfsBlockTree tree = desktop();
    tree.source()->link("/sys/class/block/sdz", "sdz");
    tree.source()->link("/sys/block/sdz", "../class/block/sdz");
    tree.source()->link("/sys/block/sdy", "../block/sdy");
    EXPECT_EQ(identifiersOf(tree),
              (std::vector<std::string>{"nvme0n1", "nvme0n1p1", "nvme0n1p2", "nvme0n1p10", "sda", "sda1", "sr0"}));
}

TEST(LinuxVolumeDiscoverer, AMachineWithoutSysOrMountsGivesWhatItCan) {
    SysfsBlockTree nothing;
    EXPECT_TRUE(identifiersOf(nothing).empty());
    SysfsBlockTree noMounts;
    nvmeDisk(noMounts);
    ASSERT_EQ(disksOf(noMounts).size(), 1u);
    EXPECT_FALSE(disksOf(noMounts)[0]->isBootVolume());
}

TEST(LinuxVolumeDiscoverer, FileSystemFromTheMountTableWhenUdevHasNone) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sda", kSataDisk, "8:0", 1000, "Disk\n", "0");
    tree.partition("sda", "sda1", 1, "8:1", 900).mountTable("1 0 8:1 / / rw - ext4 /dev/sda1 rw\n");
    EXPECT_EQ(diskNamed(tree, "sda1")->fileSystem(), "ext4");
}

TEST(LinuxVolumeDiscoverer, AnonymousDeviceNumbersAreMatchedByTheirSource) {
    SysfsBlockTree tree;
    scsiDisk(tree, "sda", kSataDisk, "8:0", 1000, "Disk\n", "0");
    tree.partition("sda", "sda1", 1, "8:1", 900)
        .mountTable("1 0 0:31 /@ / rw - btrfs /dev/sda1 rw\n2 1 0:31 /@home /home rw - btrfs /dev/sda1 rw\n")
        .freeSpace("/", 4096, 7);
    const auto disk = diskNamed(tree, "sda1");
    EXPECT_TRUE(disk->isBootVolume());
    EXPECT_EQ(disk->fileSystem(), "btrfs");
    EXPECT_EQ(disk->mountPoint(), "/");
    EXPECT_EQ(disk->freeSpace(), 4096u * 7);
}

TEST(LinuxVolumeDiscoverer, EqualRecordsAreKeptOnceInTheOrderOfFirstAppearance) {
    SysfsBlockTree tree;
    tree.disk("vdb", "/sys/devices/pci0000:00/0000:00:05.0/virtio3/block/vdb", "252:16", 1000);
    tree.source()->link("/sys/devices/pci0000:00/0000:00:05.0/virtio3/block/vdb/device", "../../../virtio3");
    tree.disk("dm-7", "/sys/devices/virtual/block/dm-7", "253:7", 1000).attribute("dm-7", "dm/name", "vdb\n");
    tree.disk("dm-8", "/sys/devices/virtual/block/dm-8", "253:8", 1000).attribute("dm-8", "dm/name", "vdc\n");
    const auto disks = disksOf(tree);
    EXPECT_EQ(identifiersOf(tree), (std::vector<std::string>{"vdb", "vdc"}));
    EXPECT_EQ(disks[0]->freeSpace(), 0u);
}

TEST(LinuxVolumeDiscoverer, TheFactoryGivesItForDiskUtilityOnLinuxFirstAmongDiskDiscoverers) {
    const SysfsBlockTree tree = desktop();
    QVDiscovererFactory::Options options;
    options.persistAddresses = false;
    QVDiscovererFactory factory(tree.source(), options);
    const auto discoverers = factory.diskDiscoverers();
    ASSERT_FALSE(discoverers.empty());
    EXPECT_EQ(discoverers[0]->sourceName(), "diskutil");
    EXPECT_EQ(discoverers[0]->discoverDisks()->size(), 7u);
    for (const auto& discoverer : factory.sectionDiscoverers()) {
        if (discoverer->sourceName() == "diskutil") {
            EXPECT_EQ(discoverer->discoverInfo()->get("disks").array()->size(), 7u);
        }
    }
}

}  // namespace
}  // namespace tov
