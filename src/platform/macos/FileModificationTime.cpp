#include "platform/FileModificationTime.h"

#include <sys/stat.h>

namespace tov {

std::optional<FileModificationTime> fileModificationTime(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
    return FileModificationTime{status.st_mtimespec.tv_sec, status.st_mtimespec.tv_nsec};
}

}  // namespace tov
