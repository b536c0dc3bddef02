#include "platform/PlatformPaths.h"

namespace tov {

const PlatformPathTable& platformPaths() {
    static const PlatformPathTable table{
        "/opt/Quorvel/KELD/Components/TOV",
        "/opt/Quorvel/KELD/logs",
        "/etc/systemd/system/com.quorvel.keldservice.tov.service",
    };
    return table;
}

}  // namespace tov
