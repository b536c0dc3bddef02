#pragma once

// The Wi-Fi interface of a Mac as the network-adapter category asks it: the system's
// default Wi-Fi interface, its hardware address and network name.

#include <vector>

#include "discovery/QVSConcreteWiFiInterface.h"
#include "discovery/SystemSource.h"

namespace tov {

// The default Wi-Fi interface (network name "" when not associated or hidden from the
// daemon); none when the machine has no Wi-Fi interface or tells no hardware address.
std::vector<WiFiInterfaceState> macWiFiInterfaces(SystemSource& source);

}  // namespace tov
