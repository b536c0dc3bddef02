#pragma once

// How many CPUs the kernel runs and on how many physical cores they sit, from
// /sys/devices/system/cpu. Hybrid processors mix cores of two threads and of one, and
// their core ids have gaps, so cores are counted as distinct (package, core) pairs.

#include <cstdint>
#include <vector>

#include "discovery/SystemSource.h"
#include "discovery/linux/ProcCpuInfo.h"

namespace tov {

class LinuxCpuTopology {
public:
    static constexpr const char* kCpuFolder = "/sys/devices/system/cpu";

    // Reads the online CPUs and their cores; cpuInfo answers for the cores when sysfs
    // has no topology.
    static LinuxCpuTopology read(SystemSource& source, const ProcCpuInfo& cpuInfo);

    // The online CPUs in the kernel's order: the online list, else every cpuN folder.
    const std::vector<std::uint32_t>& onlineCpus() const { return onlineCpus_; }
    std::uint64_t logicalCores() const { return onlineCpus_.size(); }
    // 0 when neither sysfs nor cpuinfo tell where the CPUs sit.
    std::uint64_t physicalCores() const { return physicalCores_; }

private:
    std::vector<std::uint32_t> onlineCpus_;
    std::uint64_t physicalCores_ = 0;
};

}  // namespace tov
