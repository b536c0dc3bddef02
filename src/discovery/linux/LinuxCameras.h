#pragma once

// The "camera" category on Linux: video4linux capture devices, one per device.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxCameras(SystemSource& source);

}  // namespace tov
