#include "common/QVFileUtil.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "common/QVFileUtilMessages.h"
#include "common/UserDatabase.h"
#include "model/Json.h"

namespace tov {
namespace {

constexpr mode_t kOwnerReadWrite = S_IRUSR | S_IWUSR;

bool isDaemonGroup(gid_t group) {
    return group == QVFileUtil::kDaemonGroupId;
}

const char* itemType(mode_t mode) {
    if (S_ISDIR(mode)) return "directory";
    if (S_ISREG(mode)) return "regular";
    if (S_ISLNK(mode)) return "symbolicLink";
    if (S_ISFIFO(mode)) return "pipe";
    if (S_ISSOCK(mode)) return "socket";
    if (S_ISCHR(mode)) return "characterSpecial";
    if (S_ISBLK(mode)) return "blockSpecial";
    return "unknown";
}

Value nameOrNull(const std::optional<std::string>& name) { return name ? Value(*name) : Value(); }

std::string octalPermissions(mode_t mode) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

// A one-line description of an item's attributes for the messages of errors 10 and 11.
std::string describeAttributes(const struct stat& status) {
    Dictionary attributes;
    attributes.set("type", Value(itemType(status.st_mode)));
    attributes.set("owner", nameOrNull(userNameOfId(status.st_uid)));
    attributes.set("ownerId", Value(status.st_uid));
    attributes.set("group", nameOrNull(groupNameOfId(status.st_gid)));
    attributes.set("groupId", Value(status.st_gid));
    attributes.set("permissions", Value(octalPermissions(status.st_mode)));
    return writeJson(Value(std::make_shared<Dictionary>(std::move(attributes))), JsonStyle::Compact);
}

bool fail(QVFileUtilErrorSlot* error, int code, const std::string& message) {
    QVFileUtil::optionallyPopulateError(error, code, message);
    return false;
}

bool containsNul(const std::string& path) {
    return path.find('\0') != std::string::npos;
}

}  // namespace

// Every change acts on the item at the path itself (lchown, fchmodat without following):
// a symbolic link planted at one of these paths gets the new owner, and the item it points
// to keeps its owner and mode. Linux cannot change a link's mode, which shows as error 5.
bool QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(const std::string& path,
                                                                 QVFileUtilErrorSlot* error) {
    if (geteuid() != 0) return true;
    if (error) error->reset();
    if (path.empty()) return fail(error, QVFileUtilError::kNoPath, QVFileUtilMessages::noPath());
    // A path with a NUL byte cannot be handed to the system whole; it is refused before
    // anything looks at the shorter path its C form names.
    if (containsNul(path)) {
        return fail(error, QVFileUtilError::kIllegalCharactersInPath, QVFileUtilMessages::illegalCharactersInPath());
    }
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return fail(error, QVFileUtilError::kNoItemAtPath, QVFileUtilMessages::noItemAtPath());
    }
    if (lchown(path.c_str(), getuid(), QVFileUtil::kDaemonGroupId) != 0) {
        return fail(error, QVFileUtilError::kOwnerNotChanged, QVFileUtilMessages::ownerNotChanged(path, errno));
    }
    if (fchmodat(AT_FDCWD, path.c_str(), kOwnerReadWrite, AT_SYMLINK_NOFOLLOW) != 0) {
        optionallyPopulateError(error, QVFileUtilError::kPermissionsNotChanged,
                                QVFileUtilMessages::permissionsNotChanged(path, errno));
    }
    if (lchown(path.c_str(), static_cast<uid_t>(-1), QVFileUtil::kDaemonGroupId) != 0) {
        optionallyPopulateError(error, QVFileUtilError::kGroupNotChanged, QVFileUtilMessages::groupNotChanged(path, errno));
    }
    return true;
}

bool QVFileUtil::isAccessiblePath(const std::string& path, QVFileUtilErrorSlot* error) {
    struct stat status {};
    if (containsNul(path) || lstat(path.c_str(), &status) != 0) {
        return fail(error, QVFileUtilError::kDoesNotExist, QVFileUtilMessages::doesNotExist(path));
    }
    if (!S_ISDIR(status.st_mode)) {
        return fail(error, QVFileUtilError::kNotADirectory, QVFileUtilMessages::notADirectory(path));
    }
    if (!isDaemonGroup(status.st_gid)) {
        return fail(error, QVFileUtilError::kGroupIsNotWheel,
                    QVFileUtilMessages::groupIsNotWheel(path, describeAttributes(status)));
    }
    if (status.st_uid != 0) {
        return fail(error, QVFileUtilError::kOwnerIsNotRoot,
                    QVFileUtilMessages::ownerIsNotRoot(path, describeAttributes(status)));
    }
    return true;
}

void QVFileUtil::optionallyPopulateError(QVFileUtilErrorSlot* error, int code, const std::string& message) {
    if (error == nullptr) return;
    QVFileUtilError filled;
    filled.code = code;
    filled.message = message;
    *error = std::move(filled);
}

}  // namespace tov
