#pragma once

// The key of the registry fact: a service class name ("IOBlockStorageDevice"), or a class
// name followed by a HID usage page and usage ("IOHIDDevice 1 6"), blank-separated. The
// key comes from the discoverers or from a capture folder, so it is checked before it
// reaches the registry.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

struct RegistryMatchingKey {
    std::string className;
    // Both present or both absent.
    std::optional<std::int32_t> usagePage;
    std::optional<std::int32_t> usage;
};

// The matching of key; nothing when the class name is empty, longer than the registry
// takes (127 bytes) or holds anything but ASCII letters, digits and "_", or when the
// usages are not two decimal numbers from 0 to 2147483647.
std::optional<RegistryMatchingKey> parseRegistryMatchingKey(std::string_view key);

}  // namespace tov
