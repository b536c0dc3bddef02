#pragma once

#include <optional>
#include <string_view>

namespace tov {

// The public address is looked up again only when the local one is missing or has
// changed since it was saved (exact text comparison).
bool needsPublicIpDiscovery(std::optional<std::string_view> currentLocalIp,
                            std::optional<std::string_view> previousLocalIp);

}  // namespace tov
