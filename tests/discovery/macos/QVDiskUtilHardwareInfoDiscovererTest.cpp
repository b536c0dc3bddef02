#include "discovery/macos/QVDiskUtilHardwareInfoDiscoverer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "support/MemorySystemSource.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using testing::MemorySystemSource;
using Argv = std::vector<std::string>;
using Strings = std::vector<std::string>;

const Argv kListArgv{"/usr/sbin/diskutil", "list", "-plist"};
const Argv kCSListArgv{"/usr/sbin/diskutil", "cs", "list"};
const Argv kStartupArgv{"/usr/sbin/systemsetup", "-liststartupdisks"};

Argv infoArgv(const std::string& disk) { return {"/usr/sbin/diskutil", "info", "-plist", disk}; }
Argv blessArgv(const std::string& path) { return {"/usr/sbin/bless", "--info", path, "--plist"}; }

std::string plist(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           body + "\n</plist>\n";
}

std::string entry(const std::string& key, const std::string& valueElement) {
    return "<key>" + key + "</key>" + valueElement;
}
std::string text(const std::string& value) { return "<string>" + value + "</string>"; }
std::string integer(std::int64_t value) { return "<integer>" + std::to_string(value) + "</integer>"; }

// A disk-list entry: identifier, optional volume name and mount point, then its partitions
// (or, for an APFS container, its volumes, which the list keeps apart).
std::string listEntry(const std::string& identifier, const std::string& name = "", const std::string& mountPoint = "",
                      const std::string& partitions = "", const std::string& apfsVolumes = "") {
    std::string body = "<dict>";
    if (!apfsVolumes.empty()) body += entry("APFSVolumes", "<array>" + apfsVolumes + "</array>");
    body += entry("DeviceIdentifier", text(identifier));
    if (!mountPoint.empty()) body += entry("MountPoint", text(mountPoint));
    if (!partitions.empty()) body += entry("Partitions", "<array>" + partitions + "</array>");
    body += entry("Size", integer(500107862016));
    if (!name.empty()) body += entry("VolumeName", text(name));
    return body + "</dict>";
}

std::string diskList(const std::string& wholeDisks) {
    return plist("<dict>" + entry("AllDisksAndPartitions", "<array>" + wholeDisks + "</array>") + "</dict>");
}

// An Intel Mac with an HFS+ system volume, its recovery partition, and a USB stick.
std::string hfsDiskList() {
    return diskList(listEntry("disk0", "", "",
                              listEntry("disk0s1", "EFI") + listEntry("disk0s2", "Macintosh HD", "/") +
                                  listEntry("disk0s3", "Recovery HD")) +
                    listEntry("disk2", "", "", listEntry("disk2s1", "STICK", "/Volumes/STICK")));
}

std::string info(const std::string& entries) { return plist("<dict>" + entries + "</dict>"); }

std::vector<std::shared_ptr<QVDiskUtilDisk>> disksOf(const ArrayRef& array) {
    std::vector<std::shared_ptr<QVDiskUtilDisk>> disks;
    for (const Value& element : *array) disks.push_back(std::dynamic_pointer_cast<QVDiskUtilDisk>(element.record()));
    return disks;
}

Strings identifiersOf(const ArrayRef& array) {
    Strings identifiers;
    for (const auto& disk : disksOf(array)) identifiers.push_back(disk ? disk->identifier().value_or("?") : "null");
    return identifiers;
}

bool ran(const MemorySystemSource& source, const Argv& argv) {
    const auto& runs = source.toolRuns();
    return std::find(runs.begin(), runs.end(), argv) != runs.end();
}

bool ranTool(const MemorySystemSource& source, const std::string& path) {
    for (const Argv& run : source.toolRuns()) {
        if (!run.empty() && run.front() == path) return true;
    }
    return false;
}

std::shared_ptr<QVDiskUtilDisk> mountedDisk(const std::string& identifier, const std::string& mountPoint) {
    auto disk = QVDiskUtilDisk::diskUtilDisk();
    disk->setIdentifier(identifier);
    disk->setMountPoint(mountPoint);
    return disk;
}

const std::string kBlessedAnswer =
    plist("<dict>" +
          entry("Finder Info",
                "<array><dict>" + entry("Directory ID", integer(19519)) +
                    entry("Path", text("/Volumes/Other Mac/System/Library/CoreServices")) + "</dict><dict>" +
                    entry("Directory ID", integer(0)) + entry("Path", text("")) + "</dict></array>") +
          "</dict>");

