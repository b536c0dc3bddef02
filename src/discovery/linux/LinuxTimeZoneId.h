#pragma once

// The id of the machine's local time zone ("Europe/Berlin") on Linux.

#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

inline constexpr const char* kUtcZoneId = "UTC";

// The target of the /etc/localtime link after ".../zoneinfo/", else the text of
// /etc/timezone, else "UTC" (logged).
std::string linuxTimeZoneId(SystemSource& source);

// "Europe/Berlin" for "../usr/share/zoneinfo/Europe/Berlin" (the "posix/" and "right/"
// variants of the database included); nothing for a target outside a zoneinfo folder.
std::optional<std::string> zoneIdOfLocaltimeTarget(std::string_view target);

}  // namespace tov
