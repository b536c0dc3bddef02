#pragma once

// The block devices of a Linux machine as sysfs shows them: each whole disk is a link
// /sys/block/<name> into /sys/devices, and each of its partitions a sub-folder of it that
// holds a "partition" attribute (/sys/block/sda/sda1). Attributes are short text files
// ("dev" holds "8:1", "size" the number of 512-byte sectors).

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

struct DeviceNumber {
    unsigned major = 0;
    unsigned minor = 0;
    bool operator==(const DeviceNumber&) const = default;
};

struct BlockDeviceEntry {
    std::string name;           // kernel name: "nvme0n1p2"
    std::string path;           // "/sys/block/nvme0n1/nvme0n1p2"
    std::string diskName;       // the whole disk's kernel name (its own for a whole disk)
    std::string diskPath;       // "/sys/block/nvme0n1"
    bool isPartition = false;
};

class SysfsBlockDevices {
public:
    static constexpr const char* kBlockFolder = "/sys/block";
    // An attribute is one short line; a larger file is no attribute.
    static constexpr std::uint64_t kAttributeReadLimit = 4096;
    // Names looked at per folder, so that a hostile tree cannot make a walk endless.
    static constexpr std::size_t kMaximumEntries = 4096;

    // Every whole disk, each followed by its partitions. Drives (those with a "device"
    // link) come before the devices the kernel builds from others (loop, md, dm, zram);
    // within each group names are in natural order (sda, sdb, ..., sdz, sdaa; nvme0n1
    // before nvme1n1), and partitions follow their "partition" number.
    static std::vector<BlockDeviceEntry> list(SystemSource& source);

    // The whole disk's model as the kernel writes it (untrimmed text of the machine): SCSI,
    // ATA and NVMe drives name it "device/model", memory cards "device/name"; nothing when
    // neither can be read.
    static std::optional<std::string> driveModel(SystemSource& source, const std::string& diskPath);

    // The trimmed text of the attribute file; nothing when it is missing or too large.
    static std::optional<std::string> attribute(SystemSource& source, const std::string& path);
    // The "major:minor" text of a "dev" attribute.
    static std::optional<DeviceNumber> parseDeviceNumber(std::string_view text);
    static std::optional<std::uint64_t> parseUnsigned(std::string_view text);

    // Natural order of kernel names: runs of digits compare by their value, other runs
    // by their bytes, except that two runs sharing their first two characters put the
    // shorter first (the kernel's letter indexes: "sdz" before "sdaa").
    static bool naturalLess(std::string_view left, std::string_view right);
};

}  // namespace tov
