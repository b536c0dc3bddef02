#include "support/DaemonLog.h"

#include <sstream>

#include "common/FileAccess.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"

namespace tov::testing {
namespace {

constexpr std::uint64_t kMaximumLogBytes = 64 << 20;

std::string liveLogPath() { return Paths::logsFolder() + "/tov.log"; }

bool hasLevel(const std::string& line, const char* paddedLevel) {
    return line.find(std::string(" - ") + paddedLevel + " - ") != std::string::npos;
}

}  // namespace

std::uint64_t daemonLogSize() { return regularFileSize(liveLogPath()); }

std::string daemonLogSince(std::uint64_t mark) {
    const std::string text = readWholeFile(liveLogPath(), kMaximumLogBytes).value_or("");
    return mark <= text.size() ? text.substr(mark) : text;
}

std::vector<std::string> errorLinesIn(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (hasLevel(line, QVSLogger::kError) || hasLevel(line, QVSLogger::kCritical)) lines.push_back(line);
    }
    return lines;
}

}  // namespace tov::testing
