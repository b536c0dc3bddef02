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
// "" when it has none } of the printing system; absent when its library cannot be loaded.
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

// macOS. Registry properties, power-source descriptions and the like keep the platform's
// own keys; a data property is an array of its bytes (numbers 0 to 255), a date is its
// text "yyyy-MM-ddTHH:mm:ssZ" (UTC), as the property-list reader gives them.

// Key: a kernel parameter's name ("hw.memsize", "hw.logicalcpu", "machdep.cpu.brand_string",
// "hw.model", ...). A number for an integer parameter, a string for a text one (the bytes
// up to the first zero); "vm.swapusage" is { "total", "available", "used", "pageSize",
// "encrypted" } and "kern.boottime" { "seconds", "microseconds" }. Absent when the
// kernel has no such parameter or the read fails.
inline constexpr const char* kSysctl = "sysctl";

// Key "": the memory page size of sysconf(_SC_PAGESIZE), a number.
inline constexpr const char* kPageSize = "pageSize";

// Key: a device-registry matching: the class name ("IOBlockStorageDevice"), followed for
// a HID usage match by the usage page and the usage ("IOHIDDevice 1 6"). An array of the
// matched services in the order the registry's iterator gives them, each { "path": its
// path in the IOService plane (absent when it cannot be read), "properties": all its
// properties (absent when they cannot be read), "usbSerialNumber": the value of "USB
// Serial Number" found searching from the service up through its parents, recursively
// (absent when none; asked for "IOBlockStorageDevice" only) }. Absent when the matching
// cannot be made or gives no iterator.
inline constexpr const char* kRegistry = "ioreg";

// Key "": an array of the power sources' description dictionaries, in the order of the
// power-source list; [] when there are none.
inline constexpr const char* kPowerSources = "powerSources";

// Key "": an array of the audio devices in the system's list order, each { "name",
// "manufacturer" } as read in the input scope; a key is absent when its read failed.
// Absent when the device list cannot be read.
inline constexpr const char* kAudioDevices = "audioDevices";

// Key "": { "hardwareAddress": the address text of the system's default Wi-Fi interface,
// "ssid": its network name (absent when not associated or hidden from the daemon) };
// absent when there is no Wi-Fi interface.
inline constexpr const char* kWifiInterface = "wifiInterface";

// Key "": { "user": the console user the system configuration store names (absent when
// none), "processUser": the user name of this process }.
inline constexpr const char* kMacConsoleUser = "macConsoleUser";

// Key "": { "localizedName": the current host's localized name (absent when none),
// "localeIdentifier": the current locale's identifier ("en_US") }.
inline constexpr const char* kHostAndLocale = "hostAndLocale";

// Key "": the local time zone { "identifier": "Europe/Paris", "offsetSeconds": its offset
// from GMT now, daylight-saving time included, "standardName": its long standard name in
// the locale "en_US_POSIX" }.
inline constexpr const char* kLocalTimeZone = "localTimeZone";

// Key: a user name. { "metaRecordName": an array of the values of the meta record name
// attribute of the first user record with that record name on the directory's
// authentication search node; [] when it has none }; absent when there is no such record
// or the directory cannot be asked.
inline constexpr const char* kDirectoryUser = "directoryUser";

// Key: a path. { "identifier": a text that identifies the volume holding the path (two
// paths are on one volume exactly when their texts are equal) }; absent when it cannot
// be read.
inline constexpr const char* kVolumeIdentifier = "volumeIdentifier";

}  // namespace tov::facts
