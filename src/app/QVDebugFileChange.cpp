#include "app/QVDebugFileChange.h"

#include <cstdio>
#include <optional>

#include "app/LogLevelChoice.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

// The trigger's text is ASCII, but it may hold line breaks or control bytes, which must
// not make log lines of their own nor vanish from the line: they are shown as \xNN.
std::string visibleAscii(const std::string& text) {
    std::string visible;
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (code >= 0x20 && code < 0x7f) {
            visible += byte;
            continue;
        }
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", code);
        visible += escaped;
    }
    return visible;
}

}  // namespace

// The trigger's text is handed to the logger as it stands: an empty or unreadable file
// gives "", which the logger ignores. Deleting the trigger restores the default level.
void didDebugFileChanged(const std::string& triggerPath) {
    const std::string level = readDebugTriggerText(triggerPath).value_or(kDefaultLogLevel);
    if (equalsIgnoringCase(level, QVSLogger::currentMinimumLogLevel())) return;
    QVSLogger::setMinimumLogLevel(level);
    // Critical, so the line is written whatever the level now is.
    QVSLogger::critical("Set new loglevel [%s], [%s]", visibleAscii(level).c_str(),
                        QVSLogger::currentMinimumLogLevel().c_str());
}

}  // namespace tov
