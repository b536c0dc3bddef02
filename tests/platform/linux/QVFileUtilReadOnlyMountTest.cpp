#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <string>

#include "support/ChildProcess.h"
#include "support/TestFolder.h"
#include "common/QVFileUtil.h"

namespace tov {
namespace {

constexpr int kNoMountNamespace = 77;

// A file on a read-only file system: root cannot change its owner, which is error 4 with
// the system's error number. The mount lives in a private mount namespace of a child.
TEST(QVFileUtilLinux, OwnerChangeOnAReadOnlyFileSystemIsErrorFour) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "needs root";
    testing::TestFolder folder;
    const std::string mountPoint = folder.makeFolder("mnt");
    const std::string path = mountPoint + "/previous.json";

    const int verdict = testing::runInChild([&] {
        if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, "size=64k") != 0) {
            return kNoMountNamespace;
        }
        if (folder.write("mnt/previous.json", "{}") != path ||
            mount(nullptr, mountPoint.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
            return kNoMountNamespace;
        }
        QVFileUtilErrorSlot slot;
        if (QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, &slot)) return 1;
        if (!slot || slot->code != 4) return 2;
        const std::string expected =
            "Could not change the owner of [" + path + "].  Error code = [" + std::to_string(EROFS) + "]";
        return slot->message == expected ? 0 : 3;
    }).exitCode;

    if (verdict == kNoMountNamespace) GTEST_SKIP() << "cannot make a private read-only mount here";
    EXPECT_EQ(verdict, 0);
}

}  // namespace
}  // namespace tov
