#include "discovery/QVSWiFiInterfaceFactory.h"

#include <utility>

#include "discovery/QVSMockWiFiInterface.h"

namespace tov {

std::shared_ptr<QVSWiFiInterface> QVSWiFiInterfaceFactory::wiFiInterface(bool mock,
                                                                         WiFiInterfacesQuestion systemInterfaces) {
    if (mock) return QVSMockWiFiInterface::mockWiFiInterface();
    return QVSConcreteWiFiInterface::concreteWiFiInterface(std::move(systemInterfaces));
}

}  // namespace tov
