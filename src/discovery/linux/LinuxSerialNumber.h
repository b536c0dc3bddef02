#pragma once

// The machine's serial number as the firmware (DMI) gives it on Linux.

#include <optional>
#include <string>

#include "discovery/SystemSource.h"

namespace tov {

// The trimmed product serial; nothing when it is missing, empty or one of the
// placeholders firmware writes when nobody set it.
std::optional<std::string> linuxMachineSerialNumber(SystemSource& source);

}  // namespace tov
