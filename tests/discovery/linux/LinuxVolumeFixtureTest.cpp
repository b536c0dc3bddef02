#include <gtest/gtest.h>

#include "discovery/RecordedSystemSource.h"
#include "discovery/linux/LinuxVolumeDiscoverer.h"

namespace tov {
namespace {

struct Volume {
    std::string identifier;
    bool boot = false;
    bool optical = false;
};

std::vector<Volume> volumesOf(const std::string& machine) {
    std::shared_ptr<SystemSource> source = RecordedSystemSource::open(std::string(TOV_TEST_FIXTURES) + "/linux/" + machine);
    EXPECT_TRUE(source) << machine;
    if (!source) return {};
    std::vector<Volume> volumes;
    const ArrayRef disks = LinuxVolumeDiscoverer(source).discoverDisks();
    for (const Value& value : *disks) {
        const auto disk = std::dynamic_pointer_cast<QVDiskUtilDisk>(value.record());
        volumes.push_back({disk->identifier().value_or("?"), disk->isBootVolume(), disk->isOpticalMedia()});
    }
    return volumes;
}

std::vector<std::string> identifiersOf(const std::vector<Volume>& volumes) {
    std::vector<std::string> identifiers;
    for (const Volume& volume : volumes) identifiers.push_back(volume.identifier);
    return identifiers;
}

std::vector<std::string> bootOf(const std::vector<Volume>& volumes) {
    std::vector<std::string> identifiers;
    for (const Volume& volume : volumes) {
        if (volume.boot) identifiers.push_back(volume.identifier);
    }
    return identifiers;
}

TEST(LinuxVolumeFixtures, LaptopHasItsNvmeDiskWithEfiAndRootAndAnUnmountedUsbStick) {
    const auto volumes = volumesOf("laptop");
    EXPECT_EQ(identifiersOf(volumes), (std::vector<std::string>{"nvme0n1", "nvme0n1p1", "nvme0n1p2", "sda", "sda1"}));
    EXPECT_EQ(bootOf(volumes), (std::vector<std::string>{"nvme0n1p1", "nvme0n1p2"}));
}

TEST(LinuxVolumeFixtures, DesktopShowsLogicalVolumesInsteadOfTheirPhysicalVolume) {
    const auto volumes = volumesOf("desktop-lvm");
    EXPECT_EQ(identifiersOf(volumes),
              (std::vector<std::string>{"nvme0n1", "nvme0n1p1", "nvme0n1p2", "sda", "sda1", "sdb", "sdb1", "sr0",
                                        "fedora-root", "fedora-swap"}));
    EXPECT_EQ(bootOf(volumes), (std::vector<std::string>{"nvme0n1p1", "nvme0n1p2", "fedora-root"}));
    ASSERT_EQ(volumes.size(), 10u);
    EXPECT_TRUE(volumes[7].optical);
}

TEST(LinuxVolumeFixtures, ServerShowsItsArraysInsteadOfTheirMembers) {
    const auto volumes = volumesOf("server-raid");
    EXPECT_EQ(identifiersOf(volumes), (std::vector<std::string>{"sda", "sdb", "md0", "md1"}));
    EXPECT_EQ(bootOf(volumes), (std::vector<std::string>{"md0"}));
}

TEST(LinuxVolumeFixtures, VirtualMachineShowsItsFileBackedLoopOnly) {
    const auto volumes = volumesOf("virtual-machine");
    EXPECT_EQ(identifiersOf(volumes), (std::vector<std::string>{"vda", "vda1", "vda2", "vda5", "loop0"}));
    EXPECT_EQ(bootOf(volumes), (std::vector<std::string>{"vda1"}));
}

TEST(LinuxVolumeFixtures, ArmBoardShowsItsMemoryCard) {
    const auto volumes = volumesOf("arm-board");
    EXPECT_EQ(identifiersOf(volumes), (std::vector<std::string>{"mmcblk0", "mmcblk0p1", "mmcblk0p2"}));
    EXPECT_EQ(bootOf(volumes), (std::vector<std::string>{"mmcblk0p2"}));
}

TEST(LinuxVolumeFixtures, BrokenMachineGivesWhatCanBeReadPastLoopsAndGarbage) {
    const auto volumes = volumesOf("broken");
    EXPECT_EQ(identifiersOf(volumes), (std::vector<std::string>{"sda", "sda1", "sda2", "sda3", "sdb", "sdc"}));
    EXPECT_EQ(bootOf(volumes), (std::vector<std::string>{"sda1"}));
}

}  // namespace
}  // namespace tov
