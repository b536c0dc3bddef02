#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "common/QVSLogger.h"
#include "platform/PosixFacts.h"

namespace tov {
namespace {

const char* familyName(int family) {
    if (family == AF_INET) return "inet";
    if (family == AF_INET6) return "inet6";
    return "other";
}

std::string numericAddress(const sockaddr* address) {
    char text[INET6_ADDRSTRLEN] = {};
    if (address->sa_family == AF_INET) {
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text, sizeof text);
    } else if (address->sa_family == AF_INET6) {
        inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, text, sizeof text);
    }
    return text;
}

}  // namespace

Value networkInterfacesFact(const std::string&) {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        QVSLogger::debug("The network interfaces cannot be listed: %s", std::strerror(errno));
        return Value();
    }
    ArrayRef interfaces = makeArray();
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_name == nullptr || entry->ifa_addr == nullptr) continue;
        DictionaryRef interface = makeDictionary();
        interface->set("name", entry->ifa_name);
        interface->set("family", familyName(entry->ifa_addr->sa_family));
        interface->set("address", numericAddress(entry->ifa_addr));
        interfaces->push_back(interface);
    }
    freeifaddrs(list);
    return interfaces;
}

}  // namespace tov
