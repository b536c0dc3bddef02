#pragma once

// The "disks" category on Linux: the real drives among the block devices.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxDisks(SystemSource& source);

}  // namespace tov
