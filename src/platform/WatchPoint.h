#pragma once

// Where a file watcher that watches folders (FSEvents) looks for a file: the nearest folder
// on the way to the file that exists, and the file's path as the system reports events
// below that folder (under the folder's real path: /tmp is /private/tmp on macOS).

#include <optional>
#include <string>

namespace tov {

struct WatchPoint {
    std::string folder;  // real path of the nearest existing folder on the way
    std::string target;  // folder, then the rest of the way to the file as given

    // True for the watched folder and each folder between it and the file: a change of
    // one of them changes where the file is looked for.
    bool isFolderOnTheWay(const std::string& path) const;
};

// The absolute, normal form of path; nullopt when it names no file (empty, "/", or ending
// in a slash).
std::optional<std::string> watchedFilePath(const std::string& path);

// The watch point of an absolute, normal file path; nullopt when not even "/" can be
// resolved. A file in the way of a folder is passed over, as a missing folder is.
std::optional<WatchPoint> nearestWatchPoint(const std::string& file);

}  // namespace tov
