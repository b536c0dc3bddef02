#include "app/QVAppDaemonUtil.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "common/QVSCommand.h"
#include "common/TextUtils.h"
#include "platform/ProcessId.h"
#include "platform/ProcessMemory.h"

namespace tov {
namespace {

constexpr const char* kInstanceListCommand = "ps acx | grep -i tov";
constexpr const char* kMemoryListCommand = "ps aux | grep -i tov";
// Tool output is read in lines of at most this many bytes; a longer line goes on as the
// next one.
constexpr std::size_t kLineLimit = 1023;
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kWhiteSpace = " \t\n\r\v\f";
constexpr std::string_view kExitingInstance = "(tov)\n";

// The output cut after each line feed (kept) and after every kLineLimit bytes.
std::vector<std::string_view> outputLines(std::string_view output) {
    std::vector<std::string_view> lines;
    while (!output.empty()) {
        const std::size_t lineFeed = output.find('\n');
        const std::size_t length = std::min(lineFeed == std::string_view::npos ? output.size() : lineFeed + 1, kLineLimit);
        lines.push_back(output.substr(0, length));
        output.remove_prefix(length);
    }
    return lines;
}

// The pieces between separator characters, empty pieces included.
std::vector<std::string> piecesSplitAt(std::string_view text, std::string_view separators) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find_first_of(separators, start);
        pieces.emplace_back(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) return pieces;
        start = end + 1;
    }
}

std::vector<std::string> nonEmptyPieces(std::string_view text, std::string_view separators) {
    std::vector<std::string> pieces = piecesSplitAt(text, separators);
    std::erase_if(pieces, [](const std::string& piece) { return piece.empty(); });
    return pieces;
}

// The leading decimal number of text, independent of the locale; 0 when there is none.
double leadingDoubleValue(const std::string& text) {
    const std::optional<LeadingDecimal> number = leadingDecimal(text);
    return number ? number->value : 0;
}

// A share of memory as ps prints it; anything below zero, infinite or not a number is no
// measurement and reads as 0.
double memoryPercentage(const std::string& text) {
    const double value = leadingDoubleValue(text);
    return std::isfinite(value) && value > 0 ? value : 0;
}

bool isCountedInstanceLine(std::string_view line, long currentPid) {
    const std::vector<std::string> pieces = piecesSplitAt(line, kBlanks);
    const std::optional<std::string> processId = QVAppDaemonUtil::firstNonEmptyComponentOfArray(pieces);
    const std::optional<std::string> name = QVAppDaemonUtil::lastNonEmptyComponentOfArray(pieces);
    if (!processId || name == kExitingInstance) return false;
    const std::int64_t value = leadingIntegerValue(*processId);
    return value != 0 && value != currentPid;
}

// The last piece of a listing line, when the line has at least three pieces and the last
// begins with name.
std::optional<std::string> listedJobPiece(const std::vector<std::string>& pieces, const std::string& name) {
    if (pieces.size() < 3 || name.empty()) return std::nullopt;
    std::optional<std::string> last = QVAppDaemonUtil::lastNonEmptyComponentOfArray(pieces);
    if (!last || !hasPrefix(*last, name)) return std::nullopt;
    return last;
}

}  // namespace

std::int64_t QVAppDaemonUtil::tovInstanceCountExcludingCurrentProcess() {
    const std::optional<std::string> output = QVSCommand::run(kInstanceListCommand);
    return output ? instanceCountInProcessList(*output, currentProcessId()) : 0;
}

std::int64_t QVAppDaemonUtil::instanceCountInProcessList(const std::string& output, long currentPid) {
    std::int64_t count = 0;
    for (std::string_view line : outputLines(output)) {
        if (isCountedInstanceLine(line, currentPid)) ++count;
    }
    return count;
}

double QVAppDaemonUtil::memoryConsumptionOfCurrentProcess() {
    if (const std::optional<std::uint64_t> resident = residentBytesOfCurrentProcess()) {
        return static_cast<double>(*resident);
    }
    const std::optional<std::string> output = QVSCommand::run(kMemoryListCommand);
    return output ? memoryFromProcessList(*output, currentProcessId(), discoverRam()) : 0;
}

// ps aux columns: user, process id, %cpu, %mem, ...
double QVAppDaemonUtil::memoryFromProcessList(const std::string& output, long currentPid, std::uint64_t ram) {
    for (std::string_view line : outputLines(output)) {
        const std::vector<std::string> pieces = nonEmptyPieces(line, kWhiteSpace);
        if (pieces.size() < 4) continue;
        const std::int64_t processId = leadingIntegerValue(pieces[1]);
        if (processId == 0 || processId != currentPid) continue;
        return memoryPercentage(pieces[3]) / 100.0 * static_cast<double>(ram);
    }
    return 0;
}

std::uint64_t QVAppDaemonUtil::discoverRam() {
    return physicalMemoryBytes();
}

std::optional<std::string> QVAppDaemonUtil::firstNonEmptyComponentOfArray(const std::vector<std::string>& components) {
    for (const std::string& component : components) {
        if (!component.empty()) return component;
    }
    return std::nullopt;
}

std::optional<std::string> QVAppDaemonUtil::lastNonEmptyComponentOfArray(const std::vector<std::string>& components) {
    for (auto component = components.rbegin(); component != components.rend(); ++component) {
        if (!component->empty()) return *component;
    }
    return std::nullopt;
}

bool QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(const std::string& name,
                                                                         const std::string& output) {
    return listedJobPiece(piecesSplitAt(output, kBlanks), name).has_value();
}

bool QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(const std::string& name, std::int32_t pid,
                                                                        const std::string& output) {
    const std::vector<std::string> pieces = piecesSplitAt(output, kBlanks);
    if (!listedJobPiece(pieces, name)) return false;
    const std::string processId = firstNonEmptyComponentOfArray(pieces).value_or("");
    if (hasPrefix(processId, "-")) return false;  // listed, but not running
    if (pid < 1) return true;
    return leadingIntegerValue(processId) == pid;
}

}  // namespace tov
