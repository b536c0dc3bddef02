#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVSystemInfo.h"

namespace tov {

// A network adapter, named by its MAC address. A system fact, not a piece of hardware.
class QVIOKitNetwork : public QVRecordKind<QVIOKitNetwork, QVSystemInfo> {
public:
    static constexpr const char* kClassName = "QVIOKitNetwork";

    static std::shared_ptr<QVIOKitNetwork> ioKitNetwork();

    // Stored under "adapterName".
    std::optional<std::string> adapter() const;
    void setAdapter(std::optional<std::string_view> adapter);
    // Stored under "manufacturer".
    std::optional<std::string> vendor() const;
    void setVendor(std::optional<std::string_view> vendor);
    std::optional<std::string> macAddress() const;
    void setMacAddress(std::optional<std::string_view> macAddress);
    // Stored under "networkSpeed".
    std::uint64_t speed() const;
    void setSpeed(std::uint64_t speed);
    // The Wi-Fi network name.
    std::optional<std::string> ssid() const;
    void setSsid(std::optional<std::string_view> ssid);

    std::optional<std::string> identifier() const override { return macAddress(); }
    // Adapter, vendor, MAC address, then network name; the speed is ignored.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
