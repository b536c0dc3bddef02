#pragma once

#include <string>
#include <string_view>

namespace tov {

// MD5 digests as 32 lower-case hexadecimal characters, computed in-process.
class QVSMD5Utils {
public:
    // "" for a missing path, a folder or an unreadable file.
    static std::string md5OfFile(const std::string& path);
    // "" for no bytes.
    static std::string md5OfData(std::string_view bytes);
};

}  // namespace tov
