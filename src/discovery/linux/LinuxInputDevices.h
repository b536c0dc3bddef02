#pragma once

// The "keyboards" and "pointingDevices" categories on Linux: input devices by their capabilities.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxKeyboards(SystemSource& source);
ArrayRef discoverLinuxPointingDevices(SystemSource& source);

}  // namespace tov
