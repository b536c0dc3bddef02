#pragma once

#include <cstdint>
#include <string_view>

namespace tov {

// True when a connection to the host could be made now, judged without sending it any
// traffic. hostName is a host name or address, or a URL whose host is then judged. A
// null or empty name, or one that does not resolve, gives false.
bool IsHostReachable(const char* hostName);

// The decision on the platform's flags: reachable, unless the connection is both
// transient and still to be established.
bool reachabilityFlagsAllowConnection(std::uint32_t flags);

// The host part of a URL ("scheme://user@host:port/path" gives host, "[::1]" gives ::1);
// text without "://" is returned as it stands.
std::string_view hostOfUrlOrHostName(std::string_view text);

}  // namespace tov
