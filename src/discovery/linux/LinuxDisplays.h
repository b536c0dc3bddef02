#pragma once

// The "displays" category on Linux: display controllers and the monitors on their connectors.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxDisplays(SystemSource& source, HardwareIds& hardwareIds);

}  // namespace tov
