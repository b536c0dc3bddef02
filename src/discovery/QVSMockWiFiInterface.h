#pragma once

// The Wi-Fi interface that answers the same network name for every adapter, so that the
// network-name path can be seen without a Wi-Fi network.

#include <memory>

#include "discovery/QVSWiFiInterface.h"

namespace tov {

class QVSMockWiFiInterface : public QVSWiFiInterface {
public:
    static constexpr const char* kMockSsid = "mock-ssid";

    static std::shared_ptr<QVSMockWiFiInterface> mockWiFiInterface();

    // Always "mock-ssid".
    std::string ssidWithMacAddress(const std::string& macAddress) override;
};

}  // namespace tov
