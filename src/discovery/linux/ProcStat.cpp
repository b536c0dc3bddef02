#include "discovery/linux/ProcStat.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "common/QVSLogger.h"

namespace tov {
namespace {

constexpr std::string_view kBootTimePrefix = "btime ";
// 9999-12-31T23:59:59Z: later seconds are no date the report can write.
constexpr std::int64_t kLatestSeconds = 253402300799;

std::optional<std::int64_t> wholeNumber(std::string_view text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\r')) text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || number < 0 ||
        number > kLatestSeconds) {
        return std::nullopt;
    }
    return number;
}

}  // namespace

std::optional<std::int64_t> ProcStat::bootTime(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.substr(0, kBootTimePrefix.size()) == kBootTimePrefix) {
            return wholeNumber(line.substr(kBootTimePrefix.size()));
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> ProcStat::readBootTime(SystemSource& source) {
    const std::optional<std::string> text = source.readFile(kPath, kReadLimit);
    if (!text) {
        QVSLogger::debug("%s cannot be read: the boot time is unknown.", kPath);
        return std::nullopt;
    }
    std::optional<std::int64_t> seconds = bootTime(*text);
    if (!seconds) QVSLogger::debug("%s has no readable btime line.", kPath);
    return seconds;
}

}  // namespace tov
