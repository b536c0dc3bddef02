#pragma once

// The "diskutil" section on Linux: every whole disk of /sys/block, each followed by its
// partitions, as QVDiskUtilDisk records. Loop devices count only when a file backs them;
// RAM disks never. A device that others are built on (it has holders: an LVM physical
// volume, an encrypted container, a RAID member) is left out, and the device built on it
// (dm-N under its mapper name, mdN) is reported instead. Equal records are kept once, in
// the order in which they first appear.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"
#include "discovery/formats/UdevDatabase.h"
#include "discovery/linux/MountInfo.h"
#include "discovery/linux/SysfsBlockDevices.h"
#include "model/QVDiskUtilDisk.h"

namespace tov {

class LinuxVolumeDiscoverer : public QVDiskDiscoverer {
public:
    static constexpr const char* kDisksKey = "disks";

    explicit LinuxVolumeDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return "diskutil"; }
    DictionaryRef discoverInfo() override;
    ArrayRef discoverDisks() override;

private:
    bool isReported(const BlockDeviceEntry& device);
    bool isBackedLoopOrNoLoop(const BlockDeviceEntry& device);
    bool hasHolders(const BlockDeviceEntry& device);
    std::shared_ptr<QVDiskUtilDisk> diskOf(const BlockDeviceEntry& device, DeviceNumber number,
                                           const std::vector<MountEntry>& mounts);
    std::string mapperNameOf(const BlockDeviceEntry& device);
    std::string modelOf(const BlockDeviceEntry& device);
    std::uint64_t sizeOf(const BlockDeviceEntry& device);
    bool isOptical(const BlockDeviceEntry& device);
    void applyMounts(QVDiskUtilDisk& disk, const std::string& kernelName, const std::string& mapperName,
                     DeviceNumber number, const std::vector<MountEntry>& mounts);
    std::uint64_t freeSpaceAt(const std::string& mountPoint);

    std::shared_ptr<SystemSource> source_;
};

// Mount points that make a volume a boot volume.
bool isBootMountPoint(const std::string& mountPoint);

}  // namespace tov
