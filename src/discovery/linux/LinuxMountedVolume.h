#pragma once

// What the media watcher asks of a mounted volume on Linux, in the shape of the disk
// information a Mac gives for a mount path:
//   "MountPoint"        the mount path
//   "VolumeName"        the file-system label, "" when none
//   "DeviceIdentifier"  the kernel name of the block device ("sdb1")
//   "BusProtocol"       "USB" when the device hangs off a USB controller, else the bus
//                       that can be told ("FireWire", "Thunderbolt", "NVMe", "SATA",
//                       "Virtual") or ""
// The mount table gives the block device mounted at the path; its sysfs folder
// (/sys/class/block/<name>, a link into /sys/devices) tells the path to it.

#include <optional>
#include <string>
#include <vector>

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

class LinuxMountedVolume {
public:
    static constexpr const char* kMountPointKey = "MountPoint";
    static constexpr const char* kVolumeNameKey = "VolumeName";
    static constexpr const char* kDeviceIdentifierKey = "DeviceIdentifier";
    static constexpr const char* kBusProtocolKey = "BusProtocol";
    static constexpr const char* kUsbProtocol = "USB";
    static constexpr const char* kFireWireProtocol = "FireWire";
    static constexpr const char* kThunderboltProtocol = "Thunderbolt";

    // The information of the volume visible at mountPath; null when nothing is mounted
    // there or what is mounted is no block device (a network share, tmpfs).
    static DictionaryRef infoForMountPath(SystemSource& source, const std::string& mountPath);

    // The mount paths of block devices now mounted, in table order and without repeats.
    static std::vector<std::string> blockDeviceMountPaths(SystemSource& source);

    // The bus of the device at the sysfs path (resolved, below /sys/devices). A PCI
    // device that the kernel marks "removable" sits behind an external PCIe port, which
    // is what a Thunderbolt tunnel gives.
    static std::string busProtocolOfDevicePath(SystemSource& source, const std::string& devicePath);

    // USB, FireWire and Thunderbolt: buses whose devices are plugged in from outside.
    static bool isExternalBusProtocol(const std::string& protocol);

    // The folder below /sys/devices that path (a link such as /sys/block/sda) leads to;
    // nothing when a link cannot be followed or the path leads elsewhere.
    static std::optional<std::string> resolvedDevicePath(SystemSource& source, const std::string& path);
};

}  // namespace tov
