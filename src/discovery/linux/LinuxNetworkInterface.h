#pragma once

// What the kernel tells of one network interface in /sys/class/net/<name>: whether it is
// an adapter (it has a device), whether it is a Wi-Fi interface, and its hardware address.

#include <string>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

inline constexpr const char* kNetworkInterfacesFolder = "/sys/class/net";

// The interface names, in byte order; none when the folder cannot be listed.
std::vector<std::string> linuxNetworkInterfaceNames(SystemSource& source);

// The interface's folder, "/sys/class/net/<name>".
std::string linuxNetworkInterfaceFolder(const std::string& name);

// Loopback, bridges, bonds, tunnels and veth pairs have no "device" link.
bool isLinuxNetworkAdapter(SystemSource& source, const std::string& name);

// A Wi-Fi interface has a "wireless" folder or a "phy80211" link.
bool isLinuxWirelessInterface(SystemSource& source, const std::string& name);

// The address the adapter was made with (the permanentAddress fact), else its current
// address; "" when neither is there or readable as colon-separated hex pairs.
std::string linuxHardwareAddress(SystemSource& source, const std::string& name);

// Colon-separated pairs of hex digits ("00:1c:b3:09:85:15"), 1 to 32 of them.
bool isHardwareAddressText(const std::string& text);

}  // namespace tov
