#include "discovery/formats/InputCapabilities.h"

#include <gtest/gtest.h>

#include <string>

namespace tov {
namespace {

TEST(InputCapabilitiesTest, ReadsTheMostSignificantWordFirst) {
    // KEY_POWER (116) of an ACPI power button: bit 52 of the second 64-bit word.
    const std::optional<InputCapabilities> keys = InputCapabilities::parse("10000000000000 0", 64);
    ASSERT_TRUE(keys.has_value());
    EXPECT_TRUE(keys->has(116));
    EXPECT_FALSE(keys->has(52));
    EXPECT_FALSE(keys->has(5000));
    EXPECT_FALSE(keys->empty());
}

TEST(InputCapabilitiesTest, WordsAreAsWideAsTheKernelsLong) {
    // BTN_LEFT (0x110) of a mouse as a 64-bit and as a 32-bit kernel print it.
    EXPECT_TRUE(InputCapabilities::parse("ff0000 0 0 0 0", 64)->has(0x110));
    EXPECT_TRUE(InputCapabilities::parse("ff0000 0 0 0 0 0 0 0 0", 32)->has(0x110));
    EXPECT_FALSE(InputCapabilities::parse("ff0000 0 0 0 0", 32)->has(0x110));
}

TEST(InputCapabilitiesTest, TellsWhetherARangeIsComplete) {
    const std::optional<InputCapabilities> keys = InputCapabilities::parse("fffffffffffffffe", 64);
    ASSERT_TRUE(keys.has_value());
    EXPECT_TRUE(keys->hasAll(1, 31));
    EXPECT_FALSE(keys->hasAll(0, 31));
    EXPECT_FALSE(InputCapabilities::parse("fffffffffff7fffe", 64)->hasAll(1, 31));
}

TEST(InputCapabilitiesTest, AZeroBitmapIsEmpty) {
    EXPECT_TRUE(InputCapabilities::parse("0", 64)->empty());
    EXPECT_TRUE(InputCapabilities().empty());
    EXPECT_FALSE(InputCapabilities().has(0));
}

TEST(InputCapabilitiesTest, ToleratesALineEndAndUpperCaseDigits) {
    EXPECT_TRUE(InputCapabilities::parse("120013\n", 64)->has(20));
    EXPECT_TRUE(InputCapabilities::parse("ABC", 64)->has(11));
}

TEST(InputCapabilitiesTest, AbsurdBitmapsAreRefused) {
    EXPECT_FALSE(InputCapabilities::parse("", 64).has_value());
    EXPECT_FALSE(InputCapabilities::parse("   ", 64).has_value());
    EXPECT_FALSE(InputCapabilities::parse("12g4 0", 64).has_value());
    EXPECT_FALSE(InputCapabilities::parse("-1", 64).has_value());
    EXPECT_FALSE(InputCapabilities::parse("1ffffffffffffffff", 64).has_value());
    EXPECT_FALSE(InputCapabilities::parse("100000000", 32).has_value());
    EXPECT_FALSE(InputCapabilities::parse("1", 16).has_value());
    std::string thousands;
    for (int word = 0; word < 5000; ++word) thousands += "ffffffffffffffff ";
    EXPECT_FALSE(InputCapabilities::parse(thousands, 64).has_value());
}

TEST(InputCapabilitiesTest, TheLargestBitmapTheKernelPrintsIsRead) {
    std::string words = "1";
    for (std::size_t word = 1; word < InputCapabilities::kMaximumWords; ++word) words += " 0";
    const std::optional<InputCapabilities> bitmap = InputCapabilities::parse(words, 64);
    ASSERT_TRUE(bitmap.has_value());
    EXPECT_TRUE(bitmap->has(64 * (InputCapabilities::kMaximumWords - 1)));
}

}  // namespace
}  // namespace tov
