#include "common/FileAccess.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "common/FileDescriptor.h"

namespace tov {
namespace {

void setCode(int* errorCode, int code) {
    if (errorCode) *errorCode = code;
}

int readErrorCode(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR: return FileErrorCode::kReadNoSuchFile;
        case EACCES:
        case EPERM: return FileErrorCode::kReadNoPermission;
        case EFBIG: return FileErrorCode::kReadTooLarge;
        default: return FileErrorCode::kReadUnknown;
    }
}

int writeErrorCodeOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR: return FileErrorCode::kNoSuchFile;
        case EACCES:
        case EPERM: return FileErrorCode::kWriteNoPermission;
        case ENOSPC:
        case EDQUOT: return FileErrorCode::kWriteOutOfSpace;
        case EROFS: return FileErrorCode::kWriteVolumeReadOnly;
        default: return FileErrorCode::kWriteUnknown;
    }
}

using Descriptor = FileDescriptor;

bool readAll(int descriptor, std::string& bytes, std::uint64_t maximumBytes) {
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        if (count == 0) return true;
        if (bytes.size() + static_cast<std::uint64_t>(count) > maximumBytes) {
            errno = EFBIG;
            return false;
        }
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

// A fresh file in destination's folder holding bytes, flushed to disk; its path, or "".
std::string writeFreshSibling(const std::string& destination, std::string_view bytes) {
    std::vector<char> temporary(destination.begin(), destination.end());
    for (const char c : std::string_view(".XXXXXX")) temporary.push_back(c);
    temporary.push_back('\0');
    Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (file.get() < 0) return "";
    bool written = writeAll(file.get(), bytes) && ::fsync(file.get()) == 0;
    int cause = written ? 0 : errno;
    if (!file.close() && written) {
        written = false;
        cause = errno;
    }
    if (!written) {
        ::unlink(temporary.data());
        errno = cause;
        return "";
    }
    return temporary.data();
}

// Hard-linking refuses an existing destination, which is the no-overwrite rule.
bool copyAcrossFileSystems(const std::string& source, const std::string& destination) {
    const std::optional<std::string> bytes = readWholeFile(source, UINT64_MAX);
    if (!bytes) return false;
    const std::string sibling = writeFreshSibling(destination, *bytes);
    if (sibling.empty()) return false;
    const bool linked = ::link(sibling.c_str(), destination.c_str()) == 0;
    ::unlink(sibling.c_str());
    return linked;
}

// Deep enough for any folder the daemon makes; a deeper planted tree is refused rather than
// exhausting the descriptors.
constexpr int kMaximumRemovalDepth = 256;

bool removeEntryAt(int folder, const char* name, int depth);

// Empties the folder open at descriptor (which it takes over); false when something stays.
bool emptyFolder(int descriptor, int depth) {
    DIR* listing = ::fdopendir(descriptor);
    if (!listing) {
        ::close(descriptor);
        return false;
    }
    bool emptied = true;
    while (const dirent* entry = ::readdir(listing)) {
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..") continue;
        emptied = removeEntryAt(::dirfd(listing), entry->d_name, depth + 1) && emptied;
    }
    ::closedir(listing);
    return emptied;
}

// Unlinks the entry name of folder; a folder (opened without following a link) is emptied first.
bool removeEntryAt(int folder, const char* name, int depth) {
    if (::unlinkat(folder, name, 0) == 0 || errno == ENOENT) return true;
    if (errno != EISDIR && errno != EPERM) return false;
    if (depth >= kMaximumRemovalDepth) return false;
    const int descriptor = ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) return false;
    if (!emptyFolder(descriptor, depth)) return false;
    return ::unlinkat(folder, name, AT_REMOVEDIR) == 0 || errno == ENOENT;
}

}  // namespace

int fileWriteErrorCode(int error) { return writeErrorCodeOf(error); }

bool removeItemWithoutFollowing(const std::string& path) {
    if (!itemExists(path)) return true;
    const std::string::size_type slash = path.find_last_of('/');
    const std::string folder = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    Descriptor parent(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent.get() < 0) return false;
    return removeEntryAt(parent.get(), name.c_str(), 0);
}

bool itemExists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

bool isRegularFileItem(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::uint64_t regularFileSize(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::string> readWholeFile(const std::string& path, std::uint64_t maximumBytes, int* errorCode) {
    return readWholeFileAt(AT_FDCWD, path, maximumBytes, errorCode);
}

std::optional<std::string> readWholeFileAt(int folder, const std::string& name, std::uint64_t maximumBytes,
                                           int* errorCode) {
    Descriptor file(::openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.get() < 0) {
        setCode(errorCode, errno == ELOOP ? FileErrorCode::kReadNoPermission : readErrorCode(errno));
        return std::nullopt;
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        setCode(errorCode, FileErrorCode::kReadUnknown);
        return std::nullopt;
    }
    std::string bytes;
    if (static_cast<std::uint64_t>(status.st_size) <= maximumBytes) {
        bytes.reserve(static_cast<std::size_t>(status.st_size));
    }
    if (!readAll(file.get(), bytes, maximumBytes)) {
        setCode(errorCode, readErrorCode(errno));
        return std::nullopt;
    }
    return bytes;
}

bool writeNewFileAt(int folder, const std::string& name, std::string_view bytes) {
    Descriptor file(::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file.get() < 0) return false;
    const bool written = writeAll(file.get(), bytes) && ::fsync(file.get()) == 0;
    if (file.close() && written) return true;
    const int cause = errno;
    ::unlinkat(folder, name.c_str(), 0);
    errno = cause;
    return false;
}

bool removeItemAt(int folder, const std::string& name) { return removeEntryAt(folder, name.c_str(), 0); }

bool writeFileAtomically(const std::string& path, std::string_view bytes, int* errorCode) {
    const std::string temporary = writeFreshSibling(path, bytes);
    if (temporary.empty()) {
        setCode(errorCode, writeErrorCodeOf(errno));
        return false;
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int cause = errno;
        setCode(errorCode, writeErrorCodeOf(cause));
        ::unlink(temporary.c_str());
        errno = cause;
        return false;
    }
    return true;
}

bool moveFileWithoutReplacing(const std::string& source, const std::string& destination) {
    if (::link(source.c_str(), destination.c_str()) != 0) {
        if (errno != EXDEV || !copyAcrossFileSystems(source, destination)) return false;
    }
    ::unlink(source.c_str());
    return true;
}

bool removeFile(const std::string& path) {
    return ::unlink(path.c_str()) == 0 || errno == ENOENT;
}

}  // namespace tov
