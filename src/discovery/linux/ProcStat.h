#pragma once

// The kernel's statistics (/proc/stat): lines of a name and numbers, among them
//   btime 1700000000
// the boot time in seconds since 1970-01-01 UTC.

#include <cstdint>
#include <optional>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

class ProcStat {
public:
    static constexpr const char* kPath = "/proc/stat";
    // Machines with many processors and interrupts have long lines.
    static constexpr std::uint64_t kReadLimit = 8 * 1024 * 1024;

    // The seconds of the "btime" line; nothing when there is none or it is no whole
    // number of seconds between 1970 and the end of the year 9999.
    static std::optional<std::int64_t> bootTime(std::string_view text);
    // The boot time as the source gives it; nothing (with a debug line) when unknown.
    static std::optional<std::int64_t> readBootTime(SystemSource& source);
};

}  // namespace tov
