#pragma once

// How much memory the running process and the machine have, as the kernel tells.

#include <cstdint>
#include <optional>

namespace tov {

// The resident size of the current process in bytes; nothing when the kernel cannot tell.
std::optional<std::uint64_t> residentBytesOfCurrentProcess();
// The machine's physical memory in bytes; 0 when unknown.
std::uint64_t physicalMemoryBytes();

}  // namespace tov
