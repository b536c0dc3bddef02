#pragma once

// Facts about the running process that each platform reads its own way.

#include <string>

namespace tov {

// The short name the process was started under (no folder), as the system shows it.
std::string currentProcessName();

}  // namespace tov
