#pragma once

#include <string>

namespace tov {

class QVSFileUtils {
public:
    // True when the file begins with the ZIP local-file-header signature PK\3\4.
    static bool IsZipFile(const std::string& path);
};

}  // namespace tov