// A CoreStorage Fusion drive: one group on two physical volumes (the SSD's and the hard
// disk's second partitions), offering one logical volume.
const std::string kFusionListing =
    "CoreStorage logical volume groups (1 found)\n"
    "|\n"
    "+-- Logical Volume Group 0A1B2C3D-0000-4000-8000-000000000001\n"
    "    =========================================================\n"
    "    Name:         Fusion\n"
    "    Size:         1120333979648 B (1.1 TB)\n"
    "    |\n"
    "    +-< Physical Volume 0A1B2C3D-0000-4000-8000-000000000002\n"
    "    |   ----------------------------------------------------\n"
    "    |   Index:    0\n"
    "    |   Disk:     disk0s2\n"
    "    |   Size:     120988852224 B (121.0 GB)\n"
    "    |\n"
    "    +-< Physical Volume 0A1B2C3D-0000-4000-8000-000000000003\n"
    "    |   ----------------------------------------------------\n"
    "    |   Index:    1\n"
    "    |   Disk:     disk1s2\n"
    "    |   Size:     999345127424 B (999.3 GB)\n"
    "    |\n"
    "    +-> Logical Volume Family 0A1B2C3D-0000-4000-8000-000000000004\n"
    "        ----------------------------------------------------------\n"
    "        Encryption Status:       Unlocked\n"
    "        |\n"
    "        +-> Logical Volume 0A1B2C3D-0000-4000-8000-000000000005\n"
    "            ---------------------------------------------------\n"
    "            Disk:                  disk2\n"
    "            Size (Total):          1111826497536 B (1.1 TB)\n"
    "            Volume Name:           Macintosh HD\n"
    "            Content Hint:          Apple_HFS\n";

// Two groups: every line of the listing starts with "|".
const std::string kTwoGroupListing =
    "CoreStorage logical volume groups (2 found)\n"
    "|\n"
    "+-- Logical Volume Group 11111111-0000-4000-8000-000000000001\n"
    "|   =========================================================\n"
    "|   Name:         Backup\n"
    "|   |\n"
    "|   +-< Physical Volume 11111111-0000-4000-8000-000000000002\n"
    "|   |   ----------------------------------------------------\n"
    "|   |   Disk:     disk3s2\n"
    "|   |   Size:     249715376128 B (249.7 GB)\n"
    "|   |\n"
    "|   +-> Logical Volume Family 11111111-0000-4000-8000-000000000003\n"
    "|       ----------------------------------------------------------\n"
    "|       High Level Queries:      Fully Secure\n"
    "|       |                        Passphrase Required\n"
    "|       |\n"
    "|       +-> Logical Volume 11111111-0000-4000-8000-000000000004\n"
    "|           ---------------------------------------------------\n"
    "|           Disk:                  disk4\n"
    "|           Size (Total):          249344163840 B (249.3 GB)\n"
    "|           Volume Name:           Backup\n"
    "|           Content Hint:          Apple_HFS\n"
    "|\n"
    "+-- Logical Volume Group 22222222-0000-4000-8000-000000000001\n"
    "    =========================================================\n"
    "    Name:         Data\n"
    "    |\n"
    "    +-< Physical Volume 22222222-0000-4000-8000-000000000002\n"
    "    |   ----------------------------------------------------\n"
    "    |   Disk:     disk5s2\n"
    "    |   Size:     499418034176 B (499.4 GB)\n"
    "    |\n"
    "    +-> Logical Volume Family 22222222-0000-4000-8000-000000000003\n"
    "        ----------------------------------------------------------\n"
    "        |\n"
    "        +-> Logical Volume 22222222-0000-4000-8000-000000000004\n"
    "            ---------------------------------------------------\n"
    "            Disk:                  disk6\n"
    "            Size (Total):          499055067136 B (499.1 GB)\n"
    "            Volume Name:           Data\n"
    "            Content Hint:          Apple_HFS\n";

class QVDiskUtilHardwareInfoDiscovererTest : public testing::TemporaryRootTest {
protected:
    std::shared_ptr<MemorySystemSource> source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    QVDiskUtilHardwareInfoDiscoverer discoverer{source};
};

// --- the section and the commands -------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, NamesTheSectionDiskutilAndHoldsTheDisks) {
    source->tool(kListArgv, diskList(listEntry("disk0")));
    EXPECT_EQ(discoverer.sourceName(), "diskutil");
    const DictionaryRef section = discoverer.discoverInfo();
    ASSERT_EQ(section->size(), 1u);
    ASSERT_TRUE(section->get("disks").array());
    EXPECT_EQ(identifiersOf(section->get("disks").array()), (Strings{"disk0"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ToolsThatCannotRunGiveEmptyTextsAndAnEmptySection) {
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::diskListPlistResponse(*source), "");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::diskCSListResponse(*source), "");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::systemSetupListStartupDisksResponse(*source), "");
    EXPECT_TRUE(discoverer.discoverDisks()->empty());
    EXPECT_TRUE(discoverer.systemSetupListStartupDiskMountPoints.empty());
    EXPECT_TRUE(ran(*source, kListArgv));
    EXPECT_TRUE(ran(*source, kCSListArgv));
    EXPECT_TRUE(ran(*source, kStartupArgv));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, TheCommandsAnswerTheToolsOutput) {
    source->tool(kListArgv, "list").tool(kCSListArgv, "cs").tool(kStartupArgv, "startup");
    source->tool(infoArgv("disk0s2"), "info").tool(blessArgv("/Volumes/A"), "bless");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::diskListPlistResponse(*source), "list");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::diskCSListResponse(*source), "cs");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::systemSetupListStartupDisksResponse(*source), "startup");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::diskPlistInfoResponseForDisk(*source, *mountedDisk("disk0s2", "/")),
              "info");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::blessPlistInfoResponseForMountPath(*source, "/Volumes/A"), "bless");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, NoIdentifierOrNoPathRunsNothing) {
    auto unnamed = QVDiskUtilDisk::diskUtilDisk();
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::diskPlistInfoResponseForDisk(*source, *unnamed), "");
    unnamed->setIdentifier("");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::diskPlistInfoResponseForDisk(*source, *unnamed), "");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::blessPlistInfoResponseForMountPath(*source, ""), "");
    EXPECT_TRUE(source->toolRuns().empty());
}

