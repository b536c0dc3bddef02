#pragma once

// The udev database's record of one device (/run/udev/data/b<major>:<minor> for a block
// device), one fact per line, a letter, a colon and the value:
//   S:disk/by-label/EFI\x20System     a link below /dev that names the device
//   E:ID_FS_TYPE=vfat                 a property
//   G:systemd                         a tag
// Other letters (I:, L:, W:, Q:, V:, ...) are udev's bookkeeping and are skipped. Values
// whose name ends in "_ENC" carry unsafe bytes as "\xNN" escapes.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

struct UdevRecord {
    std::vector<std::string> links;                                // "S:" lines, relative to /dev
    std::vector<std::pair<std::string, std::string>> properties;  // "E:" lines, in order
    std::vector<std::string> tags;                                 // "G:" lines

    // The value of the property named key (the last one when it is repeated).
    std::optional<std::string> property(std::string_view key) const;
    // The "<key>_ENC" property with its escapes decoded, else the plain property.
    std::optional<std::string> decodedProperty(std::string_view key) const;
};

class UdevDatabase {
public:
    static constexpr const char* kDataFolder = "/run/udev/data";
    // A record is a few kilobytes; anything much larger is no record of udev's.
    static constexpr std::uint64_t kReadLimit = 256 * 1024;
    // Lines kept per kind, so that hostile text cannot grow a record without end.
    static constexpr std::size_t kMaximumEntries = 4096;

    // The facts of a record's text; malformed lines are skipped.
    static UdevRecord parse(std::string_view text);
    // The record of the block device major:minor; nothing (with a debug line) when the
    // database has none or it cannot be read.
    static std::optional<UdevRecord> readBlockDevice(SystemSource& source, unsigned major, unsigned minor);
    static std::string blockDevicePath(unsigned major, unsigned minor);

    // Turns each "\xNN" (two hex digits) into its byte; other text is kept as it is.
    static std::string decodeHexEscapes(std::string_view text);
};

}  // namespace tov
