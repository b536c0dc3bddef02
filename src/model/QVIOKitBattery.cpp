#include "model/QVIOKitBattery.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";
constexpr std::string_view kSerialNoKey = "serialNumber";
constexpr std::string_view kCapacityKey = "capacity";
constexpr std::string_view kEstimatedRunTimeKey = "estimatedChargeRemaining";

}  // namespace

std::shared_ptr<QVIOKitBattery> QVIOKitBattery::ioKitBattery() { return std::make_shared<QVIOKitBattery>(); }

std::optional<std::string> QVIOKitBattery::name() const { return stringForKey(kNameKey); }
void QVIOKitBattery::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

std::optional<std::string> QVIOKitBattery::serialNo() const { return stringForKey(kSerialNoKey); }
void QVIOKitBattery::setSerialNo(std::optional<std::string_view> serialNo) { setStringValue(serialNo, kSerialNoKey); }

float QVIOKitBattery::capacity() const { return static_cast<float>(valueForKey(kCapacityKey).toDouble()); }
void QVIOKitBattery::setCapacity(float capacity) { setValue(kCapacityKey, Value(clampedInteger<std::int32_t>(capacity))); }

std::int64_t QVIOKitBattery::estimatedRunTime() const { return valueForKey(kEstimatedRunTimeKey).toInt64(); }
void QVIOKitBattery::setEstimatedRunTime(std::int64_t estimatedRunTime) {
    setValue(kEstimatedRunTimeKey, Value(estimatedRunTime));
}

bool QVIOKitBattery::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kNameKey) && stringEquals(other, kSerialNoKey);
}

}  // namespace tov
