#pragma once

// The Wi-Fi interfaces of a Linux machine with their hardware addresses and the network
// each is associated with (the wifiNetwork fact): what the concrete Wi-Fi interface asks.

#include <vector>

#include "discovery/QVSConcreteWiFiInterface.h"
#include "discovery/SystemSource.h"

namespace tov {

std::vector<WiFiInterfaceState> linuxWiFiInterfaces(SystemSource& source);

}  // namespace tov
