#include <linux/nl80211.h>
#include <net/if.h>
#include <netlink/genl/ctrl.h>
#include <netlink/genl/genl.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <memory>
#include <optional>
#include <string>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "platform/linux/LinuxFacts.h"

namespace tov {
namespace {

// An SSID is at most 32 bytes (IEEE 802.11); anything longer is cut there.
constexpr int kMaximumSsidBytes = 32;
// The kernel answers at once; this only bounds a wait that should never happen.
constexpr time_t kAnswerTimeoutSeconds = 2;

struct SocketRelease {
    void operator()(nl_sock* socket) const { nl_socket_free(socket); }
};
struct MessageRelease {
    void operator()(nl_msg* message) const { nlmsg_free(message); }
};
using NetlinkSocket = std::unique_ptr<nl_sock, SocketRelease>;
using NetlinkMessage = std::unique_ptr<nl_msg, MessageRelease>;

struct InterfaceAnswer {
    bool answered = false;
    std::string ssidBytes;
};

// Takes the interface's SSID attribute from the kernel's answer; no attribute: not associated.
int takeInterfaceAnswer(nl_msg* message, void* argument) {
    auto* answer = static_cast<InterfaceAnswer*>(argument);
    nlattr* attributes[NL80211_ATTR_MAX + 1] = {};
    if (genlmsg_parse(nlmsg_hdr(message), 0, attributes, NL80211_ATTR_MAX, nullptr) != 0) return NL_SKIP;
    answer->answered = true;
    if (const nlattr* ssid = attributes[NL80211_ATTR_SSID]) {
        const int length = std::min(nla_len(ssid), kMaximumSsidBytes);
        if (length > 0) answer->ssidBytes.assign(static_cast<const char*>(nla_data(ssid)), static_cast<std::size_t>(length));
    }
    return NL_SKIP;
}

// A generic-netlink socket connected to the kernel with a bounded wait; nothing when that fails.
NetlinkSocket connectedSocket() {
    NetlinkSocket socket(nl_socket_alloc());
    if (!socket || genl_connect(socket.get()) != 0) return nullptr;
    const timeval timeout {kAnswerTimeoutSeconds, 0};
    setsockopt(nl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    return socket;
}

// The kernel's answer about the interface; nothing when nl80211 is missing or refuses
// (the interface is no Wi-Fi interface).
std::optional<InterfaceAnswer> askAboutInterface(const std::string& interfaceName, unsigned index) {
    const NetlinkSocket socket = connectedSocket();
    if (!socket) {
        QVSLogger::debug("No generic netlink socket for the Wi-Fi network of %s.", interfaceName.c_str());
        return std::nullopt;
    }
    const int family = genl_ctrl_resolve(socket.get(), NL80211_GENL_NAME);
    if (family < 0) {
        QVSLogger::debug("The system has no nl80211 interface: %s has no Wi-Fi network.", interfaceName.c_str());
        return std::nullopt;
    }
    NetlinkMessage message(nlmsg_alloc());
    if (!message || !genlmsg_put(message.get(), NL_AUTO_PORT, NL_AUTO_SEQ, family, 0, 0, NL80211_CMD_GET_INTERFACE, 0) ||
        nla_put_u32(message.get(), NL80211_ATTR_IFINDEX, index) != 0) {
        return std::nullopt;
    }
    InterfaceAnswer answer;
    nl_socket_modify_cb(socket.get(), NL_CB_VALID, NL_CB_CUSTOM, takeInterfaceAnswer, &answer);
    const int sent = nl_send_sync(socket.get(), message.release());
    if (sent < 0 || !answer.answered) {
        QVSLogger::debug("nl80211 tells nothing about %s: %s", interfaceName.c_str(), nl_geterror(sent));
        return std::nullopt;
    }
    return answer;
}

}  // namespace

Value wifiNetworkFact(const std::string& interfaceName) {
    if (!isValidInterfaceName(interfaceName)) {
        QVSLogger::debug("No Wi-Fi network is asked for \"%s\": it is no interface name.", interfaceName.c_str());
        return Value();
    }
    const unsigned index = if_nametoindex(interfaceName.c_str());
    if (index == 0) {
        QVSLogger::debug("There is no network interface %s.", interfaceName.c_str());
        return Value();
    }
    const std::optional<InterfaceAnswer> answer = askAboutInterface(interfaceName, index);
    if (!answer) return Value();
    DictionaryRef fact = makeDictionary();
    fact->set("ssid", printableText(answer->ssidBytes));
    return fact;
}

}  // namespace tov
