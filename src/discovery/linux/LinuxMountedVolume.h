#pragma once

// What the media watcher asks of a mounted volume on Linux, in the shape of the disk
// information a Mac gives for a mount path:
//   "MountPoint"        the mount path
//   "VolumeName"        the file-system label, "" when none
//   "DeviceIdentifier"  the kernel name of the block device ("sdb1")
//   "BusProtocol"       "USB" when the device hangs off a USB controller, else the bus
//                       that can be told ("NVMe", "SATA", "Virtual") or ""
// The mount table gives the block device mounted at the path; its sysfs folder
// (/sys/class/block/<name>, a link into /sys/devices) tells the path to it.

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

    // The information of the volume visible at mountPath; null when nothing is mounted
    // there or what is mounted is no block device (a network share, tmpfs).
    static DictionaryRef infoForMountPath(SystemSource& source, const std::string& mountPath);

    // The mount paths of block devices now mounted, in table order and without repeats.
    static std::vector<std::string> blockDeviceMountPaths(SystemSource& source);

    // The bus of the device at the sysfs path (resolved, below /sys/devices).
    static std::string busProtocolOfDevicePath(SystemSource& source, const std::string& devicePath);
};

}  // namespace tov
