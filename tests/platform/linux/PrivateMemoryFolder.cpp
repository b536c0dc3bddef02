#include "support/PrivateMemoryFolder.h"

#include <sched.h>
#include <sys/mount.h>

namespace tov::testing {
namespace {

std::string memoryOptions(int sizeKibibytes) { return "size=" + std::to_string(sizeKibibytes) + "k,mode=0755"; }

}  // namespace

bool mountPrivateMemoryFolder(const std::string& folder, int sizeKibibytes) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", 0, memoryOptions(sizeKibibytes).c_str()) == 0;
}

bool remountMemoryFolderReadOnly(const std::string& folder, int sizeKibibytes) {
    return ::mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, memoryOptions(sizeKibibytes).c_str()) ==
           0;
}

}  // namespace tov::testing
