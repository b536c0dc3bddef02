#include "report/ReportStagingFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

#include "common/FileAccess.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"

namespace tov {
namespace {

// A folder of the daemon's own user that nobody else may enter.
bool isPrivateFolder(int folder) {
    struct stat status {};
    return ::fstat(folder, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & 077) == 0;
}

FileDescriptor openFolder(const std::string& path) {
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Clears the way for a new folder: anything at path that is not the daemon's private folder
// goes, links and all, without being followed.
bool removeIntruder(const std::string& path) {
    if (!itemExists(path)) return true;
    QVSLogger::warning("Replacing [%s]: it is not a folder that only root can use.", path.c_str());
    if (removeItemWithoutFollowing(path)) return true;
    QVSLogger::error("Could not remove [%s]: %s", path.c_str(), std::strerror(errno));
    return false;
}

bool makeFolder(const std::string& path) {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    if (::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) return true;
    QVSLogger::error("Could not create the staging folder [%s]: %s", path.c_str(), std::strerror(errno));
    return false;
}

// The names in the folder open at folder, "." and ".." left out.
std::vector<std::string> entryNames(int folder) {
    std::vector<std::string> names;
    DIR* listing = ::fdopendir(::dup(folder));
    if (!listing) return names;
    ::rewinddir(listing);
    while (const dirent* entry = ::readdir(listing)) {
        const std::string name(entry->d_name);
        if (name != "." && name != "..") names.push_back(name);
    }
    ::closedir(listing);
    return names;
}

}  // namespace

std::optional<ReportStagingFolder> ReportStagingFolder::open() {
    const std::string path = Paths::stagingFolder();
    // A second round covers a folder that something replaced between making and opening it.
    for (int round = 0; round < 3; ++round) {
        FileDescriptor folder = openFolder(path);
        if (folder.isOpen() && isPrivateFolder(folder.get())) {
            if (::geteuid() == 0 && ::fchown(folder.get(), 0, 0) != 0) {
                QVSLogger::debug("Could not give the staging folder to group 0: %s", std::strerror(errno));
            }
            return ReportStagingFolder(std::move(folder));
        }
        if (!removeIntruder(path) || !makeFolder(path)) return std::nullopt;
    }
    QVSLogger::error("Could not create the staging folder [%s]: it was replaced each time.", path.c_str());
    return std::nullopt;
}

bool ReportStagingFolder::write(const std::string& name, std::string_view bytes, int* error) const {
    remove(name);
    if (writeNewFileAt(folder_.get(), name, bytes)) return true;
    if (error) *error = errno;
    return false;
}

std::optional<std::string> ReportStagingFolder::read(const std::string& name, std::uint64_t maximumBytes) const {
    return readWholeFileAt(folder_.get(), name, maximumBytes);
}

bool ReportStagingFolder::exists(const std::string& name) const {
    struct stat status {};
    return ::fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

void ReportStagingFolder::remove(const std::string& name) const { removeItemAt(folder_.get(), name); }

void ReportStagingFolder::removeLeftoversExcept(const std::string& keep) const {
    for (const std::string& name : entryNames(folder_.get())) {
        if (name != keep) remove(name);
    }
}

bool ReportStagingFolder::moveInto(const std::string& name, int destination, int* error) const {
    // Linking refuses an existing entry, which is the no-replace rule.
    if (::linkat(folder_.get(), name.c_str(), destination, name.c_str(), 0) != 0) {
        if (error) *error = errno;
        return false;
    }
    remove(name);
    return true;
}

}  // namespace tov
