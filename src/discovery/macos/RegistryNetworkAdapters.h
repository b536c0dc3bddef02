#pragma once

// The Ethernet controllers of a Mac's device registry (Wi-Fi included) as network
// adapters: vendor, adapter name, MAC address, link speed and, for the system's Wi-Fi
// interface, its network name. Every controller counts; equal records once.

#include "discovery/QVSWiFiInterface.h"
#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

// QVIOKitNetwork records of the "IOEthernetController" services; each adapter's network
// name is what wiFiInterface answers for its MAC address.
ArrayRef networkAdaptersFromRegistry(SystemSource& source, QVSWiFiInterface& wiFiInterface);

}  // namespace tov
