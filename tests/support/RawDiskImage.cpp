#include "support/RawDiskImage.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

#include "support/ChildProcess.h"

namespace tov::testing {
namespace {

constexpr std::size_t kPartitionEntryOffset = 446;
constexpr std::uint8_t kLinuxPartitionType = 0x83;

void putLittleEndian32(std::array<std::uint8_t, kSectorBytes>& sector, std::size_t offset, std::uint32_t value) {
    for (std::size_t index = 0; index < 4; ++index) sector[offset + index] = static_cast<std::uint8_t>(value >> (8 * index));
}

// A master boot record with one primary partition; the CHS fields hold the "use LBA"
// marker values, as partitioning tools write them for large disks.
std::array<std::uint8_t, kSectorBytes> masterBootRecord(std::uint64_t sizeBytes) {
    std::array<std::uint8_t, kSectorBytes> sector{};
    const std::size_t entry = kPartitionEntryOffset;
    sector[entry + 1] = 0xfe;
    sector[entry + 2] = 0xff;
    sector[entry + 3] = 0xff;
    sector[entry + 4] = kLinuxPartitionType;
    sector[entry + 5] = 0xfe;
    sector[entry + 6] = 0xff;
    sector[entry + 7] = 0xff;
    putLittleEndian32(sector, entry + 8, static_cast<std::uint32_t>(kFirstPartitionSector));
    putLittleEndian32(sector, entry + 12, static_cast<std::uint32_t>(partitionBytesOf(sizeBytes) / kSectorBytes));
    sector[510] = 0x55;
    sector[511] = 0xaa;
    return sector;
}

bool writeImage(const std::string& path, std::uint64_t sizeBytes, const std::uint8_t* firstSector) {
    if (sizeBytes % kSectorBytes != 0) return false;
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0) return false;
    bool written = ::ftruncate(file, static_cast<off_t>(sizeBytes)) == 0;
    if (written && firstSector != nullptr) {
        written = ::pwrite(file, firstSector, kSectorBytes, 0) == static_cast<ssize_t>(kSectorBytes);
    }
    return ::close(file) == 0 && written;
}

}  // namespace

bool makeFatDiskImage(const std::string& path, std::uint64_t sizeBytes, const std::string& label,
                      std::string& failure) {
    if (!writeImage(path, sizeBytes, nullptr)) {
        failure = "cannot write " + path;
        return false;
    }
    const ChildResult result = runInChild([&] {
        ::dup2(STDOUT_FILENO, STDERR_FILENO);
        const char* argv[] = {"busybox", "mkdosfs", "-n", label.c_str(), path.c_str(), nullptr};
        ::execvp(argv[0], const_cast<char* const*>(argv));
        return 127;
    });
    if (result.exitCode == 0) return true;
    failure = "busybox mkdosfs failed (" + std::to_string(result.exitCode) + "): " + result.output;
    return false;
}

bool makeBlankDiskImage(const std::string& path, std::uint64_t sizeBytes) {
    return writeImage(path, sizeBytes, nullptr);
}

bool makePartitionedDiskImage(const std::string& path, std::uint64_t sizeBytes) {
    if (sizeBytes <= kFirstPartitionSector * kSectorBytes) return false;
    const std::array<std::uint8_t, kSectorBytes> sector = masterBootRecord(sizeBytes);
    return writeImage(path, sizeBytes, sector.data());
}

}  // namespace tov::testing
