#pragma once

// Where a block device is mounted, from the mount table. A device is known by its number
// ("8:1", as /sys/block/sda/sda1/dev gives it); file systems that report an anonymous
// number (btrfs gives "0:NN") are known by their source instead ("/dev/sda1", or
// "/dev/mapper/<name>" for a device-mapper device).

#include <string>
#include <vector>

#include "discovery/linux/MountInfo.h"
#include "discovery/linux/SysfsBlockDevices.h"

namespace tov {

// The names a mount table may give the device as its source: "/dev/<kernel name>" and,
// for a device-mapper device, "/dev/mapper/<its name>".
std::vector<std::string> deviceSourcesOf(const std::string& kernelName, const std::string& mapperName);

// The entries that mount the device, in table order.
std::vector<const MountEntry*> mountsOfDevice(const std::vector<MountEntry>& table, DeviceNumber number,
                                              const std::vector<std::string>& sources);

// The mount whose statistics describe the device: the first that mounts the whole file
// system (root "/"), else the first; nullptr when the device is not mounted.
const MountEntry* primaryMount(const std::vector<const MountEntry*>& mounts);

}  // namespace tov
