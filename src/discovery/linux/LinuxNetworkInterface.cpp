#include "discovery/linux/LinuxNetworkInterface.h"

#include <cctype>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "discovery/PathWalk.h"
#include "discovery/SystemFacts.h"

namespace tov {
namespace {

// "/sys/class/net/<name>/address" holds one line of at most 32 pairs.
constexpr std::uint64_t kAddressFileLimit = 256;
constexpr std::size_t kMaximumAddressBytes = 32;
// More interfaces than any machine has are not read.
constexpr std::size_t kMaximumInterfaces = 4096;

std::string permanentAddress(SystemSource& source, const std::string& name) {
    const Value fact = source.fact(facts::kPermanentAddress, name);
    if (!fact.isDictionary()) return "";
    const Value address = fact.dictionary()->get("address");
    return address.isString() ? printableText(*address.string()) : "";
}

std::string currentAddress(SystemSource& source, const std::string& name) {
    const std::string path = childPath(linuxNetworkInterfaceFolder(name), "address");
    const std::optional<std::string> text = source.readFile(path, kAddressFileLimit);
    if (!text) {
        QVSLogger::debug("The address of the network interface %s cannot be read (%s).", name.c_str(), path.c_str());
        return "";
    }
    return printableText(*text);
}

bool isHexDigit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

}  // namespace

std::vector<std::string> linuxNetworkInterfaceNames(SystemSource& source) {
    std::optional<std::vector<std::string>> names = source.listFolder(kNetworkInterfacesFolder);
    if (!names) {
        QVSLogger::debug("No network interfaces: %s cannot be listed.", kNetworkInterfacesFolder);
        return {};
    }
    if (names->size() > kMaximumInterfaces) names->resize(kMaximumInterfaces);
    return *names;
}

std::string linuxNetworkInterfaceFolder(const std::string& name) { return childPath(kNetworkInterfacesFolder, name); }

bool isLinuxNetworkAdapter(SystemSource& source, const std::string& name) {
    return source.pathKind(childPath(linuxNetworkInterfaceFolder(name), "device")) == PathKind::Link;
}

bool isLinuxWirelessInterface(SystemSource& source, const std::string& name) {
    const std::string folder = linuxNetworkInterfaceFolder(name);
    return source.pathKind(childPath(folder, "wireless")) != PathKind::None ||
           source.pathKind(childPath(folder, "phy80211")) != PathKind::None;
}

std::string linuxHardwareAddress(SystemSource& source, const std::string& name) {
    for (const std::string& address : {permanentAddress(source, name), currentAddress(source, name)}) {
        if (address.empty()) continue;
        if (isHardwareAddressText(address)) return address;
        QVSLogger::debug("The network interface %s has an address that is none: \"%s\".", name.c_str(), address.c_str());
    }
    return "";
}

bool isHardwareAddressText(const std::string& text) {
    if (text.size() % 3 != 2 || text.size() > kMaximumAddressBytes * 3 - 1) return false;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool separator = index % 3 == 2;
        if (separator ? text[index] != ':' : !isHexDigit(text[index])) return false;
    }
    return true;
}

}  // namespace tov
