#pragma once

// Ownership and permission repair and checks for the daemon's root-owned files and
// folders, with the error vocabulary of the domain "QVFileUtilErrorDomain".

#include <optional>
#include <string>

namespace tov {

struct QVFileUtilError {
    static constexpr const char* kDomain = "QVFileUtilErrorDomain";
    std::string domain = kDomain;
    int code = 0;
    std::string message;  // the user-information entry "message"
};

// The caller's error slot: an error, or nothing.
using QVFileUtilErrorSlot = std::optional<QVFileUtilError>;

class QVFileUtil {
public:
    // Makes a file or folder belong to the current user and group 0 with mode 0600. Does
    // nothing and answers true when not run as root.
    static bool ensureReadWritePermissionsForRootUserFileAtPath(const std::string& path,
                                                                QVFileUtilErrorSlot* error);
    // The folder exists, is a folder, and belongs to root and group 0.
    static bool isAccessiblePath(const std::string& path, QVFileUtilErrorSlot* error);
    // Fills the slot whenever one is given.
    static void optionallyPopulateError(QVFileUtilErrorSlot* error, int code, const std::string& message);
};

}  // namespace tov
