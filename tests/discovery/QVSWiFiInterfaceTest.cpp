#include "discovery/QVSWiFiInterfaceFactory.h"

#include <gtest/gtest.h>

#include "discovery/NetworkAdapterName.h"
#include "discovery/QVSMockWiFiInterface.h"

namespace tov {
namespace {

WiFiInterfacesQuestion oneInterface(std::string address, std::string ssid, int* asked = nullptr) {
    return [address, ssid, asked] {
        if (asked) ++*asked;
        return std::vector<WiFiInterfaceState>{{address, ssid}};
    };
}

TEST(QVSWiFiInterfaceFactory, TheFlagChoosesTheMockOrTheConcreteInterface) {
    const auto mock = QVSWiFiInterfaceFactory::wiFiInterface(true, oneInterface("00:1c:b3:09:85:15", "Home"));
    EXPECT_TRUE(std::dynamic_pointer_cast<QVSMockWiFiInterface>(mock));
    const auto concrete = QVSWiFiInterfaceFactory::wiFiInterface(false, oneInterface("00:1c:b3:09:85:15", "Home"));
    EXPECT_TRUE(std::dynamic_pointer_cast<QVSConcreteWiFiInterface>(concrete));
    EXPECT_EQ(concrete->ssidWithMacAddress("00:1C:B3:09:85:15"), "Home");
}

TEST(QVSMockWiFiInterface, EveryAddressHasTheMockNetwork) {
    const auto mock = QVSMockWiFiInterface::mockWiFiInterface();
    for (const char* address : {"00:1C:B3:09:85:15", "", "not an address"}) {
        EXPECT_EQ(mock->ssidWithMacAddress(address), "mock-ssid");
    }
}

TEST(QVSConcreteWiFiInterface, MatchesTheHardwareAddressWithoutRegardToCase) {
    const auto wifi = QVSConcreteWiFiInterface::concreteWiFiInterface(oneInterface("00:1c:b3:09:85:15", "Cafe Net"));
    EXPECT_EQ(wifi->ssidWithMacAddress("00:1C:B3:09:85:15"), "Cafe Net");
    EXPECT_EQ(wifi->ssidWithMacAddress("00:1c:b3:09:85:15"), "Cafe Net");
}

TEST(QVSConcreteWiFiInterface, OtherAdaptersHaveNoNetwork) {
    const auto wifi = QVSConcreteWiFiInterface::concreteWiFiInterface(oneInterface("00:1c:b3:09:85:15", "Cafe Net"));
    EXPECT_EQ(wifi->ssidWithMacAddress("00:1C:B3:09:85:16"), "");
    EXPECT_EQ(wifi->ssidWithMacAddress("00:1C:B3:09:85"), "");
    EXPECT_EQ(wifi->ssidWithMacAddress(""), "");
}

TEST(QVSConcreteWiFiInterface, AnAdapterWithoutAddressNeverMatchesAnInterfaceWithout) {
    const auto wifi = QVSConcreteWiFiInterface::concreteWiFiInterface(oneInterface("", "Cafe Net"));
    EXPECT_EQ(wifi->ssidWithMacAddress(""), "");
}

TEST(QVSConcreteWiFiInterface, AsksTheSystemForEveryAdapter) {
    int asked = 0;
    const auto wifi = QVSConcreteWiFiInterface::concreteWiFiInterface(oneInterface("02:00:00:00:00:01", "", &asked));
    EXPECT_EQ(wifi->ssidWithMacAddress("02:00:00:00:00:01"), "");  // not associated
    wifi->ssidWithMacAddress("02:00:00:00:00:02");
    EXPECT_EQ(asked, 2);
}

TEST(NetworkAdapterName, ModelAndClassOrWhicheverIsKnown) {
    EXPECT_EQ(networkAdapterName("I350 Gigabit Network Connection", "igb"), "I350 Gigabit Network Connection - igb");
    EXPECT_EQ(networkAdapterName("I350 Gigabit Network Connection", ""), "I350 Gigabit Network Connection");
    EXPECT_EQ(networkAdapterName("", "mvneta"), "mvneta");
    EXPECT_EQ(networkAdapterName("", ""), "");
}

}  // namespace
}  // namespace tov
