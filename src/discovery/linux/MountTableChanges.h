#pragma once

// What changed between two readings of a Linux mount table: the file systems that went
// (in the order of the older table) and those that came (in the order of the newer one).
// A mount is known by where and what it mounts (path, device numbers, root, type and
// source), and the tables are compared as lists with repetitions, so a second file
// system stacked on a path is a mount of its own and its removal an unmount of its own.
// Paths are data: any bytes, blanks, newlines and invalid UTF-8 included.

#include <string>
#include <string_view>
#include <vector>

#include "discovery/linux/MountInfo.h"
#include "platform/VolumeWatcher.h"

namespace tov {

// Unmounts first, then mounts.
std::vector<VolumeEvent> mountTableChanges(const std::vector<MountEntry>& before, const std::vector<MountEntry>& after);

// The last component of a mount path; "/" for the root.
std::string volumeNameOfMountPath(std::string_view mountPath);

}  // namespace tov
