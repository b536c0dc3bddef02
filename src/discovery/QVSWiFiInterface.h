#pragma once

// The Wi-Fi interface family: one operation, the current network name of the adapter
// with a given hardware address. QVSWiFiInterfaceFactory hands out the concrete interface
// (the system's Wi-Fi interfaces) or the mock.

#include <string>

namespace tov {

class QVSWiFiInterface {
public:
    virtual ~QVSWiFiInterface() = default;

    // The network name the adapter with this MAC address is associated with; "" when it
    // is none of the system's Wi-Fi interfaces or is not associated.
    virtual std::string ssidWithMacAddress(const std::string& macAddress) = 0;
};

}  // namespace tov
