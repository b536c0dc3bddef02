#include "discovery/QVDiscovererFactory.h"

#include <gtest/gtest.h>

#include "discovery/PublicIpRule.h"
#include "discovery/QVHWInventoryDiscoverer.h"
#include "discovery/SystemFacts.h"
#include "discovery/macos/QVCoreAudioHardwareDiscoverer.h"
#include "discovery/macos/QVCoreFoundationDiscoverer.h"
#include "discovery/macos/QVDiskUtilHardwareInfoDiscoverer.h"
#include "discovery/macos/QVIOKitHardwareInfoDiscoverer.h"
#include "discovery/macos/QVOSSystemInfoDiscoverer.h"
#include "discovery/macos/QVSysCtlHardwareInfoDiscoverer.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

TEST(QVHWInventoryDiscoverer, CollectionIsTheScanTimeInUtc) {
    const std::chrono::system_clock::time_point instant{std::chrono::seconds(1706692500) + std::chrono::milliseconds(750)};
    QVHWInventoryDiscoverer discoverer([instant] { return instant; });
    EXPECT_EQ(discoverer.sourceName(), "HWInventory");
    const DictionaryRef section = discoverer.discoverInfo();
    ASSERT_EQ(section->size(), 1u);
    EXPECT_EQ(section->get("collection"), Value("2024-01-31T09:15:00Z"));
}

TEST(QVHWInventoryDiscoverer, EveryCallGivesANewSection) {
    QVHWInventoryDiscoverer discoverer;
    EXPECT_NE(discoverer.discoverInfo(), discoverer.discoverInfo());
}

TEST(QVDiscovererFactory, EightSectionsInScanOrder) {
    QVDiscovererFactory factory;
    std::vector<std::string> names;
    for (const auto& discoverer : factory.sectionDiscoverers()) names.push_back(discoverer->sourceName());
    EXPECT_EQ(names, (std::vector<std::string>{"iokit", "appkit", "diskutil", "operatingSystems", "coreaudio", "sysctl",
                                               "corefoundation", "events"}));
    EXPECT_EQ(factory.inventoryDiscoverer()->sourceName(), "HWInventory");
    EXPECT_EQ(factory.operatingSystemDiscoverer()->sourceName(), "operatingSystems");
}

// An empty machine has no disks and no addresses.
TEST(QVDiscovererFactory, DiskDiscoverersAreDiskUtilityThenDeviceRegistry) {
    QVDiscovererFactory::Options options;
    options.persistAddresses = false;
    QVDiscovererFactory factory(std::make_shared<testing::MemorySystemSource>(), options);
    const auto discoverers = factory.diskDiscoverers();
    ASSERT_EQ(discoverers.size(), 2u);
    EXPECT_EQ(discoverers[0]->sourceName(), "diskutil");
    EXPECT_EQ(discoverers[1]->sourceName(), "iokit");
    EXPECT_TRUE(discoverers[0]->discoverDisks()->empty());
    EXPECT_EQ(factory.localIP(), "");
    EXPECT_EQ(factory.publicIP(), "");
}

QVDiscovererFactory macFactory(std::shared_ptr<testing::MemorySystemSource> source) {
    QVDiscovererFactory::Options options;
    options.persistAddresses = false;
    return QVDiscovererFactory(std::move(source), options);
}

template <class Discoverer>
bool isA(const std::unique_ptr<QVSystemInfoDiscoverer>& discoverer) {
    return dynamic_cast<Discoverer*>(discoverer.get()) != nullptr;
}

