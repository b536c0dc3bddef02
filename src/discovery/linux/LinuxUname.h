#pragma once

// The kernel's own names (uname): "sysname", "nodename", "release", "version", "machine".

#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

// The named field as printable text; nothing (with a debug line) when the source cannot tell.
std::optional<std::string> unameField(SystemSource& source, std::string_view field);

}  // namespace tov
