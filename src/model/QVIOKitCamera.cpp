#include "model/QVIOKitCamera.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";
constexpr std::string_view kModelKey = "model";
constexpr std::string_view kUuidKey = "uuid";

bool isNonEmpty(const std::optional<std::string>& text) { return text && !text->empty(); }

}  // namespace

std::shared_ptr<QVIOKitCamera> QVIOKitCamera::ioKitCamera() { return std::make_shared<QVIOKitCamera>(); }

std::optional<std::string> QVIOKitCamera::name() const { return stringForKey(kNameKey); }
void QVIOKitCamera::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

std::optional<std::string> QVIOKitCamera::model() const { return stringForKey(kModelKey); }
void QVIOKitCamera::setModel(std::optional<std::string_view> model) { setStringValue(model, kModelKey); }

std::optional<std::string> QVIOKitCamera::uuid() const { return stringForKey(kUuidKey); }
void QVIOKitCamera::setUuid(std::optional<std::string_view> uuid) { setStringValue(uuid, kUuidKey); }

bool QVIOKitCamera::isEqual(const QVSystemInfo& other) const {
    if (!otherIsOfMyKind(other)) return false;
    const std::optional<std::string> mine = uuid();
    const std::optional<std::string> theirs = static_cast<const QVIOKitCamera&>(other).uuid();
    return isNonEmpty(mine) && isNonEmpty(theirs) && *mine == *theirs;
}

}  // namespace tov