// --- the disk list -------------------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, EachWholeDiskIsFollowedByItsPartitions) {
    const ArrayRef disks = QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(hfsDiskList());
    EXPECT_EQ(identifiersOf(disks), (Strings{"disk0", "disk0s1", "disk0s2", "disk0s3", "disk2", "disk2s1"}));
    const auto records = disksOf(disks);
    EXPECT_EQ(records[0]->name(), "");
    EXPECT_FALSE(records[0]->mountPoint());
    EXPECT_EQ(records[2]->name(), "Macintosh HD");
    EXPECT_EQ(records[2]->mountPoint(), "/");
    EXPECT_EQ(records[5]->name(), "STICK");
    EXPECT_EQ(records[5]->mountPoint(), "/Volumes/STICK");
    EXPECT_FALSE(records[5]->deviceName());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AListedDiskWithoutDeviceNameEqualsNoOtherSoARepeatStays) {
    // The list gives no device name, and an absent string equals nothing.
    const std::string list = diskList(listEntry("disk3", "X") + listEntry("disk3", "X"));
    EXPECT_EQ(identifiersOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(list)),
              (Strings{"disk3", "disk3"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AnIntelApfsListReportsTheContainerButNotItsVolumes) {
    // Modelled on an Intel Mac of macOS 10.13: the APFS volumes sit under "APFSVolumes",
    // which the list walk does not read; only whole disks and "Partitions" count.
    const std::string list =
        diskList(listEntry("disk0", "", "",
                           listEntry("disk0s1", "EFI") + listEntry("disk0s2") + listEntry("disk0s3")) +
                 listEntry("disk1", "", "", "",
                           listEntry("disk1s1", "Macintosh HD", "/") + listEntry("disk1s4", "VM", "/private/var/vm")));
    EXPECT_EQ(identifiersOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(list)),
              (Strings{"disk0", "disk0s1", "disk0s2", "disk0s3", "disk1"}));
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(list).empty());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AnAppleSiliconListWithAnExternalDiskGivesItsPartitionsMountPath) {
    // Modelled on an Apple Silicon Mac of macOS 11: the internal disk's APFS containers,
    // and an external USB disk with one HFS+ partition.
    const std::string list = diskList(
        listEntry("disk0", "", "",
                  listEntry("disk0s1") + listEntry("disk0s2") + listEntry("disk0s3")) +
        listEntry("disk1", "", "", "", listEntry("disk1s1", "iSCPreboot", "/System/Volumes/iSCPreboot")) +
        listEntry("disk3", "", "", "",
                  listEntry("disk3s1", "Macintosh HD") + listEntry("disk3s5", "Data", "/System/Volumes/Data")) +
        listEntry("disk4", "", "", listEntry("disk4s1", "EFI") + listEntry("disk4s2", "Stick 2", "/Volumes/Stick 2")));
    EXPECT_EQ(identifiersOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(list)),
              (Strings{"disk0", "disk0s1", "disk0s2", "disk0s3", "disk1", "disk3", "disk4", "disk4s1", "disk4s2"}));
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(list),
              (Strings{"/Volumes/Stick 2"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, MountPathsComeInOrderOnceEachAndOnlyAsTexts) {
    const std::string list = diskList(
        listEntry("disk2", "A", "/Volumes/A", listEntry("disk2s1", "B", "/Volumes/B") + listEntry("disk2s2", "A", "/Volumes/A")) +
        "<dict>" + entry("DeviceIdentifier", text("disk5")) + entry("MountPoint", integer(7)) + "</dict>" +
        listEntry("disk6", "C", "/Volumes/C"));
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(list),
              (Strings{"/Volumes/A", "/Volumes/B", "/Volumes/C"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ABinaryDiskListIsReadLikeAnXmlOne) {
    const std::string binary(
        "\x62\x70\x6c\x69\x73\x74\x30\x30\xd1\x01\x02\x5f\x10\x15\x41\x6c\x6c\x44\x69\x73\x6b\x73\x41\x6e\x64\x50\x61"
        "\x72\x74\x69\x74\x69\x6f\x6e\x73\xa1\x03\xd3\x04\x05\x06\x07\x08\x09\x5f\x10\x10\x44\x65\x76\x69\x63\x65\x49"
        "\x64\x65\x6e\x74\x69\x66\x69\x65\x72\x5a\x4d\x6f\x75\x6e\x74\x50\x6f\x69\x6e\x74\x5a\x56\x6f\x6c\x75\x6d\x65"
        "\x4e\x61\x6d\x65\x55\x64\x69\x73\x6b\x32\x5f\x10\x0f\x2f\x56\x6f\x6c\x75\x6d\x65\x73\x2f\x42\x61\x63\x6b\x75"
        "\x70\x56\x42\x61\x63\x6b\x75\x70\x08\x0b\x23\x25\x2c\x3f\x4a\x55\x5b\x6d\x00\x00\x00\x00\x00\x00\x01\x01\x00"
        "\x00\x00\x00\x00\x00\x00\x0a\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x74",
        158);
    const auto disks = disksOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(binary));
    ASSERT_EQ(disks.size(), 1u);
    EXPECT_EQ(disks[0]->identifier(), "disk2");
    EXPECT_EQ(disks[0]->name(), "Backup");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(binary),
              (Strings{"/Volumes/Backup"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AVolumeNameHoldingANulByteIsReadUpToIt) {
    const std::string list = diskList(listEntry("disk2", std::string("STI\0CK", 6), std::string("/Volumes/\0X", 11)));
    const auto disks = disksOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(list));
    ASSERT_EQ(disks.size(), 1u);
    EXPECT_EQ(disks[0]->name(), "STI");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(list), (Strings{"/Volumes/"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AnEmptyListIsEmptyWithoutAnyLogLine) {
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse("")->empty());
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse("").empty());
    EXPECT_FALSE(logHas("NSPropertyListSerialization"));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AListThatIsNoDictionaryIsLoggedAndEmpty) {
    const std::string truncated = hfsDiskList().substr(0, 300);
    const std::string binaryNoise("\x00\x01\xfe\xff garbage \x7f", 14);
    const std::string wrongRoot = plist("<array><dict>" + entry("DeviceIdentifier", text("disk0")) + "</dict></array>");
    std::string nested;
    for (int level = 0; level < 400; ++level) nested = "<array>" + nested + "</array>";
    const std::string deeplyNested = plist("<dict><key>AllDisksAndPartitions</key>" + nested + "</dict>");
    for (const std::string& bad : {truncated, binaryNoise, wrongRoot, deeplyNested}) {
        EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(bad)->empty());
        EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(bad).empty());
    }
    EXPECT_TRUE(logHas("disksWithDiskUtilListPlistResponse NSPropertyListSerialization failed data: <3c3f786d"));
    EXPECT_TRUE(logHas("disksWithDiskUtilListPlistResponse NSPropertyListSerialization failed data: <0001feff"));
    EXPECT_TRUE(logHas("mountPathWithDiskUtilListPlistResponse NSPropertyListSerialization failed data: <"));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ADiskListWithoutTheDiskArrayIsEmpty) {
    const std::string list = plist("<dict>" + entry("AllDisksAndPartitions", text("disk0")) + "</dict>");
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(list)->empty());
}

