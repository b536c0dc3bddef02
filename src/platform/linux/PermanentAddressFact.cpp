#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "common/FileDescriptor.h"
#include "common/QVSLogger.h"
#include "platform/linux/LinuxFacts.h"

namespace tov {
namespace {

// Longer than any link-layer address the kernel keeps (MAX_ADDR_LEN is 32).
constexpr std::size_t kAddressRoom = 32;

// The request's header with room for the address after it (its data member is open-ended).
struct alignas(ethtool_perm_addr) PermanentAddressRequest {
    unsigned char bytes[sizeof(ethtool_perm_addr) + kAddressRoom] = {};

    ethtool_perm_addr* header() { return reinterpret_cast<ethtool_perm_addr*>(bytes); }
    const unsigned char* address() const { return bytes + sizeof(ethtool_perm_addr); }
};

std::string addressText(const unsigned char* bytes, std::size_t length) {
    std::string text;
    for (std::size_t index = 0; index < length; ++index) {
        char pair[4];
        std::snprintf(pair, sizeof pair, "%s%02x", index == 0 ? "" : ":", bytes[index]);
        text += pair;
    }
    return text;
}

}  // namespace

Value permanentAddressFact(const std::string& interfaceName) {
    if (!isValidInterfaceName(interfaceName)) {
        QVSLogger::debug("No permanent address is asked for \"%s\": it is no interface name.", interfaceName.c_str());
        return Value();
    }
    const FileDescriptor socketDescriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socketDescriptor.isOpen()) {
        QVSLogger::debug("No socket for the ethtool requests: %s", std::strerror(errno));
        return Value();
    }
    PermanentAddressRequest request;
    request.header()->cmd = ETHTOOL_GPERMADDR;
    request.header()->size = kAddressRoom;
    ifreq interface {};
    std::memcpy(interface.ifr_name, interfaceName.data(), interfaceName.size());
    interface.ifr_data = reinterpret_cast<char*>(request.bytes);
    if (ioctl(socketDescriptor.get(), SIOCETHTOOL, &interface) != 0) {
        QVSLogger::debug("The permanent address of %s cannot be read: %s", interfaceName.c_str(), std::strerror(errno));
        return Value();
    }
    const std::size_t length = std::min<std::size_t>(request.header()->size, kAddressRoom);
    const unsigned char* address = request.address();
    if (std::all_of(address, address + length, [](unsigned char byte) { return byte == 0; })) {
        QVSLogger::debug("The driver of %s gives no permanent address.", interfaceName.c_str());
        return Value();
    }
    DictionaryRef fact = makeDictionary();
    fact->set("address", addressText(address, length));
    return fact;
}

}  // namespace tov
