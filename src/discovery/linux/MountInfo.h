#pragma once

// The mount table of a Linux process (/proc/self/mountinfo), one entry per line:
//   36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw,errors=continue
// Paths and sources come with blanks, tabs, newlines and backslashes as octal escapes.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

struct MountEntry {
    unsigned major = 0;
    unsigned minor = 0;
    std::string root;        // the mounted folder within its file system
    std::string mountPoint;  // decoded
    std::string fileSystem;  // "ext4", "vfat", ...
    std::string source;      // decoded ("/dev/nvme0n1p2", "tmpfs", ...)
};

class MountInfo {
public:
    static constexpr const char* kPath = "/proc/self/mountinfo";
    static constexpr std::uint64_t kReadLimit = 4 * 1024 * 1024;

    // The well-formed lines of text, in order; malformed lines are left out.
    static std::vector<MountEntry> parse(std::string_view text);
    // The mount table as the source gives it; nothing (with a debug line) when unreadable.
    static std::optional<std::vector<MountEntry>> read(SystemSource& source);

    // The entry mounted last at mountPoint (the one visible there), if any.
    static const MountEntry* visibleAt(const std::vector<MountEntry>& entries, std::string_view mountPoint);

    // Turns the "\NNN" octal escapes of the table into their bytes.
    static std::string decodeOctalEscapes(std::string_view text);
};

}  // namespace tov