// --- the CoreStorage listing ---------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AFusionDriveHasTwoPhysicalVolumesAndOneLogicalVolume) {
    const auto physical =
        disksOf(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(kFusionListing));
    ASSERT_EQ(physical.size(), 2u);
    EXPECT_EQ(physical[0]->identifier(), "disk0s2");
    EXPECT_EQ(physical[0]->size(), 120988852224u);
    EXPECT_EQ(physical[1]->identifier(), "disk1s2");
    EXPECT_EQ(physical[1]->size(), 999345127424u);
    EXPECT_EQ(physical[1]->fileSystem(), "");

    const auto logical = disksOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilCSListResponse(kFusionListing));
    ASSERT_EQ(logical.size(), 1u);
    EXPECT_EQ(logical[0]->identifier(), "disk2");
    EXPECT_EQ(logical[0]->name(), "Macintosh HD");
    EXPECT_EQ(logical[0]->size(), 1111826497536u);
    EXPECT_EQ(logical[0]->fileSystem(), "Apple_HFS");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ABlockOfPhysicalVolumeLinesGivesOneRecord) {
    const std::string listing =
        "CoreStorage logical volume groups (1 found)\n"
        "+-< Physical Volume 6E2FDC27-A3A6-48DA-A661-A93C45EBB4BC\n"
        "| Disk: disk0s2\n"
        "| Size: 499418034176 B (499.4 GB)\n"
        "+-> Logical Volume Family 55B965B1-5265-42B6-9D0A-42432C59D448\n";
    const auto physical =
        disksOf(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(listing));
    ASSERT_EQ(physical.size(), 1u);
    EXPECT_EQ(physical[0]->identifier(), "disk0s2");
    EXPECT_EQ(physical[0]->size(), 499418034176u);
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AListingOfSeveralGroupsPrefixedWithBarsGivesEveryGroupsVolumes) {
    EXPECT_EQ(identifiersOf(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(
                  kTwoGroupListing)),
              (Strings{"disk3s2", "disk5s2"}));
    const auto logical = disksOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilCSListResponse(kTwoGroupListing));
    ASSERT_EQ(logical.size(), 2u);
    EXPECT_EQ(logical[0]->identifier(), "disk4");
    EXPECT_EQ(logical[0]->name(), "Backup");
    EXPECT_EQ(logical[0]->size(), 249344163840u);
    EXPECT_EQ(logical[1]->identifier(), "disk6");
    EXPECT_EQ(logical[1]->fileSystem(), "Apple_HFS");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, MarksBeyondTheTenthStayOnTheLine) {
    const std::string listing = "CoreStorage logical volume groups (1 found)\n"
                                "+-< Physical Volume A\n" +
                                std::string(10, '|') + " Disk: disk7s2\n" +
                                "+-< Physical Volume B\n" + std::string(11, '|') + " Disk: disk8s2\n"
                                "+-> Logical Volume Family C\n";
    EXPECT_EQ(identifiersOf(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(listing)),
              (Strings{"disk7s2"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ASizeReadsTheFirstRunOfDigits) {
    const std::string listing = "CoreStorage logical volume groups (1 found)\n"
                                "+-< Physical Volume A\n"
                                "|   Disk:     disk0s2\n"
                                "|   Size:     121.3 GB (121332826112 Bytes)\n"
                                "+-< Physical Volume B\n"
                                "|   Disk:     disk1s2\n"
                                "|   Size:     unknown\n"
                                "+-< Physical Volume C\n"
                                "|   Disk:     disk9s2\n"
                                "|   Size:     99999999999999999999999 B\n";
    const auto physical =
        disksOf(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(listing));
    ASSERT_EQ(physical.size(), 3u);
    EXPECT_EQ(physical[0]->size(), 121u);
    EXPECT_EQ(physical[1]->size(), 0u);
    EXPECT_FALSE(physical[1]->innerDictionary()->contains("sizeBytes"));
    EXPECT_EQ(physical[2]->size(), UINT64_MAX);
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ADiskLineOutsideAPhysicalVolumeBlockIsIgnored) {
    const std::string listing = "CoreStorage logical volume groups (1 found)\n"
                                "|   Disk:     disk0s2\n"
                                "+-- Logical Volume Group A\n"
                                "    Disk:     disk1s2\n"
                                "    +-< Physical Volume B\n"
                                "    |   Index:    0\n"
                                "    +-> Logical Volume Family C\n"
                                "        Disk:     disk2s2\n";
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(listing)->empty());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, OnlyTwoPiecedKeyLinesCountAndKeysMatchInAnyCase) {
    const std::string listing = "CoreStorage logical volume groups (1 found)\n"
                                "+-> Logical Volume A\n"
                                "    DISK:  disk2\n"
                                "    Volume Name: Time: 12:00\n"
                                "    Content Hint:   Apple_HFS  \n";
    const auto logical = disksOf(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilCSListResponse(listing));
    ASSERT_EQ(logical.size(), 1u);
    EXPECT_EQ(logical[0]->identifier(), "disk2");
    EXPECT_FALSE(logical[0]->name());
    EXPECT_EQ(logical[0]->fileSystem(), "Apple_HFS");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AShortOrEmptyListingHasNoVolumes) {
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse("")->empty());
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(
                    "+-< Physical Volume A\nDisk: disk0s2")
                    ->empty());
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilCSListResponse("No CoreStorage logical volume "
                                                                                  "groups found\n")
                    ->empty());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AVolumeWithoutItsDiskLineIsNotListed) {
    const std::string listing = "CoreStorage logical volume groups (1 found)\n"
                                "+-< Physical Volume A\n"
                                "|   Disk:     \n"
                                "|   Size:     5 B\n"
                                "+-< Physical Volume B\n"
                                "|   Disk:     disk1s2\n";
    EXPECT_EQ(identifiersOf(QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(listing)),
              (Strings{"disk1s2"}));
}