// A recorded Mac is read by the Mac discoverers, whatever platform replays it.
TEST(QVDiscovererFactory, MacSourceIsReadByTheMacDiscoverers) {
    QVDiscovererFactory factory = macFactory(std::make_shared<testing::MemorySystemSource>(SystemSource::kMacOSPlatform));
    const auto discoverers = factory.sectionDiscoverers();
    ASSERT_EQ(discoverers.size(), 8u);
    EXPECT_TRUE(isA<QVIOKitHardwareInfoDiscoverer>(discoverers[0]));
    EXPECT_TRUE(isA<QVDiskUtilHardwareInfoDiscoverer>(discoverers[2]));
    EXPECT_TRUE(isA<QVOSSystemInfoDiscoverer>(discoverers[3]));
    EXPECT_TRUE(isA<QVCoreAudioHardwareDiscoverer>(discoverers[4]));
    EXPECT_TRUE(isA<QVSysCtlHardwareInfoDiscoverer>(discoverers[5]));
    EXPECT_TRUE(isA<QVCoreFoundationDiscoverer>(discoverers[6]));
    EXPECT_TRUE(isA<QVOSSystemInfoDiscoverer>(factory.operatingSystemDiscoverer()));
    const auto diskDiscoverers = factory.diskDiscoverers();
    ASSERT_EQ(diskDiscoverers.size(), 2u);
    EXPECT_NE(dynamic_cast<QVDiskUtilHardwareInfoDiscoverer*>(diskDiscoverers[0].get()), nullptr);
    EXPECT_NE(dynamic_cast<QVIOKitHardwareInfoDiscoverer*>(diskDiscoverers[1].get()), nullptr);
}

// A Mac always has a console; "loginwindow" means nobody is logged in at it.
TEST(QVDiscovererFactory, MacConsoleUserComesFromTheConfigurationStore) {
    auto source = std::make_shared<testing::MemorySystemSource>(SystemSource::kMacOSPlatform);
    DictionaryRef user = makeDictionary();
    user->set("user", "loginwindow");
    user->set("processUser", "root");
    source->fact(facts::kMacConsoleUser, "", Value(user));
    QVDiscovererFactory factory = macFactory(source);
    EXPECT_TRUE(factory.currentHumanUsername().machineHasConsole);
    EXPECT_EQ(factory.currentHumanUsername().name, "");
    user->set("user", "lena");
    EXPECT_EQ(factory.currentHumanUsername().name, "lena");
}

// The removable-media events learn a Mac's mount paths from the disk list and a volume's
// details from the disk information of its mount path, asked with the path whole.
TEST(QVDiscovererFactory, MacVolumesComeFromTheDiskUtility) {
    auto source = std::make_shared<testing::MemorySystemSource>(SystemSource::kMacOSPlatform);
    source->tool({"/usr/sbin/diskutil", "list", "-plist"},
                 "<plist version=\"1.0\"><dict><key>AllDisksAndPartitions</key><array><dict>"
                 "<key>DeviceIdentifier</key><string>disk4</string><key>Partitions</key><array><dict>"
                 "<key>DeviceIdentifier</key><string>disk4s1</string>"
                 "<key>MountPoint</key><string>/Volumes/Photo Stick</string></dict></array></dict></array>"
                 "</dict></plist>");
    source->tool({"/usr/sbin/diskutil", "info", "-plist", "/Volumes/Photo Stick"},
                 "<plist version=\"1.0\"><dict><key>BusProtocol</key><string>USB</string></dict></plist>");
    QVDiscovererFactory factory = macFactory(source);
    EXPECT_EQ(factory.volumeMountPaths(), std::vector<std::string>{"/Volumes/Photo Stick"});
    const DictionaryRef info = factory.volumeInfoForMountPath("/Volumes/Photo Stick");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->get("BusProtocol"), Value("USB"));
    EXPECT_FALSE(factory.volumeInfoForMountPath("/Volumes/Elsewhere"));
}

TEST(PublicIpRule, LookUpAgainOnlyWhenTheLocalAddressIsMissingOrChanged) {
    EXPECT_TRUE(needsPublicIpDiscovery(std::nullopt, "10.0.0.1"));
    EXPECT_TRUE(needsPublicIpDiscovery("", ""));
    EXPECT_TRUE(needsPublicIpDiscovery("10.0.0.2", "10.0.0.1"));
    EXPECT_TRUE(needsPublicIpDiscovery("10.0.0.2", std::nullopt));
    EXPECT_FALSE(needsPublicIpDiscovery("10.0.0.1", "10.0.0.1"));
}

}  // namespace
}  // namespace tov
