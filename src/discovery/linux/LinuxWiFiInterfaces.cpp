#include "discovery/linux/LinuxWiFiInterfaces.h"

#include "common/PrintableText.h"
#include "discovery/SystemFacts.h"
#include "discovery/linux/LinuxNetworkInterface.h"

namespace tov {
namespace {

// "" when the interface is not associated or nothing tells.
std::string networkName(SystemSource& source, const std::string& name) {
    const Value fact = source.fact(facts::kWifiNetwork, name);
    if (!fact.isDictionary()) return "";
    const Value ssid = fact.dictionary()->get("ssid");
    return ssid.isString() ? printableText(*ssid.string()) : "";
}

}  // namespace

std::vector<WiFiInterfaceState> linuxWiFiInterfaces(SystemSource& source) {
    std::vector<WiFiInterfaceState> interfaces;
    for (const std::string& name : linuxNetworkInterfaceNames(source)) {
        if (!isLinuxWirelessInterface(source, name)) continue;
        interfaces.push_back({linuxHardwareAddress(source, name), networkName(source, name)});
    }
    return interfaces;
}

}  // namespace tov
