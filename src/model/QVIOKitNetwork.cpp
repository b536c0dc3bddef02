#include "model/QVIOKitNetwork.h"

namespace tov {
namespace {

constexpr std::string_view kAdapterKey = "adapterName";
constexpr std::string_view kVendorKey = "manufacturer";
constexpr std::string_view kMacAddressKey = "macAddress";
constexpr std::string_view kSpeedKey = "networkSpeed";
constexpr std::string_view kSsidKey = "ssid";

}  // namespace

std::shared_ptr<QVIOKitNetwork> QVIOKitNetwork::ioKitNetwork() { return std::make_shared<QVIOKitNetwork>(); }

std::optional<std::string> QVIOKitNetwork::adapter() const { return stringForKey(kAdapterKey); }
void QVIOKitNetwork::setAdapter(std::optional<std::string_view> adapter) { setStringValue(adapter, kAdapterKey); }

std::optional<std::string> QVIOKitNetwork::vendor() const { return stringForKey(kVendorKey); }
void QVIOKitNetwork::setVendor(std::optional<std::string_view> vendor) { setStringValue(vendor, kVendorKey); }

std::optional<std::string> QVIOKitNetwork::macAddress() const { return stringForKey(kMacAddressKey); }
void QVIOKitNetwork::setMacAddress(std::optional<std::string_view> macAddress) {
    setStringValue(macAddress, kMacAddressKey);
}

std::uint64_t QVIOKitNetwork::speed() const { return valueForKey(kSpeedKey).toUInt64(); }
void QVIOKitNetwork::setSpeed(std::uint64_t speed) { setValue(kSpeedKey, Value(speed)); }

std::optional<std::string> QVIOKitNetwork::ssid() const { return stringForKey(kSsidKey); }
void QVIOKitNetwork::setSsid(std::optional<std::string_view> ssid) { setStringValue(ssid, kSsidKey); }

bool QVIOKitNetwork::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kAdapterKey) && stringEquals(other, kVendorKey) &&
           stringEquals(other, kMacAddressKey) && stringEquals(other, kSsidKey);
}

}  // namespace tov
