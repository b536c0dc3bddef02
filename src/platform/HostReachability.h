#pragma once

// The platform's answer to "could a connection to this host be made now", as flags. No
// traffic is sent to the host.

#include <cstdint>
#include <optional>

namespace tov {

constexpr std::uint32_t kReachabilityTransientConnection = 1;
constexpr std::uint32_t kReachabilityReachable = 2;
constexpr std::uint32_t kReachabilityConnectionRequired = 4;

// The flags for a host name; nothing when the platform could not judge (for instance the
// name does not resolve).
std::optional<std::uint32_t> reachabilityFlagsForHost(const char* hostName);

}  // namespace tov
