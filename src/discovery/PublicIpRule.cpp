#include "discovery/PublicIpRule.h"

namespace tov {

bool needsPublicIpDiscovery(std::optional<std::string_view> currentLocalIp,
                            std::optional<std::string_view> previousLocalIp) {
    if (!currentLocalIp || currentLocalIp->empty()) return true;
    return currentLocalIp != previousLocalIp;
}

}  // namespace tov
