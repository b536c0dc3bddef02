#include "discovery/linux/LinuxMemoryTotals.h"

#include <gtest/gtest.h>

#include "support/SmbiosBytes.h"

namespace tov {
namespace {

using testing::MemoryDeviceBytes;

constexpr std::uint64_t kGiB = 1024ull * 1024 * 1024;

std::string moduleOf(std::uint16_t megabytes) {
    MemoryDeviceBytes module;
    module.size = megabytes;
    return module.bytes();
}

ProcMemInfo memInfo() {
    ProcMemInfo info;
    info.memTotal = 15 * kGiB;
    info.memAvailable = 11 * kGiB;
    info.swapTotal = 2 * kGiB;
    info.swapFree = kGiB / 2;
    return info;
}

TEST(LinuxMemoryTotals, InstalledMemoryIsTheSumOfTheModules) {
    EXPECT_EQ(installedMemoryBytes({moduleOf(8192), moduleOf(0), moduleOf(8192)}), 16 * kGiB);
}

TEST(LinuxMemoryTotals, NoModulesOrUnknownSizesGiveNothing) {
    EXPECT_FALSE(installedMemoryBytes({}));
    EXPECT_FALSE(installedMemoryBytes({moduleOf(0), moduleOf(0)}));
    EXPECT_FALSE(installedMemoryBytes({moduleOf(8192), moduleOf(0xFFFF)}));
    EXPECT_FALSE(installedMemoryBytes({"\x11\x05"}));
}

TEST(LinuxMemoryTotals, ATruncatedEntryIsLeftOut) {
    const std::string truncated = moduleOf(4096).substr(0, 10);
    EXPECT_EQ(installedMemoryBytes({moduleOf(4096), truncated}), 4 * kGiB);
}

TEST(LinuxMemoryTotals, TotalIsInstalledElseMemTotalAndUsedIsTotalLessAvailable) {
    const LinuxMemoryTotals withModules = linuxMemoryTotals(16 * kGiB, memInfo());
    EXPECT_EQ(withModules.totalPhysical, 16 * kGiB);
    EXPECT_EQ(withModules.usedPhysical, 4 * kGiB);
    EXPECT_EQ(withModules.totalSwap, 2 * kGiB);
    EXPECT_EQ(withModules.usedSwap, 3 * kGiB / 2);
    EXPECT_EQ(linuxMemoryTotals(std::nullopt, memInfo()).totalPhysical, 15 * kGiB);
}

TEST(LinuxMemoryTotals, OldKernelsWithoutMemAvailableUseFreeBuffersAndCached) {
    ProcMemInfo info = memInfo();
    info.memAvailable.reset();
    info.memFree = 5 * kGiB;
    info.buffers = kGiB;
    info.cached = 2 * kGiB;
    EXPECT_EQ(linuxMemoryTotals(std::nullopt, info).usedPhysical, 7 * kGiB);
}

TEST(LinuxMemoryTotals, GarbageMemInfoGivesZerosAndNeverWrapsAround) {
    EXPECT_EQ(linuxMemoryTotals(std::nullopt, ProcMemInfo{}).totalPhysical, 0u);
    EXPECT_EQ(linuxMemoryTotals(std::nullopt, ProcMemInfo{}).usedPhysical, 0u);
    ProcMemInfo odd;
    odd.memTotal = kGiB;
    odd.memAvailable = 2 * kGiB;
    odd.swapTotal = kGiB;
    odd.swapFree = 3 * kGiB;
    const LinuxMemoryTotals totals = linuxMemoryTotals(std::nullopt, odd);
    EXPECT_EQ(totals.usedPhysical, 0u);
    EXPECT_EQ(totals.usedSwap, 0u);
    ProcMemInfo swapWithoutFree;
    swapWithoutFree.swapTotal = kGiB;
    EXPECT_EQ(linuxMemoryTotals(std::nullopt, swapWithoutFree).usedSwap, 0u);
}

}  // namespace
}  // namespace tov
