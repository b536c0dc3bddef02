#pragma once

// The "batteries" category on Linux: the machine's own batteries among the power supplies.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxBatteries(SystemSource& source);

}  // namespace tov
