#include "platform/WatchPoint.h"

#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>

namespace tov {
namespace {

std::optional<std::string> realFolder(const std::filesystem::path& folder) {
    char resolved[PATH_MAX];
    if (::realpath(folder.c_str(), resolved) == nullptr) return std::nullopt;
    struct stat status {};
    if (::stat(resolved, &status) != 0 || !S_ISDIR(status.st_mode)) return std::nullopt;
    return std::string(resolved);
}

// True when path is folder or lies below it.
bool isAtOrBelow(const std::string& path, const std::string& folder) {
    if (folder.empty() || path.compare(0, folder.size(), folder) != 0) return false;
    return path.size() == folder.size() || folder.back() == '/' || path[folder.size()] == '/';
}

}  // namespace

bool WatchPoint::isFolderOnTheWay(const std::string& path) const {
    return !path.empty() && path.size() < target.size() && isAtOrBelow(target, path) && isAtOrBelow(path, folder);
}

std::optional<std::string> watchedFilePath(const std::string& path) {
    if (path.empty()) return std::nullopt;
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error).lexically_normal();
    if (error || !absolute.has_filename()) return std::nullopt;
    return absolute.string();
}

std::optional<WatchPoint> nearestWatchPoint(const std::string& file) {
    const std::filesystem::path filePath(file);
    for (std::filesystem::path folder = filePath.parent_path();; folder = folder.parent_path()) {
        if (const std::optional<std::string> real = realFolder(folder)) {
            const std::filesystem::path rest = filePath.lexically_relative(folder);
            return WatchPoint{*real, (std::filesystem::path(*real) / rest).string()};
        }
        if (folder == folder.parent_path()) return std::nullopt;
    }
}

}  // namespace tov
