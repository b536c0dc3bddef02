#include "discovery/linux/ProcMemInfo.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(ProcMemInfo, ReadsTheTotalsInBytes) {
    const ProcMemInfo info = parseProcMemInfo(
        "MemTotal:        8000000 kB\n"
        "MemFree:         1000000 kB\n"
        "MemAvailable:    6000000 kB\n"
        "Buffers:           20000 kB\n"
        "Cached:           300000 kB\n"
        "SwapTotal:       2000000 kB\n"
        "SwapFree:        1500000 kB\n"
        "HugePages_Total:       0\n");
    EXPECT_EQ(info.memTotal, 8000000ull * 1024);
    EXPECT_EQ(info.memFree, 1000000ull * 1024);
    EXPECT_EQ(info.memAvailable, 6000000ull * 1024);
    EXPECT_EQ(info.buffers, 20000ull * 1024);
    EXPECT_EQ(info.cached, 300000ull * 1024);
    EXPECT_EQ(info.swapTotal, 2000000ull * 1024);
    EXPECT_EQ(info.swapFree, 1500000ull * 1024);
}

TEST(ProcMemInfo, GarbageLeavesTheValuesUnknown) {
    const ProcMemInfo info = parseProcMemInfo(
        "MemTotal: lots\n"
        "MemAvailable: -5 kB\n"
        "SwapTotal: 12 MB\n"
        "\x01\x02 binary junk without colon\n"
        "SwapFree:\n"
        "MemFree: 99999999999999999999999 kB\n"
        "Buffers: 18446744073709551615 kB\n");
    EXPECT_FALSE(info.memTotal);
    EXPECT_FALSE(info.memAvailable);
    EXPECT_FALSE(info.swapTotal);
    EXPECT_FALSE(info.swapFree);
    EXPECT_FALSE(info.memFree);
    EXPECT_FALSE(info.buffers);  // does not fit in 64 bits once in bytes
}

TEST(ProcMemInfo, ALastLineWithoutLineBreakCounts) {
    EXPECT_EQ(parseProcMemInfo("MemTotal: 4 kB").memTotal, 4096u);
    EXPECT_FALSE(parseProcMemInfo("").memTotal);
}

}  // namespace
}  // namespace tov
