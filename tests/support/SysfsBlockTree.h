#pragma once

// Builds the block-device part of a Linux machine in a MemorySystemSource, as sysfs lays
// it out: /sys/block/<disk> a link into /sys/devices, partitions as sub-folders of their
// disk, /sys/class/block and /sys/dev/block links, udev records, the mount table and the
// file-system statistics of mount points.

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "support/MemorySystemSource.h"

namespace tov::testing {

class SysfsBlockTree {
public:
    SysfsBlockTree() : source_(std::make_shared<MemorySystemSource>()) {}

    // A whole disk whose device folder is devicesPath ("/sys/devices/.../block/sda").
    SysfsBlockTree& disk(const std::string& name, const std::string& devicesPath, const std::string& dev,
                         std::uint64_t sectors);
    SysfsBlockTree& partition(const std::string& disk, const std::string& name, unsigned number,
                              const std::string& dev, std::uint64_t sectors);
    // An attribute file of the disk or partition, relative to its folder ("device/model").
    SysfsBlockTree& attribute(const std::string& name, const std::string& relative, const std::string& text);
    SysfsBlockTree& holder(const std::string& name, const std::string& holderName);
    SysfsBlockTree& udev(const std::string& dev, const std::string& record);
    SysfsBlockTree& mountTable(const std::string& text);
    SysfsBlockTree& freeSpace(const std::string& mountPoint, std::uint64_t blockSize, std::uint64_t availableBlocks);

    // The folder of the disk or partition below /sys/devices.
    std::string folderOf(const std::string& name) const;
    const std::shared_ptr<MemorySystemSource>& source() const { return source_; }

private:
    void deviceFiles(const std::string& name, const std::string& folder, const std::string& dev,
                     std::uint64_t sectors);

    std::shared_ptr<MemorySystemSource> source_;
    std::map<std::string, std::string> folders_;
};

}  // namespace tov::testing
