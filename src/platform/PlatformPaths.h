#pragma once

// The folders that differ between macOS and Linux; each platform folder defines them.

#include <string>

namespace tov {

struct PlatformPathTable {
    std::string componentFolder;
    std::string logsFolder;
    std::string jobFile;
};

const PlatformPathTable& platformPaths();

}  // namespace tov
