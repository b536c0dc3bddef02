#include "report/SummaryUnits.h"

#include <gtest/gtest.h>

#include <limits>

namespace tov {
namespace {

TEST(BinarySizeText, WholeAmountsHaveNoDecimal) {
    EXPECT_EQ(binarySizeText(0), "0 B");
    EXPECT_EQ(binarySizeText(1023), "1023 B");
    EXPECT_EQ(binarySizeText(1024), "1 KiB");
    EXPECT_EQ(binarySizeText(34359738368), "32 GiB");
}

TEST(BinarySizeText, OtherAmountsHaveOneDecimal) {
    EXPECT_EQ(binarySizeText(512110190592), "476.9 GiB");
    EXPECT_EQ(binarySizeText(3975479296), "3.7 GiB");
    EXPECT_EQ(binarySizeText(1536), "1.5 KiB");
}

TEST(BinarySizeText, AnAmountThatRoundsToTheNextUnitTakesIt) {
    EXPECT_EQ(binarySizeText(2147479552), "2 GiB");  // 4 KiB short of 2 GiB
    EXPECT_EQ(binarySizeText(1048575), "1 MiB");     // rounds to 1024.0 KiB
    EXPECT_EQ(binarySizeText(1099511627776), "1 TiB");
}

TEST(BinarySizeText, TheLargestCountStaysInTheLargestUnit) {
    EXPECT_EQ(binarySizeText(std::numeric_limits<std::uint64_t>::max()), "16 EiB");
}

TEST(BitRateText, CountsInStepsOfAThousand) {
    EXPECT_EQ(bitRateText(999), "999 bit/s");
    EXPECT_EQ(bitRateText(144000000), "144 Mbit/s");
    EXPECT_EQ(bitRateText(1000000000), "1 Gbit/s");
    EXPECT_EQ(bitRateText(2500000000), "2.5 Gbit/s");
    EXPECT_EQ(bitRateText(10000000000), "10 Gbit/s");
}

}  // namespace
}  // namespace tov
