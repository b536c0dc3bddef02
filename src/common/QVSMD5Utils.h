#pragma once

#include <string>
#include <string_view>

namespace tov {

// MD5 digests as 32 lower-case hexadecimal characters, computed in-process.
class QVSMD5Utils {
public:
    // The digest of the file's bytes (a symbolic link is followed). "" for a missing path,
    // a folder, anything else that is not a regular file (a pipe, a device), or a file that
    // cannot be read. An empty file has the digest of no bytes.
    static std::string md5OfFile(const std::string& path);
    // "" for no bytes.
    static std::string md5OfData(std::string_view bytes);
};

}  // namespace tov
