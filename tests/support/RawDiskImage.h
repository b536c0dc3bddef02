#pragma once

// Raw disk image files for the QEMU test machines: sparse, of a given size, either blank,
// with an MBR partition table holding one Linux partition, or one FAT file system over the
// whole image (as many USB sticks come).

#include <cstdint>
#include <string>

namespace tov::testing {

inline constexpr std::uint64_t kSectorBytes = 512;
inline constexpr std::uint64_t kFirstPartitionSector = 2048;

// A blank image of sizeBytes (a multiple of the sector size). False when it cannot be written.
bool makeBlankDiskImage(const std::string& path, std::uint64_t sizeBytes);

// An image whose MBR holds one Linux partition from sector 2048 to the end of the disk.
bool makePartitionedDiskImage(const std::string& path, std::uint64_t sizeBytes);

// An image of sizeBytes holding a FAT32 file system with that volume label, made by
// busybox's mkdosfs. On failure, false, and failure holds what mkdosfs said.
bool makeFatDiskImage(const std::string& path, std::uint64_t sizeBytes, const std::string& label,
                      std::string& failure);

// The bytes of that partition.
constexpr std::uint64_t partitionBytesOf(std::uint64_t diskBytes) {
    return diskBytes - kFirstPartitionSector * kSectorBytes;
}

}  // namespace tov::testing
