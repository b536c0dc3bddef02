#include "model/QVIOKitDisk.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";
constexpr std::string_view kSerialNoKey = "serialNumber";
constexpr std::string_view kRemovableKey = "removable";

}  // namespace

std::shared_ptr<QVIOKitDisk> QVIOKitDisk::ioKitDisk() { return std::make_shared<QVIOKitDisk>(); }

std::optional<std::string> QVIOKitDisk::name() const { return stringForKey(kNameKey); }
void QVIOKitDisk::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

std::optional<std::string> QVIOKitDisk::serialNo() const { return stringForKey(kSerialNoKey); }
void QVIOKitDisk::setSerialNo(std::optional<std::string_view> serialNo) { setStringValue(serialNo, kSerialNoKey); }

bool QVIOKitDisk::isRemovable() const { return valueForKey(kRemovableKey).toBool(); }
void QVIOKitDisk::setRemovable(bool removable) { setValue(kRemovableKey, Value(removable)); }

bool QVIOKitDisk::isEqual(const QVSystemInfo& other) const {
    if (!otherIsOfMyKind(other)) return false;
    const auto& disk = static_cast<const QVIOKitDisk&>(other);
    return stringEquals(other, kNameKey) && stringEquals(other, kSerialNoKey) &&
           isRemovable() == disk.isRemovable();
}

}  // namespace tov
