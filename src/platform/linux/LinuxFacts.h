#pragma once

// The native facts that only Linux answers this way (SystemFacts.h gives their shapes).

#include <string>

#include "model/Value.h"

namespace tov {

// statx birth time of the path in key.
Value birthTimeFact(const std::string& path);
// The active user of the logind seat named in key.
Value consoleUserFact(const std::string& seat);

}  // namespace tov