// --- the startup disks ------------------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, StartupFoldersBecomeTheirVolumesPaths) {
    const std::string response = "  /System/Library/CoreServices  \n"
                                 "/Volumes/Other Mac/System/Library/CoreServices\n"
                                 "Startup disks:\n"
                                 "\n"
                                 "/Volumes/Win\r\n";
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::parseSystemSetupListStartupDisksResponse(response),
              (Strings{"/", "/Volumes/Other Mac/", "/Volumes/Win"}));
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::parseSystemSetupListStartupDisksResponse("").empty());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, DiscoveringDisksReplacesTheStartupDiskPaths) {
    discoverer.systemSetupListStartupDiskMountPoints = {"/old"};
    source->tool(kStartupArgv, "/System/Library/CoreServices\n");
    discoverer.discoverDisks();
    EXPECT_EQ(discoverer.systemSetupListStartupDiskMountPoints, (Strings{"/"}));
}

// --- the disk information -----------------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, DiskInformationFillsTheRecordWithKeysInAnyCase) {
    auto disk = QVDiskUtilDisk::diskUtilDisk();
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(
        *disk, info(entry("totalsize", integer(79345225728)) + entry("FREESPACE", integer(66661707776)) +
                    entry("MediaName", text("APPLE SSD SM0128F")) + entry("FilesystemName", text("Journaled HFS+")) +
                    entry("BusProtocol", text("PCI")) + entry("Size", integer(5))));
    EXPECT_EQ(disk->size(), 79345225728u);
    EXPECT_EQ(disk->freeSpace(), 66661707776u);
    EXPECT_EQ(disk->deviceName(), "APPLE SSD SM0128F");
    EXPECT_EQ(disk->fileSystem(), "Journaled HFS+");
    EXPECT_FALSE(disk->isOpticalMedia());
    EXPECT_FALSE(disk->isBootVolume());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, TheOpticalDeviceTypeKeyAloneMarksOpticalMedia) {
    auto disk = QVDiskUtilDisk::diskUtilDisk();
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, info(entry("OpticalDeviceType", "<false/>")));
    EXPECT_TRUE(disk->isOpticalMedia());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, BootableAndAppleBootGiveABootVolumeInEitherOrder) {
    auto contentFirst = QVDiskUtilDisk::diskUtilDisk();
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(
        *contentFirst, info(entry("Content", text("apple_boot")) + entry("Bootable", "<true/>")));
    EXPECT_TRUE(contentFirst->isBootVolume());
    auto bootableFirst = QVDiskUtilDisk::diskUtilDisk();
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(
        *bootableFirst, info(entry("Bootable", "<true/>") + entry("Content", text("Apple_Boot"))));
    EXPECT_TRUE(bootableFirst->isBootVolume());
    auto contentOnly = QVDiskUtilDisk::diskUtilDisk();
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*contentOnly, info(entry("Content", text("Apple_Boot"))));
    EXPECT_TRUE(contentOnly->isBootVolume());
    EXPECT_TRUE(source->toolRuns().empty());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, BootableFalseAfterAppleBootClearsTheMarkButNotBefore) {
    auto falseLast = QVDiskUtilDisk::diskUtilDisk();
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(
        *falseLast, info(entry("Content", text("Apple_Boot")) + entry("Bootable", "<false/>")));
    EXPECT_FALSE(falseLast->isBootVolume());
    auto falseFirst = QVDiskUtilDisk::diskUtilDisk();
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(
        *falseFirst, info(entry("Bootable", "<false/>") + entry("Content", text("Apple_Boot"))));
    EXPECT_TRUE(falseFirst->isBootVolume());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, BootableReadsItsValuesTruth) {
    for (const auto& [element, truth] : std::vector<std::pair<std::string, bool>>{
             {"<true/>", true}, {"<false/>", false}, {integer(1), true}, {integer(0), false},
             {text("YES"), true}, {text("no"), false}, {text(" 007"), true}, {"<array/>", false}}) {
        auto disk = QVDiskUtilDisk::diskUtilDisk();
        discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, info(entry("Bootable", element)));
        EXPECT_EQ(disk->isBootVolume(), truth) << element;
    }
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, UnparsableDiskInformationIsLoggedAndLeavesTheRecord) {
    auto disk = mountedDisk("disk0s2", "/");
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, "Could not find disk: disk0s2\n");
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, plist("<array/>"));
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, info(entry("TotalSize", integer(5))).substr(0, 200));
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, "");
    EXPECT_TRUE(logHas("populateDisk:withDiskUtilPlistInfoResponse: NSPropertyListSerialization failed response: "
                       "Could not find disk: disk0s2"));
    EXPECT_EQ(disk->size(), 0u);
    EXPECT_EQ(disk->identifier(), "disk0s2");
    EXPECT_EQ(disk->fileSystem(), "");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AStartupVolumeKeepsItsBootMarkWithoutAskingBless) {
    discoverer.systemSetupListStartupDiskMountPoints = {"/"};
    auto disk = mountedDisk("disk0s2", "/");
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, info(entry("Bootable", "<true/>")));
    EXPECT_TRUE(disk->isBootVolume());
    EXPECT_FALSE(ranTool(*source, "/usr/sbin/bless"));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AnUnmountedBootVolumeKeepsItsMarkWithoutAskingBless) {
    auto disk = QVDiskUtilDisk::diskUtilDisk();
    disk->setIdentifier("disk0s3");
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, info(entry("Bootable", "<true/>")));
    EXPECT_TRUE(disk->isBootVolume());
    EXPECT_FALSE(ranTool(*source, "/usr/sbin/bless"));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AStartupFolderOnAnotherVolumeNeverMatchesItsMountPointSoBlessDecides) {
    source->tool(kListArgv, diskList(listEntry("disk1", "", "", listEntry("disk1s2", "OtherMac", "/Volumes/OtherMac"))));
    source->tool(kStartupArgv, "/System/Library/CoreServices\n/Volumes/OtherMac/System/Library/CoreServices\n");
    source->tool(infoArgv("disk1s2"), info(entry("Bootable", "<true/>")));
    source->tool(blessArgv("/Volumes/OtherMac"), kBlessedAnswer);
    const auto disks = disksOf(discoverer.discoverDisks());
    EXPECT_EQ(discoverer.systemSetupListStartupDiskMountPoints, (Strings{"/", "/Volumes/OtherMac/"}));
    ASSERT_EQ(disks.size(), 2u);
    EXPECT_TRUE(ran(*source, blessArgv("/Volumes/OtherMac")));
    EXPECT_TRUE(disks[1]->isBootVolume());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AMountPathWithBlanksReachesBlessWholeAndItsAnswerDecides) {
    const std::string path = "/Volumes/Other Mac HD";
    auto blessed = mountedDisk("disk1s2", path);
    source->tool(blessArgv(path), kBlessedAnswer);
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*blessed, info(entry("Bootable", "<true/>")));
    EXPECT_TRUE(ran(*source, blessArgv(path)));
    EXPECT_TRUE(blessed->isBootVolume());

    auto refused = mountedDisk("disk1s2", path);
    source->tool(blessArgv(path), "Can't get mount point for");
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*refused, info(entry("Bootable", "<true/>")));
    EXPECT_FALSE(refused->isBootVolume());
    EXPECT_TRUE(logHas("parseBlessPlistInfo Can't get mount point for"));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ABootVolumeThatBlessCannotAnswerForLosesItsMark) {
    auto disk = mountedDisk("disk2s1", "/Volumes/STICK");
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, info(entry("Bootable", "<true/>")));
    EXPECT_TRUE(ran(*source, blessArgv("/Volumes/STICK")));
    EXPECT_FALSE(disk->isBootVolume());
}

