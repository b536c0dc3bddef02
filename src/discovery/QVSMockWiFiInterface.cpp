#include "discovery/QVSMockWiFiInterface.h"

namespace tov {

std::shared_ptr<QVSMockWiFiInterface> QVSMockWiFiInterface::mockWiFiInterface() {
    return std::make_shared<QVSMockWiFiInterface>();
}

std::string QVSMockWiFiInterface::ssidWithMacAddress(const std::string&) { return kMockSsid; }

}  // namespace tov
