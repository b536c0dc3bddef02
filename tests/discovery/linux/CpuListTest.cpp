#include "discovery/linux/CpuList.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

using Cpus = std::vector<std::uint32_t>;

TEST(CpuList, ReadsRangesAndSingleCpus) {
    EXPECT_EQ(parseCpuList("0-3,8,10-11\n"), (Cpus{0, 1, 2, 3, 8, 10, 11}));
    EXPECT_EQ(parseCpuList("0\n"), (Cpus{0}));
    EXPECT_EQ(parseCpuList("\n"), Cpus{});
}

TEST(CpuList, RefusesMalformedOrHugeLists) {
    EXPECT_FALSE(parseCpuList("3-1"));
    EXPECT_FALSE(parseCpuList("a-b"));
    EXPECT_FALSE(parseCpuList("0-"));
    EXPECT_FALSE(parseCpuList("1,,2"));
    EXPECT_FALSE(parseCpuList("-1"));
    EXPECT_FALSE(parseCpuList("0-4294967295"));
    EXPECT_FALSE(parseCpuList("0-65535,0-65535"));
}

}  // namespace
}  // namespace tov
