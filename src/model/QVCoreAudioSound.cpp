#include "model/QVCoreAudioSound.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";
constexpr std::string_view kManufacturerKey = "manufacturer";

}  // namespace

std::shared_ptr<QVCoreAudioSound> QVCoreAudioSound::coreAudioSound() { return std::make_shared<QVCoreAudioSound>(); }

std::optional<std::string> QVCoreAudioSound::name() const { return stringForKey(kNameKey); }
void QVCoreAudioSound::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

std::optional<std::string> QVCoreAudioSound::manufacturer() const { return stringForKey(kManufacturerKey); }
void QVCoreAudioSound::setManufacturer(std::optional<std::string_view> manufacturer) {
    setStringValue(manufacturer, kManufacturerKey);
}

bool QVCoreAudioSound::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kNameKey) && stringEquals(other, kManufacturerKey);
}

}  // namespace tov
