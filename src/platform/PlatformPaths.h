#pragma once

// The folders that differ between macOS and Linux; each platform folder defines them.

#include <string>

namespace tov {

struct PlatformPathTable {
    std::string componentFolder;
    std::string logsFolder;
    std::string jobFile;
    std::string archiveStagingFolder;
};

const PlatformPathTable& platformPaths();

}  // namespace tov
