#include "model/QVIOKitKeyboard.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";

}  // namespace

std::shared_ptr<QVIOKitKeyboard> QVIOKitKeyboard::ioKitKeyboard() { return std::make_shared<QVIOKitKeyboard>(); }

std::optional<std::string> QVIOKitKeyboard::name() const { return stringForKey(kNameKey); }
void QVIOKitKeyboard::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

bool QVIOKitKeyboard::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kNameKey);
}

}  // namespace tov
