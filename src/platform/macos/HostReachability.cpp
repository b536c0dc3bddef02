#include "platform/HostReachability.h"

#include <SystemConfiguration/SystemConfiguration.h>

namespace tov {
namespace {

std::uint32_t portableFlags(SCNetworkReachabilityFlags flags) {
    std::uint32_t portable = 0;
    if (flags & kSCNetworkReachabilityFlagsTransientConnection) portable |= kReachabilityTransientConnection;
    if (flags & kSCNetworkReachabilityFlagsReachable) portable |= kReachabilityReachable;
    if (flags & kSCNetworkReachabilityFlagsConnectionRequired) portable |= kReachabilityConnectionRequired;
    return portable;
}

}  // namespace

std::optional<std::uint32_t> reachabilityFlagsForHost(const char* hostName) {
    if (hostName == nullptr || *hostName == '\0') return std::nullopt;
    SCNetworkReachabilityRef target = SCNetworkReachabilityCreateWithName(kCFAllocatorDefault, hostName);
    if (target == nullptr) return std::nullopt;
    SCNetworkReachabilityFlags flags = 0;
    const Boolean known = SCNetworkReachabilityGetFlags(target, &flags);
    CFRelease(target);
    if (!known) return std::nullopt;
    return portableFlags(flags);
}

}  // namespace tov
