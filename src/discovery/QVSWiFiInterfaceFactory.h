#pragma once

// Hands out the Wi-Fi interface the network-adapter category asks its network names of.

#include <memory>

#include "discovery/QVSConcreteWiFiInterface.h"
#include "discovery/QVSWiFiInterface.h"

namespace tov {

class QVSWiFiInterfaceFactory {
public:
    // The mock when mock is true, else the concrete interface over the system's Wi-Fi
    // interfaces as systemInterfaces tells them.
    static std::shared_ptr<QVSWiFiInterface> wiFiInterface(bool mock, WiFiInterfacesQuestion systemInterfaces);
};

}  // namespace tov
