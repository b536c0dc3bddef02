#pragma once

// The native facts a source gives, by name. Each has the same tree live and recorded, so
// a capture folder ("<name> <key>" in facts.json) answers exactly as the machine did.

namespace tov::facts {

// Key "": array of { "name": interface, "family": "inet" | "inet6" | "other",
// "address": numeric address text } in the order the system enumerates them.
inline constexpr const char* kInterfaces = "interfaces";

// Key: a mount path. { "blockSize": fragment size, "totalBlocks", "freeBlocks",
// "availableBlocks" } (unsigned numbers); absent when the path cannot be examined.
inline constexpr const char* kFileSystemStatistics = "statvfs";

// Key: a path. { "seconds": signed seconds since 1970-01-01 UTC } of the file's birth;
// absent when the file system does not record it.
inline constexpr const char* kBirthTime = "birthTime";

// Key "": { "sysname", "nodename", "release", "version", "machine" } (strings).
inline constexpr const char* kUname = "uname";

// Key: a seat name ("seat0"). { "seat": the seat exists, "user": the user name of the
// seat's active session, "" when none }.
inline constexpr const char* kConsoleUser = "consoleUser";

// Key "": array of { "name": destination, "makeAndModel": its printer-make-and-model,
// "" when it has none } of the printing system.
inline constexpr const char* kPrinters = "printers";

// Key: a URL. { "body": the page's text } after a successful GET, or { "errorCode": n }
// when the fetch failed; absent when the host is not reachable.
inline constexpr const char* kPublicIpPage = "publicIpPage";

// Key: a network interface name. { "address": "aa:bb:cc:dd:ee:ff" }, the hardware address
// the adapter was made with (lower-case hex, colon-separated), which stays the same when
// the current address is changed (bonding, a cloned or random address); absent when the
// driver has none (or only zeros), the interface is unknown or the name is not a valid
// interface name. Linux: the ethtool permanent-address request.
inline constexpr const char* kPermanentAddress = "permanentAddress";

// Key: a network interface name. { "ssid": the name of the Wi-Fi network the interface is
// associated with, as printable single-line UTF-8; "" when it is not associated }; absent
// when the interface is unknown, is not a Wi-Fi interface, its name is not valid, or the
// system has no Wi-Fi configuration interface. Linux: nl80211 (NL80211_CMD_GET_INTERFACE).
inline constexpr const char* kWifiNetwork = "wifiNetwork";

}  // namespace tov::facts