// --- the boot-blessing answer ---------------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, BlessedFoldersHaveAPositiveDirectoryIdAndAPath) {
    const std::string answer = plist(
        "<dict>" +
        entry("Finder Info",
              "<array>"
              "<dict>" + entry("Directory ID", integer(19519)) + entry("Path", text("/System/Library/CoreServices")) +
                  "</dict>"
                  "<dict>" + entry("Directory ID", integer(0)) + entry("Path", text("")) + "</dict>"
                  "<dict>" + entry("Directory ID", integer(-3)) + entry("Path", text("/x")) + "</dict>"
                  "<dict>" + entry("Directory ID", integer(21910)) + entry("Path", text("")) + "</dict>"
                  "<dict>" + entry("Path", text("/y")) + "</dict>"
                  "<string>not an entry</string>"
                  "<dict>" + entry("Directory ID", text("42")) + entry("Path", text("/z")) + "</dict>"
                  "</array>") +
        "</dict>");
    const std::vector<DictionaryRef> folders = QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo(answer);
    ASSERT_EQ(folders.size(), 2u);
    EXPECT_EQ(*folders[0]->get("Path").string(), "/System/Library/CoreServices");
    EXPECT_EQ(*folders[1]->get("Path").string(), "/z");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, BlessErrorTextsAreLoggedAndGiveNoFolder) {
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo("Can't get booter information").empty());
    EXPECT_TRUE(logHas("parseBlessPlistInfo Can't get booter information"));
    EXPECT_TRUE(
        QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo("/Volumes/A B: Can't get mount point for").empty());
    EXPECT_TRUE(logHas("parseBlessPlistInfo /Volumes/A B: Can't get mount point for"));
    EXPECT_FALSE(logHas("NSPropertyListSerialization"));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AnUnreadableBlessAnswerIsLoggedAndGivesNoFolder) {
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo("").empty());
    EXPECT_FALSE(logHas("parseBlessPlistInfo"));
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo("Can't get booter information\n").empty());
    EXPECT_TRUE(logHas("parseBlessPlistInfo NSPropertyListSerialization failed response: Can't get booter information"));
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo(plist("<array/>")).empty());
    EXPECT_TRUE(QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo(plist("<dict>" + entry("Finder Info", text("x")) +
                                                                             "</dict>"))
                    .empty());
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ALongUnreadableAnswerIsLoggedCutAndOnOneLine) {
    const std::string answer = "line one\nline two\n" + std::string(5000, 'x');
    QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo(answer);
    EXPECT_TRUE(logHas("failed response: line oneline two" + std::string(100, 'x')));
    EXPECT_FALSE(logHas(std::string(1100, 'x')));
    EXPECT_TRUE(logHas("xxx...\n"));
}

