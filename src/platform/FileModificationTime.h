#pragma once

// The modification time of a file at full resolution, as each platform's stat reports it.

#include <cstdint>
#include <optional>
#include <string>

namespace tov {

struct FileModificationTime {
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;

    bool operator==(const FileModificationTime&) const = default;
};

// The modification time of the item at path itself (a symbolic link is not followed);
// nothing when there is no item.
std::optional<FileModificationTime> fileModificationTime(const std::string& path);

}  // namespace tov
