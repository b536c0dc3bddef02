#include "discovery/macos/RegistryProperty.h"

namespace tov {

std::optional<std::string> stringProperty(const Dictionary& properties, std::string_view key) {
    const Value* value = properties.find(key);
    if (!value || !value->string()) return std::nullopt;
    return *value->string();
}

DictionaryRef dictionaryProperty(const Dictionary& properties, std::string_view key) {
    return properties.get(key).dictionary();
}

}  // namespace tov
