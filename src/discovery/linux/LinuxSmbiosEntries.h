#pragma once

// The raw SMBIOS structures the kernel exposes under /sys/firmware/dmi/entries, one
// folder "T-N" per structure of type T, its bytes in "raw".

#include <cstdint>
#include <string>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

inline constexpr const char* kSmbiosEntriesFolder = "/sys/firmware/dmi/entries";
// An SMBIOS structure is at most 255 bytes of fields and 255 strings; this leaves room.
inline constexpr std::uint64_t kSmbiosEntryReadLimit = 64 * 1024;
// More structures of one type than any firmware lists are not read.
inline constexpr std::size_t kMaximumSmbiosEntriesOfType = 1024;

// The raw bytes of every readable structure of the type, in the order N = 0, 1, 2, ...;
// none when the firmware tables are not exposed (no DMI, as on most Arm boards).
std::vector<std::string> smbiosEntriesOfType(SystemSource& source, std::uint8_t type);

}  // namespace tov
