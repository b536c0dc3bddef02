#include "platform/ProcessMemory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace tov {
namespace {

// The value in kB of a "Name:   123 kB" line of a /proc file; 0 when there is none.
std::uint64_t kilobytesOf(const std::string& path, const std::string& name) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        if (line.rfind(name + ":", 0) == 0) return std::strtoull(line.c_str() + name.size() + 1, nullptr, 10);
    }
    return 0;
}

TEST(ProcessMemoryLinux, ResidentSizeIsCloseToTheKernelsStatusLine) {
    const std::uint64_t status = kilobytesOf("/proc/self/status", "VmRSS") * 1024;
    const std::optional<std::uint64_t> resident = residentBytesOfCurrentProcess();
    ASSERT_TRUE(resident.has_value());
    EXPECT_GT(*resident, 0u);
    ASSERT_GT(status, 0u);
    // Both are read at slightly different moments; the process barely changes in between.
    const std::uint64_t difference = *resident > status ? *resident - status : status - *resident;
    EXPECT_LT(difference, status / 10 + 4 * 1024 * 1024) << *resident << " against " << status;
}

TEST(ProcessMemoryLinux, ResidentSizeGrowsWithTouchedMemory) {
    const std::uint64_t before = residentBytesOfCurrentProcess().value_or(0);
    constexpr std::size_t kTouched = 64 * 1024 * 1024;
    // Written through a volatile pointer so that the stores are not optimised away.
    volatile char* block = static_cast<char*>(std::malloc(kTouched));
    ASSERT_NE(block, nullptr);
    for (std::size_t offset = 0; offset < kTouched; offset += 4096) block[offset] = 1;
    const std::uint64_t after = residentBytesOfCurrentProcess().value_or(0);
    std::free(const_cast<char*>(block));
    EXPECT_GT(after, before + kTouched / 2);
}

TEST(ProcessMemoryLinux, PhysicalMemoryIsTheKernelsMemTotal) {
    EXPECT_EQ(physicalMemoryBytes(), kilobytesOf("/proc/meminfo", "MemTotal") * 1024);
}

}  // namespace
}  // namespace tov
