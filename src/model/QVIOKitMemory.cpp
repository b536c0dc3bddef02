#include "model/QVIOKitMemory.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";
constexpr std::string_view kSerialNumberKey = "serialnumber";
constexpr std::string_view kPartNumberKey = "partnumber";
constexpr std::string_view kSizeKey = "size";
constexpr std::string_view kSpeedKey = "speed";
constexpr std::string_view kStatusKey = "status";
constexpr std::string_view kTypeKey = "type";
constexpr std::string_view kManufacturerKey = "manufacturer";

bool isNonEmpty(const std::optional<std::string>& text) { return text && !text->empty(); }

}  // namespace

std::shared_ptr<QVIOKitMemory> QVIOKitMemory::ioKitMemory() { return std::make_shared<QVIOKitMemory>(); }

std::optional<std::string> QVIOKitMemory::name() const { return stringForKey(kNameKey); }
void QVIOKitMemory::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

std::optional<std::string> QVIOKitMemory::serialNumber() const { return stringForKey(kSerialNumberKey); }
void QVIOKitMemory::setSerialNumber(std::optional<std::string_view> serialNumber) {
    setStringValue(serialNumber, kSerialNumberKey);
}

std::optional<std::string> QVIOKitMemory::partNumber() const { return stringForKey(kPartNumberKey); }
void QVIOKitMemory::setPartNumber(std::optional<std::string_view> partNumber) {
    setStringValue(partNumber, kPartNumberKey);
}

std::optional<std::string> QVIOKitMemory::size() const { return stringForKey(kSizeKey); }
void QVIOKitMemory::setSize(std::optional<std::string_view> size) { setStringValue(size, kSizeKey); }

std::optional<std::string> QVIOKitMemory::speed() const { return stringForKey(kSpeedKey); }
void QVIOKitMemory::setSpeed(std::optional<std::string_view> speed) { setStringValue(speed, kSpeedKey); }

std::optional<std::string> QVIOKitMemory::status() const { return stringForKey(kStatusKey); }
void QVIOKitMemory::setStatus(std::optional<std::string_view> status) { setStringValue(status, kStatusKey); }

std::optional<std::string> QVIOKitMemory::type() const { return stringForKey(kTypeKey); }
void QVIOKitMemory::setType(std::optional<std::string_view> type) { setStringValue(type, kTypeKey); }

std::optional<std::string> QVIOKitMemory::manufacturer() const { return stringForKey(kManufacturerKey); }
void QVIOKitMemory::setManufacturer(std::optional<std::string_view> manufacturer) {
    setStringValue(manufacturer, kManufacturerKey);
}

bool QVIOKitMemory::isEqual(const QVSystemInfo& other) const {
    if (!otherIsOfMyKind(other)) return false;
    const std::optional<std::string> mine = name();
    const std::optional<std::string> theirs = static_cast<const QVIOKitMemory&>(other).name();
    return isNonEmpty(mine) && isNonEmpty(theirs) && *mine == *theirs;
}

}  // namespace tov
