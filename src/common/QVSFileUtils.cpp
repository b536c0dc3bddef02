#include "common/QVSFileUtils.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>

namespace tov {
namespace {

constexpr std::array<std::uint8_t, 4> kZipLocalFileHeaderSignature{0x50, 0x4B, 0x03, 0x04};

// Reads until buffer is full or the file ends; the number of bytes read, -1 on an error.
ssize_t readFully(int descriptor, std::uint8_t* buffer, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t count = read(descriptor, buffer + filled, size - filled);
        if (count == 0) break;
        if (count < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        filled += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

}  // namespace

bool QVSFileUtils::IsZipFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor == -1) return false;
    std::array<std::uint8_t, 4> start{};
    const ssize_t count = readFully(descriptor, start.data(), start.size());
    close(descriptor);
    return count == static_cast<ssize_t>(start.size()) && start == kZipLocalFileHeaderSignature;
}

}  // namespace tov
