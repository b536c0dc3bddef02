#pragma once

// Ownership and permission repair and checks for the daemon's root-owned files and
// folders, with the error vocabulary of the domain "QVFileUtilErrorDomain".

#include <sys/types.h>

#include <optional>
#include <string>

namespace tov {

struct QVFileUtilError {
    static constexpr const char* kDomain = "QVFileUtilErrorDomain";

    // The codes; their message texts come from QVFileUtilMessages.
    static constexpr int kNoPath = 1;
    static constexpr int kNoItemAtPath = 2;
    static constexpr int kIllegalCharactersInPath = 3;
    static constexpr int kOwnerNotChanged = 4;
    static constexpr int kPermissionsNotChanged = 5;
    static constexpr int kIllegalCharactersInCommand = 6;  // kept for the vocabulary: no command is run
    static constexpr int kGroupNotChanged = 7;
    static constexpr int kDoesNotExist = 8;
    static constexpr int kNotADirectory = 9;
    static constexpr int kGroupIsNotWheel = 10;
    static constexpr int kOwnerIsNotRoot = 11;

    std::string domain = kDomain;
    int code = 0;
    std::string message;  // the user-information entry "message"
};

// The caller's error slot: an error, or nothing.
using QVFileUtilErrorSlot = std::optional<QVFileUtilError>;

class QVFileUtil {
public:
    // The group of the daemon's files: "wheel" on macOS, which is group 0 there, and
    // root's own group 0 on Linux (a Linux "wheel" is an administrators' group).
    static constexpr gid_t kDaemonGroupId = 0;

    // Makes a file or folder belong to the real user and group 0 ("wheel" on macOS) with
    // mode 0600. Does nothing and answers true when the effective user is not root. A given
    // slot is emptied first and then holds the last error met. Answers false for errors 1 to
    // 4 (nothing changed beyond that point), true otherwise (also after errors 5 and 7). A
    // symbolic link at the path is changed itself, never the item it points to.
    static bool ensureReadWritePermissionsForRootUserFileAtPath(const std::string& path,
                                                                QVFileUtilErrorSlot* error);
    // The item exists, is a folder (a symbolic link is not), and belongs to root and to
    // the daemon's group. A given slot holds the error on false and is left
    // as it was on true.
    static bool isAccessiblePath(const std::string& path, QVFileUtilErrorSlot* error);
    // Fills the slot whenever one is given.
    static void optionallyPopulateError(QVFileUtilErrorSlot* error, int code, const std::string& message);
};

}  // namespace tov
