#pragma once

// The kernel's CPU list form ("0-3,8,10-11"), as in /sys/devices/system/cpu/online.

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tov {

// CPU numbers at or above this are refused: no kernel counts that many.
inline constexpr std::uint32_t kCpuNumberLimit = 65536;

// The listed CPU numbers in the order written; an empty text gives none. Nothing when the
// text is not such a list, a range runs backwards, or a number reaches kCpuNumberLimit.
std::optional<std::vector<std::uint32_t>> parseCpuList(std::string_view text);

}  // namespace tov
