#pragma once

// The "memory" category on Linux: one record per memory device of the firmware's SMBIOS
// tables (type 17), empty slots included, in the texts the system profiler writes on a
// Mac: name "<bank locator>/<locator>", size "16 GB", speed "3200 MHz", status "ok" or
// "empty", and "Empty" for what an empty slot cannot tell.

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxMemoryModules(SystemSource& source);

}  // namespace tov
