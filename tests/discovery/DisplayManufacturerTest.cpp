#include "discovery/DisplayManufacturer.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(DisplayManufacturer, DellKeepsTheRefreshRateRead) {
    const DisplayManufacturer dell = displayManufacturer("DELL U2412M", std::string("10AC"));
    EXPECT_EQ(dell.name, "DELL");
    EXPECT_EQ(displayRefreshRate(dell, 75), 75);
    EXPECT_EQ(displayRefreshText(dell, "75.00Hz"), "75.00Hz");
}

TEST(DisplayManufacturer, VendorIdsCompareWithoutRegardToCase) {
    EXPECT_EQ(displayManufacturer("DELL P2415Q", std::string("10ac")).name, "DELL");
    EXPECT_EQ(displayManufacturer("DELL P2415Q", std::string("10Ac")).name, "DELL");
}

TEST(DisplayManufacturer, AppleIsReportedAtSixtyHertz) {
    const DisplayManufacturer apple = displayManufacturer("Color LCD", std::string("610"));
    EXPECT_EQ(apple.name, "Apple");
    EXPECT_EQ(displayRefreshRate(apple, 75), 60);
    EXPECT_EQ(displayRefreshRate(apple, 0), 60);
    EXPECT_EQ(displayRefreshText(apple, "75.00Hz"), "60");
}

TEST(DisplayManufacturer, AMissingVendorIdCountsAsApple) {
    const DisplayManufacturer missing = displayManufacturer("Generic Display", std::nullopt);
    EXPECT_EQ(missing.name, "Apple");
    EXPECT_EQ(displayRefreshRate(missing, 75), 60);
}

TEST(DisplayManufacturer, OtherDisplaysAreNamedByDescriptionAndVendorId) {
    const DisplayManufacturer lg = displayManufacturer("LG HDR 4K", std::string("1e6d"));
    EXPECT_EQ(lg.name, "LG HDR 4K(1e6d)");
    EXPECT_EQ(displayRefreshRate(lg, 75), 75);
    EXPECT_EQ(displayManufacturer("LG HDR 4K", std::string("1E6D")).name, "LG HDR 4K(1E6D)");
    EXPECT_EQ(displayManufacturer("", std::string("4914")).name, "(4914)");
    EXPECT_EQ(displayManufacturer("Panel", std::string("")).name, "Panel()");
}

}  // namespace
}  // namespace tov
