#include "platform/PlatformPaths.h"

namespace tov {

const PlatformPathTable& platformPaths() {
    static const PlatformPathTable table{
        "/Library/Application Support/Quorvel/KELD/Components/TOV",
        "/Library/Application Support/Quorvel/KELD/logs",
        "/Library/LaunchDaemons/com.quorvel.keldservice.tov.plist",
    };
    return table;
}

}  // namespace tov
