#pragma once

// The "networkAdapters" category on Linux: network interfaces that have a device.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxNetworkAdapters(SystemSource& source, HardwareIds& hardwareIds);

}  // namespace tov
