#include "model/QVIOKitPointingDevice.h"

namespace tov {
namespace {

constexpr std::string_view kDescriptionKey = "description";
constexpr std::string_view kManufacturerKey = "manufacturer";

}  // namespace

std::shared_ptr<QVIOKitPointingDevice> QVIOKitPointingDevice::ioKitPointingDevice() {
    return std::make_shared<QVIOKitPointingDevice>();
}

std::optional<std::string> QVIOKitPointingDevice::getDescription() const { return stringForKey(kDescriptionKey); }
void QVIOKitPointingDevice::setDescription(std::optional<std::string_view> description) {
    setStringValue(description, kDescriptionKey);
}

std::optional<std::string> QVIOKitPointingDevice::manufacturer() const { return stringForKey(kManufacturerKey); }
void QVIOKitPointingDevice::setManufacturer(std::optional<std::string_view> manufacturer) {
    setStringValue(manufacturer, kManufacturerKey);
}

bool QVIOKitPointingDevice::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kDescriptionKey) && stringEquals(other, kManufacturerKey);
}

}  // namespace tov