// --- disk information by mount path ----------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, InfoOfAMountPathWithBlanksAsksWithThePathWhole) {
    source->tool(infoArgv("/Volumes/My Stick"), info(entry("BusProtocol", text("USB"))));
    const DictionaryRef found = QVDiskUtilHardwareInfoDiscoverer::infoPlistForMountPath(*source, "/Volumes/My Stick");
    ASSERT_TRUE(found);
    EXPECT_EQ(*found->get("BusProtocol").string(), "USB");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AnErrorAnswerIsADictionaryLikeAnyOther) {
    source->tool(infoArgv("/Volumes/SMB"),
                 info(entry("Error", "<true/>") + entry("ErrorMessage", text("Could not find disk: /Volumes/SMB")) +
                      entry("ExitCode", integer(1))));
    const DictionaryRef found = QVDiskUtilHardwareInfoDiscoverer::infoPlistForMountPath(*source, "/Volumes/SMB");
    ASSERT_TRUE(found);
    EXPECT_TRUE(found->get("Error").toBool());
    EXPECT_FALSE(found->contains("BusProtocol"));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, InfoThatIsNoDictionaryOrNoAnswerIsNothing) {
    source->tool(infoArgv("/Volumes/A"), "Could not find disk\n").tool(infoArgv("/Volumes/B"), plist("<array/>"));
    EXPECT_FALSE(QVDiskUtilHardwareInfoDiscoverer::infoPlistForMountPath(*source, "/Volumes/A"));
    EXPECT_FALSE(QVDiskUtilHardwareInfoDiscoverer::infoPlistForMountPath(*source, "/Volumes/B"));
    EXPECT_FALSE(QVDiskUtilHardwareInfoDiscoverer::infoPlistForMountPath(*source, "/Volumes/C"));
}

