#include "discovery/QVDiscovererFactory.h"

#include <gtest/gtest.h>

#include "discovery/PublicIpRule.h"
#include "discovery/QVHWInventoryDiscoverer.h"
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

TEST(PublicIpRule, LookUpAgainOnlyWhenTheLocalAddressIsMissingOrChanged) {
    EXPECT_TRUE(needsPublicIpDiscovery(std::nullopt, "10.0.0.1"));
    EXPECT_TRUE(needsPublicIpDiscovery("", ""));
    EXPECT_TRUE(needsPublicIpDiscovery("10.0.0.2", "10.0.0.1"));
    EXPECT_TRUE(needsPublicIpDiscovery("10.0.0.2", std::nullopt));
    EXPECT_FALSE(needsPublicIpDiscovery("10.0.0.1", "10.0.0.1"));
}

}  // namespace
}  // namespace tov
