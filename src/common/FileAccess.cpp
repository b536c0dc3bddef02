#include "common/FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

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

int writeErrorCode(int error) {
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

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return descriptor_; }
    // Closes now so that a failed close (a full disk on some file systems) is seen.
    bool close() {
        const int descriptor = descriptor_;
        descriptor_ = -1;
        return ::close(descriptor) == 0;
    }

private:
    int descriptor_;
};

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

}  // namespace

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
    Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
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

bool writeFileAtomically(const std::string& path, std::string_view bytes, int* errorCode) {
    const std::string temporary = writeFreshSibling(path, bytes);
    if (temporary.empty()) {
        setCode(errorCode, writeErrorCode(errno));
        return false;
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int cause = errno;
        setCode(errorCode, writeErrorCode(cause));
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

bool removeItem(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return errno == ENOENT;
    if (!S_ISDIR(status.st_mode)) return removeFile(path);
    std::error_code error;
    std::filesystem::remove_all(path, error);
    if (error) errno = error.value();
    return !error;
}

}  // namespace tov
