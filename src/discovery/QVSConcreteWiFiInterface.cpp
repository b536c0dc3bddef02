#include "discovery/QVSConcreteWiFiInterface.h"

#include <utility>

#include "common/TextUtils.h"

namespace tov {

std::shared_ptr<QVSConcreteWiFiInterface> QVSConcreteWiFiInterface::concreteWiFiInterface(
    WiFiInterfacesQuestion systemInterfaces) {
    return std::make_shared<QVSConcreteWiFiInterface>(std::move(systemInterfaces));
}

QVSConcreteWiFiInterface::QVSConcreteWiFiInterface(WiFiInterfacesQuestion systemInterfaces)
    : systemInterfaces_(std::move(systemInterfaces)) {}

std::string QVSConcreteWiFiInterface::ssidWithMacAddress(const std::string& macAddress) {
    if (macAddress.empty() || !systemInterfaces_) return "";
    for (const WiFiInterfaceState& interface : systemInterfaces_()) {
        if (equalsIgnoringCase(interface.hardwareAddress, macAddress)) return interface.ssid;
    }
    return "";
}

}  // namespace tov
