#pragma once

// The native facts that only Linux answers this way (SystemFacts.h gives their shapes).

#include <string>
#include <string_view>

#include "model/Value.h"

namespace tov {

// statx birth time of the path in key.
Value birthTimeFact(const std::string& path);
// The active user of the logind seat named in key.
Value consoleUserFact(const std::string& seat);
// The ethtool permanent hardware address of the interface named in key.
Value permanentAddressFact(const std::string& interfaceName);
// The Wi-Fi network (nl80211) the interface named in key is associated with.
Value wifiNetworkFact(const std::string& interfaceName);

// A name the kernel accepts for a network interface: 1 to 15 bytes, not "." or "..",
// without "/", ":" or white space. Names from outside are checked before any use.
bool isValidInterfaceName(std::string_view name);

}  // namespace tov
