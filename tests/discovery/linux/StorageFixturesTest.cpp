// The batteries and drives of the recorded Linux machines, as a person who knows each
// machine would list them.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "discovery/RecordedSystemSource.h"
#include "discovery/linux/LinuxBatteries.h"
#include "discovery/linux/LinuxDisks.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitDisk.h"

namespace tov {
namespace {

std::string fixture(const std::string& machine) { return std::string(TOV_TEST_FIXTURES) + "/linux/" + machine; }

struct Drive {
    std::string name;
    std::string serial;
    bool removable = false;
    bool operator==(const Drive&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Drive& drive) {
    return out << "{" << drive.name << ", " << drive.serial << ", " << drive.removable << "}";
}

std::vector<Drive> drivesOf(const std::string& machine) {
    std::shared_ptr<SystemSource> source = RecordedSystemSource::open(fixture(machine));
    std::vector<Drive> drives;
    HardwareIds hardwareIds(source);
    const ArrayRef array = discoverLinuxDisks(*source, hardwareIds);
    for (const Value& value : *array) {
        const auto disk = std::dynamic_pointer_cast<QVIOKitDisk>(value.record());
        drives.push_back({disk->name().value_or("?"), disk->serialNo().value_or("?"), disk->isRemovable()});
    }
    return drives;
}

std::vector<std::shared_ptr<QVIOKitBattery>> batteriesOf(const std::string& machine) {
    auto source = RecordedSystemSource::open(fixture(machine));
    std::vector<std::shared_ptr<QVIOKitBattery>> batteries;
    const ArrayRef array = discoverLinuxBatteries(*source);
    for (const Value& value : *array) batteries.push_back(std::dynamic_pointer_cast<QVIOKitBattery>(value.record()));
    return batteries;
}

TEST(StorageFixtures, LaptopHasItsDischargingBatteryOnlyAndItsNvmeDiskAndUsbStick) {
    const auto batteries = batteriesOf("laptop");
    ASSERT_EQ(batteries.size(), 1u);
    EXPECT_EQ(batteries[0]->name(), "Primary");
    EXPECT_EQ(batteries[0]->serialNo(), "08123 2023/05/17");
    EXPECT_EQ(batteries[0]->capacity(), 62.0f);
    EXPECT_EQ(batteries[0]->estimatedRunTime(), 200);
    EXPECT_EQ(drivesOf("laptop"), (std::vector<Drive>{{"SAMSUNG MZVL4512HBLU-00BH1", "S6XKNF0W712345", false},
                                                      {"Ultra Flair", "4C530001230518112233", true}}));
}

TEST(StorageFixtures, MacBookAirHasItsChargingBatteryAndAppleSsd) {
    const auto batteries = batteriesOf("macbook-air");
    ASSERT_EQ(batteries.size(), 1u);
    EXPECT_EQ(batteries[0]->name(), "bq20z451");
    EXPECT_EQ(batteries[0]->capacity(), 66.0f);
    EXPECT_EQ(batteries[0]->estimatedRunTime(), 0);
    EXPECT_EQ(drivesOf("macbook-air"), (std::vector<Drive>{{"APPLE SSD SM0128G", "S1K5NYAF812345", false}}));
}

TEST(StorageFixtures, DesktopHasNvmeTwoSataDisksAndARemovableDvdDrive) {
    EXPECT_TRUE(batteriesOf("desktop-lvm").empty());
    EXPECT_EQ(drivesOf("desktop-lvm"), (std::vector<Drive>{{"KINGSTON SA2000M8500G", "50026B7684A1B2C3", false},
                                                           {"ST1000DM010-2EP1", "ZN1A2B3C", false},
                                                           {"WDC WD20EZRZ-00Z", "WD-WCC4M1XYZ123", false},
                                                           {"DRW-24D5MT", "", true}}));
}

TEST(StorageFixtures, ServerKeepsItsTwoDisksOfOneModelApartByTheirSerials) {
    EXPECT_EQ(drivesOf("server-raid"), (std::vector<Drive>{{"ST1000NM0033-9ZM", "Z1W4K7PA", false},
                                                           {"ST1000NM0033-9ZM", "Z1W4K9QB", false}}));
}

TEST(StorageFixtures, VirtualMachineHasItsVirtioDiskAndNoLoopDevice) {
    EXPECT_EQ(drivesOf("virtual-machine"), (std::vector<Drive>{{"Virtio block device", "vm-4f2a-root", false}}));
}

TEST(StorageFixtures, ArmBoardHasItsSdCard) {
    EXPECT_EQ(drivesOf("arm-board"), (std::vector<Drive>{{"SC64G", "0x83e1a47c", false}}));
}

TEST(StorageFixtures, BrokenMachineGivesWhatCanBeRead) {
    const auto batteries = batteriesOf("broken");
    ASSERT_EQ(batteries.size(), 1u);
    EXPECT_EQ(batteries[0]->name(), "BAT1");
    EXPECT_EQ(batteries[0]->serialNo(), "[31m 0042");
    EXPECT_EQ(batteries[0]->capacity(), 0.0f);
    EXPECT_EQ(batteries[0]->estimatedRunTime(), 0);
    // sda's serial page is truncated, sdb has no model, sdc's serial holds control characters.
    EXPECT_EQ(drivesOf("broken"), (std::vector<Drive>{{"ST500\xEF\xBF\xBD" "DM002-1B", "", false},
                                                      {"KINGSTON SA400S3", "50026B77[2J82AB", false}}));
}

}  // namespace
}  // namespace tov
