#pragma once

// The user at the machine's console: the user of the active session of seat0 (logind).
// A machine without seat0 (a server, a virtual machine) has no console.

#include <string>

#include "discovery/SystemSource.h"

namespace tov {

inline constexpr const char* kConsoleSeat = "seat0";

// The user name; "" when there is no seat0, no active session on it, or the source cannot tell.
std::string linuxConsoleUser(SystemSource& source);

}  // namespace tov
