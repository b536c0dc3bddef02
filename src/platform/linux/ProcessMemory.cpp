#include "platform/ProcessMemory.h"

#include <fcntl.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "common/FileDescriptor.h"

namespace tov {
namespace {

// /proc/self/statm is seven numbers on one short line; more than this is not statm.
constexpr std::size_t kStatmLimit = 512;

std::optional<std::string> readStatm() {
    FileDescriptor file(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) return std::nullopt;
    char buffer[kStatmLimit];
    std::size_t length = 0;
    while (length < sizeof buffer) {
        const ssize_t count = ::read(file.get(), buffer + length, sizeof buffer - length);
        if (count == 0) break;
        if (count < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        length += static_cast<std::size_t>(count);
    }
    return std::string(buffer, length);
}

// The second field of statm: the resident set in pages.
std::optional<std::uint64_t> residentPages(const std::string& statm) {
    const char* cursor = statm.c_str();
    char* end = nullptr;
    std::strtoull(cursor, &end, 10);
    if (end == cursor) return std::nullopt;
    cursor = end;
    const unsigned long long pages = std::strtoull(cursor, &end, 10);
    if (end == cursor) return std::nullopt;
    return pages;
}

}  // namespace

std::optional<std::uint64_t> residentBytesOfCurrentProcess() {
    const std::optional<std::string> statm = readStatm();
    if (!statm) return std::nullopt;
    const std::optional<std::uint64_t> pages = residentPages(*statm);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (!pages || pageSize <= 0) return std::nullopt;
    return *pages * static_cast<std::uint64_t>(pageSize);
}

std::uint64_t physicalMemoryBytes() {
    struct sysinfo information {};
    if (::sysinfo(&information) != 0) return 0;
    const std::uint64_t unit = information.mem_unit == 0 ? 1 : information.mem_unit;
    return static_cast<std::uint64_t>(information.totalram) * unit;
}

}  // namespace tov
