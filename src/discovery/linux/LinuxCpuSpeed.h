#pragma once

// The processor's nominal clock in MHz, which stays put from one scan to the next (the
// current clock of a CPU moves all the time).

#include <cstdint>
#include <optional>
#include <string_view>

#include "discovery/SystemSource.h"
#include "discovery/linux/ProcCpuInfo.h"

namespace tov {

// The first that is known: cpufreq base_frequency ÷ 1000 of the CPU, the "@ 2.27GHz" of
// the model name, cpufreq cpuinfo_max_freq ÷ 1000, the "cpu MHz" of cpuinfo truncated;
// 0 when none is.
std::int64_t nominalCpuMegahertz(SystemSource& source, std::uint32_t cpu, const ProcCpuInfo& cpuInfo);

// 2270 for "Intel(R) Xeon(R) CPU L5640 @ 2.27GHz"; nothing without an "@ <n>GHz".
std::optional<std::int64_t> megahertzInModelName(std::string_view modelName);

}  // namespace tov
