#include <net/if.h>

#include <algorithm>

#include "platform/linux/LinuxFacts.h"

namespace tov {

// The kernel's own rule for interface names (dev_valid_name).
bool isValidInterfaceName(std::string_view name) {
    if (name.empty() || name.size() >= IFNAMSIZ || name == "." || name == "..") return false;
    return std::none_of(name.begin(), name.end(), [](char c) {
        return c == '/' || c == ':' || c == '\0' || c == ' ' || (c >= '\t' && c <= '\r');
    });
}

}  // namespace tov
