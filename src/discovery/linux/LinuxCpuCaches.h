#pragma once

// The level-2 and level-3 cache sizes of a CPU in KB, as text, from
// /sys/devices/system/cpu/cpuN/cache/index*/{level,size}.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

struct LinuxCpuCaches {
    // "1280" for a 1280K cache; nothing when the CPU has no cache of that level.
    std::optional<std::string> level2;
    std::optional<std::string> level3;
};

// The first cache of each level in index order.
LinuxCpuCaches linuxCpuCaches(SystemSource& source, std::uint32_t cpu);

// "1024K" gives "1024", "32M" gives "32768"; nothing for any other form.
std::optional<std::string> kilobytesOfCacheSize(std::string_view size);

}  // namespace tov
