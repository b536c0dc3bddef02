#pragma once

// A small memory file system at a folder, seen only by the calling process (for tests that
// need a full or read-only file system without touching the machine's own). Only where the
// kernel has mount namespaces; elsewhere both calls fail and the tests skip.

#include <string>

namespace tov::testing {

// Moves the calling process into a mount namespace of its own and mounts a memory file
// system of sizeKibibytes at folder there. False when this machine cannot.
bool mountPrivateMemoryFolder(const std::string& folder, int sizeKibibytes);

// Makes the memory file system mounted at folder read-only.
bool remountMemoryFolderReadOnly(const std::string& folder, int sizeKibibytes);

}  // namespace tov::testing