// --- the current system's disk ---------------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, TheCurrentSystemDiskIsTheDeviceOfDfsSecondLine) {
    source->tool({"/bin/df", "/"}, "Filesystem   512-blocks      Used Available Capacity  Mounted on\n"
                                   "/dev/disk1s1  976490576 414623680 546935208    44%    /\n");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::getCurrentOSDiskId(*source), "disk1s1");
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, DfWithoutASecondLineGivesNoDisk) {
    EXPECT_FALSE(QVDiskUtilHardwareInfoDiscoverer::getCurrentOSDiskId(*source));
    source->tool({"/bin/df", "/"}, "Filesystem 512-blocks Used Available Capacity Mounted on");
    EXPECT_FALSE(QVDiskUtilHardwareInfoDiscoverer::getCurrentOSDiskId(*source));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, DfsFirstPieceIsTakenEvenWhenEmpty) {
    source->tool({"/bin/df", "/"}, "Filesystem\n map auto_home 0 0 0 100% /home\n");
    EXPECT_EQ(QVDiskUtilHardwareInfoDiscoverer::getCurrentOSDiskId(*source), "");
}

// --- the whole scan ----------------------------------------------------------------------------

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, APhysicalVolumeIsLeftOutWhileItsDiskAndTheLogicalVolumeStay) {
    source->tool(kListArgv, diskList(listEntry("disk0", "", "", listEntry("disk0s1", "EFI") + listEntry("disk0s2")) +
                                     listEntry("disk1", "Macintosh HD", "/")));
    source->tool(kCSListArgv, "CoreStorage logical volume groups (1 found)\n"
                              "|\n"
                              "+-- Logical Volume Group A\n"
                              "    +-< Physical Volume B\n"
                              "    |   Disk:     disk0s2\n"
                              "    +-> Logical Volume Family C\n"
                              "        +-> Logical Volume D\n"
                              "            Disk:                  disk1\n");
    EXPECT_EQ(identifiersOf(discoverer.discoverDisks()), (Strings{"disk0", "disk0s1", "disk1"}));
    EXPECT_FALSE(ran(*source, infoArgv("disk0s2")));
    EXPECT_TRUE(ran(*source, infoArgv("disk0s1")));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, AFusionDrivesMembersAreLeftOut) {
    source->tool(kListArgv, diskList(listEntry("disk0", "", "", listEntry("disk0s1", "EFI") + listEntry("disk0s2")) +
                                     listEntry("disk1", "", "", listEntry("disk1s1", "EFI") + listEntry("disk1s2")) +
                                     listEntry("disk2", "Macintosh HD", "/")));
    source->tool(kCSListArgv, kFusionListing);
    EXPECT_EQ(identifiersOf(discoverer.discoverDisks()), (Strings{"disk0", "disk0s1", "disk1", "disk1s1", "disk2"}));
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, EachDiskIsFilledFromItsOwnInformation) {
    source->tool(kListArgv, hfsDiskList());
    source->tool(kStartupArgv, "/System/Library/CoreServices\n");
    source->tool(infoArgv("disk0"), info(entry("MediaName", text("APPLE SSD")) + entry("TotalSize", integer(100))));
    source->tool(infoArgv("disk0s2"),
                 info(entry("Bootable", "<true/>") + entry("FilesystemName", text("Journaled HFS+")) +
                      entry("FreeSpace", integer(40)) + entry("MediaName", text("")) + entry("TotalSize", integer(90))));
    source->tool(infoArgv("disk0s3"), info(entry("Content", text("Apple_Boot")) + entry("TotalSize", integer(10))));
    source->tool(infoArgv("disk2s1"), info(entry("Bootable", "<true/>") + entry("FilesystemName", text("MS-DOS FAT32"))));
    source->tool(blessArgv("/Volumes/STICK"), "Can't get booter information");

    const auto disks = disksOf(discoverer.discoverDisks());
    ASSERT_EQ(disks.size(), 6u);
    EXPECT_EQ(disks[0]->deviceName(), "APPLE SSD");
    EXPECT_EQ(disks[0]->size(), 100u);
    EXPECT_FALSE(disks[1]->deviceName());  // no information: what the list gave
    EXPECT_EQ(disks[1]->name(), "EFI");
    EXPECT_TRUE(disks[2]->isBootVolume());  // the startup disk
    EXPECT_EQ(disks[2]->freeSpace(), 40u);
    EXPECT_EQ(disks[2]->fileSystem(), "Journaled HFS+");
    EXPECT_TRUE(disks[3]->isBootVolume());  // unmounted recovery partition
    EXPECT_FALSE(disks[5]->isBootVolume());  // the stick bless knows nothing of
    EXPECT_EQ(disks[5]->fileSystem(), "MS-DOS FAT32");
    EXPECT_TRUE(logHas("parseBlessPlistInfo Can't get booter information"));
    EXPECT_EQ(source->toolRuns().size(), 3u + 6u + 1u);
}

TEST_F(QVDiskUtilHardwareInfoDiscovererTest, ABrokenDiskListGivesAnEmptySectionAndALogLine) {
    source->tool(kListArgv, "<?xml version=\"1.0\"?><plist><dict><key>AllDisksAndPartitions</key><array>");
    source->tool(kCSListArgv, kFusionListing);
    EXPECT_TRUE(discoverer.discoverInfo()->get("disks").array()->empty());
    EXPECT_TRUE(logHas("disksWithDiskUtilListPlistResponse NSPropertyListSerialization failed data: <"));
}

}  // namespace
}  // namespace tov
