#include "common/NetworkUtils.h"

#include <optional>
#include <string>

#include "platform/HostReachability.h"

namespace tov {
namespace {

std::string_view withoutPort(std::string_view authority) {
    if (!authority.empty() && authority.front() == '[') {
        const std::size_t close = authority.find(']');
        return close == std::string_view::npos ? authority.substr(1) : authority.substr(1, close - 1);
    }
    return authority.substr(0, authority.find(':'));
}

}  // namespace

std::string_view hostOfUrlOrHostName(std::string_view text) {
    const std::size_t schemeEnd = text.find("://");
    if (schemeEnd == std::string_view::npos) return text;
    std::string_view authority = text.substr(schemeEnd + 3);
    authority = authority.substr(0, authority.find_first_of("/?#"));
    const std::size_t userEnd = authority.rfind('@');
    if (userEnd != std::string_view::npos) authority.remove_prefix(userEnd + 1);
    return withoutPort(authority);
}

bool reachabilityFlagsAllowConnection(std::uint32_t flags) {
    if (!(flags & kReachabilityReachable)) return false;
    const std::uint32_t transientAndRequired = kReachabilityTransientConnection | kReachabilityConnectionRequired;
    return (flags & transientAndRequired) != transientAndRequired;
}

bool IsHostReachable(const char* hostName) {
    if (hostName == nullptr) return false;
    const std::string host(hostOfUrlOrHostName(hostName));
    if (host.empty()) return false;
    const std::optional<std::uint32_t> flags = reachabilityFlagsForHost(host.c_str());
    return flags && reachabilityFlagsAllowConnection(*flags);
}

}  // namespace tov
