#pragma once

// The batteries of a Mac: one per power-source description, with the platform's own
// units for capacity and run time. A machine without batteries has none.

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

// QVIOKitBattery records of the power sources' descriptions; equal records once.
ArrayRef batteriesFromPowerSources(SystemSource& source);

}  // namespace tov
