#include "platform/HostReachability.h"

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tov {
namespace {

class AddressList {
public:
    explicit AddressList(const char* hostName) {
        addrinfo hints{};
        hints.ai_family = AF_UNSPEC;
        hints.ai_socktype = SOCK_DGRAM;
        hints.ai_protocol = IPPROTO_UDP;
        hints.ai_flags = AI_NUMERICSERV;
        resolved_ = getaddrinfo(hostName, "443", &hints, &first_) == 0;
    }
    ~AddressList() {
        if (first_ != nullptr) freeaddrinfo(first_);
    }
    AddressList(const AddressList&) = delete;
    AddressList& operator=(const AddressList&) = delete;

    bool resolved() const { return resolved_; }
    const addrinfo* first() const { return first_; }

private:
    addrinfo* first_ = nullptr;
    bool resolved_ = false;
};

// Connecting a datagram socket only asks the kernel to pick a route and a source address:
// nothing is sent. It fails when no route leads to the address.
bool hasRouteTo(const addrinfo& address) {
    const int descriptor = socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC, address.ai_protocol);
    if (descriptor == -1) return false;
    const bool connected = connect(descriptor, address.ai_addr, address.ai_addrlen) == 0;
    close(descriptor);
    return connected;
}

}  // namespace

std::optional<std::uint32_t> reachabilityFlagsForHost(const char* hostName) {
    if (hostName == nullptr || *hostName == '\0') return std::nullopt;
    const AddressList addresses(hostName);
    if (!addresses.resolved()) return std::nullopt;
    for (const addrinfo* address = addresses.first(); address != nullptr; address = address->ai_next) {
        if (hasRouteTo(*address)) return kReachabilityReachable;
    }
    return 0u;
}

}  // namespace tov
