#pragma once

// The "memory" category on Linux: the memory devices of the firmware's tables.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxMemoryModules(SystemSource& source);

}  // namespace tov
