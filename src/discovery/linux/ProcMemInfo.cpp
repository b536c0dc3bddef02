#include "discovery/linux/ProcMemInfo.h"

#include <charconv>
#include <limits>
#include <string>

#include "common/TextUtils.h"

namespace tov {
namespace {

constexpr std::uint64_t kKilobyte = 1024;

// The amount of a value text "16318404 kB" (or a bare count) in bytes.
std::optional<std::uint64_t> bytesOf(std::string_view value) {
    const std::string text = trimWhitespaceAndNewlines(value);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end == text.data()) return std::nullopt;
    const std::string unit = trimWhitespaceAndNewlines(std::string_view(end, static_cast<std::size_t>(text.data() + text.size() - end)));
    if (unit.empty()) return number;
    if (unit != "kB") return std::nullopt;
    if (number > std::numeric_limits<std::uint64_t>::max() / kKilobyte) return std::nullopt;
    return number * kKilobyte;
}

std::optional<std::uint64_t>* slotOf(ProcMemInfo& info, std::string_view name) {
    if (name == "MemTotal") return &info.memTotal;
    if (name == "MemAvailable") return &info.memAvailable;
    if (name == "MemFree") return &info.memFree;
    if (name == "Buffers") return &info.buffers;
    if (name == "Cached") return &info.cached;
    if (name == "SwapTotal") return &info.swapTotal;
    if (name == "SwapFree") return &info.swapFree;
    return nullptr;
}

void readLine(ProcMemInfo& info, std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return;
    std::optional<std::uint64_t>* slot = slotOf(info, line.substr(0, colon));
    if (slot == nullptr) return;
    if (const std::optional<std::uint64_t> bytes = bytesOf(line.substr(colon + 1))) *slot = bytes;
}

}  // namespace

ProcMemInfo parseProcMemInfo(std::string_view text) {
    ProcMemInfo info;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        readLine(info, text.substr(0, end));
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    return info;
}

}  // namespace tov
