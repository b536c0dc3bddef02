#pragma once

// The four memory amounts of the "sysctl" section on Linux, in bytes: memory installed
// (the firmware's memory devices, else what the kernel manages), memory in use, and swap.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "discovery/linux/ProcMemInfo.h"

namespace tov {

struct LinuxMemoryTotals {
    std::uint64_t totalPhysical = 0;
    std::uint64_t usedPhysical = 0;
    std::uint64_t totalSwap = 0;
    std::uint64_t usedSwap = 0;
};

// The sum of the installed memory devices' sizes of the raw SMBIOS type-17 entries;
// nothing when no entry decodes to an installed device or one of them has no known size.
std::optional<std::uint64_t> installedMemoryBytes(const std::vector<std::string>& memoryDeviceEntries);

// total = installed, else MemTotal; used = MemTotal - MemAvailable (MemFree, Buffers and
// Cached stand in for MemAvailable on kernels without it); swap used = SwapTotal -
// SwapFree. A used amount whose free part is unknown is 0, and none goes below 0.
LinuxMemoryTotals linuxMemoryTotals(std::optional<std::uint64_t> installed, const ProcMemInfo& memInfo);

}  // namespace tov
