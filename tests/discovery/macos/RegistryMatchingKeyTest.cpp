#include "discovery/macos/RegistryMatchingKey.h"

#include <gtest/gtest.h>

#include <string>

namespace tov {
namespace {

TEST(RegistryMatchingKey, AClassNameAloneMatchesTheClass) {
    const auto matching = parseRegistryMatchingKey("IOBlockStorageDevice");
    ASSERT_TRUE(matching.has_value());
    EXPECT_EQ(matching->className, "IOBlockStorageDevice");
    EXPECT_FALSE(matching->usagePage.has_value());
    EXPECT_FALSE(matching->usage.has_value());
}

TEST(RegistryMatchingKey, AClassWithAUsagePairMatchesThatUsage) {
    const auto keyboards = parseRegistryMatchingKey("IOHIDDevice 1 6");
    ASSERT_TRUE(keyboards.has_value());
    EXPECT_EQ(keyboards->className, "IOHIDDevice");
    EXPECT_EQ(keyboards->usagePage, 1);
    EXPECT_EQ(keyboards->usage, 6);
    const auto mice = parseRegistryMatchingKey("IOHIDDevice 1 2");
    ASSERT_TRUE(mice.has_value());
    EXPECT_EQ(mice->usage, 2);
}

TEST(RegistryMatchingKey, TheLargestUsagesAreTaken) {
    const auto matching = parseRegistryMatchingKey("IOHIDDevice 65280 2147483647");
    ASSERT_TRUE(matching.has_value());
    EXPECT_EQ(matching->usagePage, 65280);
    EXPECT_EQ(matching->usage, 2147483647);
}

TEST(RegistryMatchingKey, KeysOfAnyOtherShapeMatchNothing) {
    for (const std::string& key :
         {std::string(), std::string(" "), std::string("IOHIDDevice 1"), std::string("IOHIDDevice 1 6 0"),
          std::string("IOHIDDevice  1 6"), std::string("IOHIDDevice 1 6 "), std::string(" IOHIDDevice"),
          std::string("IOHIDDevice -1 6"), std::string("IOHIDDevice +1 6"), std::string("IOHIDDevice 1 0x6"),
          std::string("IOHIDDevice 1 2147483648"), std::string("IOHIDDevice 1 6x"), std::string("IO/Device"),
          std::string("IOHID\xC3\xA9"), std::string("IOHIDDevice\tx"), std::string("IOHID\0Device", 12),
          std::string("IOHIDDevice 1 6\0", 16), std::string(128, 'A')}) {
        EXPECT_FALSE(parseRegistryMatchingKey(key).has_value()) << key;
    }
}

TEST(RegistryMatchingKey, AClassNameOfTheRegistrysLongestLengthIsTaken) {
    const auto matching = parseRegistryMatchingKey(std::string(127, 'A'));
    ASSERT_TRUE(matching.has_value());
    EXPECT_EQ(matching->className.size(), 127U);
}

}  // namespace
}  // namespace tov
