#pragma once

// The message texts of QVFileUtil's errors, one function per code, worded exactly as the
// daemon has always logged them (the two blanks before "Error code" included).

#include <string>

namespace tov {

class QVFileUtilMessages {
public:
    static std::string noPath();                                                   // 1
    static std::string noItemAtPath();                                             // 2
    static std::string illegalCharactersInPath();                                  // 3
    static std::string ownerNotChanged(const std::string& path, int errorNumber);   // 4
    static std::string permissionsNotChanged(const std::string& path, int errorNumber);  // 5
    static std::string illegalCharactersInCommand(const std::string& command);     // 6
    // The path stands where the group would be expected: the wording is kept.
    static std::string groupNotChanged(const std::string& path, int errorNumber);  // 7
    static std::string doesNotExist(const std::string& path);                      // 8
    static std::string notADirectory(const std::string& path);                     // 9
    static std::string groupIsNotWheel(const std::string& path, const std::string& attributes);  // 10
    static std::string ownerIsNotRoot(const std::string& path, const std::string& attributes);   // 11
};

}  // namespace tov
