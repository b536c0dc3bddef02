#include "platform/PlatformPaths.h"

#include <unistd.h>

#include <climits>
#include <string>

namespace tov {
namespace {

// The system temporary folder of the daemon's user, without its final slash.
std::string systemTemporaryFolder() {
    char buffer[PATH_MAX] = {};
    const size_t length = confstr(_CS_DARWIN_USER_TEMP_DIR, buffer, sizeof buffer);
    std::string folder = (length > 0 && length <= sizeof buffer) ? std::string(buffer) : std::string("/tmp/");
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    return folder;
}

}  // namespace

const PlatformPathTable& platformPaths() {
    static const PlatformPathTable table{
        "/Library/Application Support/Quorvel/KELD/Components/TOV",
        "/Library/Application Support/Quorvel/KELD/logs",
        "/Library/LaunchDaemons/com.quorvel.keldservice.tov.plist",
        systemTemporaryFolder(),
    };
    return table;
}

}  // namespace tov
