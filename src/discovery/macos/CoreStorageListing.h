#pragma once

// Reads the text listing of CoreStorage logical volume groups ("diskutil cs list"): the
// physical volumes a group is built on, or the logical volumes it offers, each as a disk
// record. A block starts at its marker line ("+-< Physical Volume ...", "+-> Logical
// Volume ...") and ends at the next line starting with "+-"; its "Key: value" lines fill
// the record. Several groups prefix every line with "|" marks, which are cut off first.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/QVDiskUtilDisk.h"

namespace tov {

enum class CoreStorageVolumeKind { Physical, Logical };

// The records of the blocks of that kind, in listing order, each with a non-empty
// identifier (its "Disk:" line); duplicates are left to the caller.
std::vector<std::shared_ptr<QVDiskUtilDisk>> coreStorageVolumes(std::string_view listing, CoreStorageVolumeKind kind);

// The line trimmed, with up to ten leading "|" marks cut off (trimming after each cut).
std::string withoutLeadingBars(std::string_view line);

// The first run of decimal digits in text ("121.3 GB (121332826112 Bytes)" gives 121);
// larger numbers than 64 bits hold read as the largest one. Nothing without a digit.
std::optional<std::uint64_t> firstDigitRun(std::string_view text);

}  // namespace tov
