#pragma once

// The "networkAdapters" category on Linux: network interfaces that have a device. The
// manufacturer and model are the PCI or USB names of the device (none for a device on no
// such bus), the class is the driver, the MAC address the permanent one in upper case, the
// speed the link speed in bits per second (0 when down or unknown), the network name what
// the Wi-Fi interface tells for that MAC address.

#include "discovery/QVSWiFiInterface.h"
#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

// With the concrete Wi-Fi interface over the machine's Wi-Fi interfaces.
ArrayRef discoverLinuxNetworkAdapters(SystemSource& source, HardwareIds& hardwareIds);

// With the given Wi-Fi interface.
ArrayRef discoverLinuxNetworkAdapters(SystemSource& source, HardwareIds& hardwareIds, QVSWiFiInterface& wiFiInterface);

}  // namespace tov
