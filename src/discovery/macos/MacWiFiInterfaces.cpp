#include "discovery/macos/MacWiFiInterfaces.h"

#include <optional>
#include <string>

#include "discovery/SystemFacts.h"
#include "discovery/macos/RegistryProperty.h"

namespace tov {

std::vector<WiFiInterfaceState> macWiFiInterfaces(SystemSource& source) {
    const DictionaryRef interface = source.fact(facts::kWifiInterface).dictionary();
    if (!interface) return {};
    const std::optional<std::string> hardwareAddress = stringProperty(*interface, "hardwareAddress");
    if (!hardwareAddress) return {};
    return {WiFiInterfaceState{*hardwareAddress, stringProperty(*interface, "ssid").value_or("")}};
}

}  // namespace tov
