#pragma once

// The system's Wi-Fi interfaces: an adapter's network name is that of the Wi-Fi interface
// whose hardware address equals the adapter's MAC address (compared without regard to
// case); every other adapter has none. The platform's rules tell which Wi-Fi interfaces
// the system has, asked anew for every adapter.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "discovery/QVSWiFiInterface.h"

namespace tov {

// One Wi-Fi interface of the system as the platform tells it.
struct WiFiInterfaceState {
    std::string hardwareAddress;
    // "" when not associated.
    std::string ssid;
};

using WiFiInterfacesQuestion = std::function<std::vector<WiFiInterfaceState>()>;

class QVSConcreteWiFiInterface : public QVSWiFiInterface {
public:
    static std::shared_ptr<QVSConcreteWiFiInterface> concreteWiFiInterface(WiFiInterfacesQuestion systemInterfaces);

    explicit QVSConcreteWiFiInterface(WiFiInterfacesQuestion systemInterfaces);

    std::string ssidWithMacAddress(const std::string& macAddress) override;

private:
    WiFiInterfacesQuestion systemInterfaces_;
};

}  // namespace tov
