#pragma once

// The memory totals of /proc/meminfo ("MemTotal:  16318404 kB" lines), in bytes.

#include <cstdint>
#include <optional>
#include <string_view>

namespace tov {

struct ProcMemInfo {
    std::optional<std::uint64_t> memTotal;
    std::optional<std::uint64_t> memAvailable;
    std::optional<std::uint64_t> memFree;
    std::optional<std::uint64_t> buffers;
    std::optional<std::uint64_t> cached;
    std::optional<std::uint64_t> swapTotal;
    std::optional<std::uint64_t> swapFree;
};

// Lines that are not "Name: number [kB]", or whose number does not fit in 64 bits once in
// bytes, are left out; a later line of the same name replaces an earlier one.
ProcMemInfo parseProcMemInfo(std::string_view text);

}  // namespace tov
