#include "discovery/linux/CpuList.h"

#include <charconv>
#include <string>

#include "common/TextUtils.h"

namespace tov {
namespace {

std::optional<std::uint32_t> cpuNumberOf(std::string_view text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number >= kCpuNumberLimit) return std::nullopt;
    return number;
}

// Appends "N" or "N-M" to the list; false when the item is malformed.
bool appendItem(std::string_view item, std::vector<std::uint32_t>& cpus) {
    const std::size_t dash = item.find('-');
    const std::optional<std::uint32_t> first = cpuNumberOf(item.substr(0, dash));
    if (!first) return false;
    if (dash == std::string_view::npos) {
        cpus.push_back(*first);
        return true;
    }
    const std::optional<std::uint32_t> last = cpuNumberOf(item.substr(dash + 1));
    if (!last || *last < *first) return false;
    for (std::uint32_t cpu = *first; cpu <= *last; ++cpu) cpus.push_back(cpu);
    return true;
}

}  // namespace

std::optional<std::vector<std::uint32_t>> parseCpuList(std::string_view text) {
    const std::string list = trimWhitespaceAndNewlines(text);
    std::vector<std::uint32_t> cpus;
    std::string_view rest = list;
    while (!rest.empty()) {
        const std::size_t comma = rest.find(',');
        if (!appendItem(rest.substr(0, comma), cpus) || cpus.size() > kCpuNumberLimit) return std::nullopt;
        if (comma == std::string_view::npos) break;
        rest.remove_prefix(comma + 1);
    }
    return cpus;
}

}  // namespace tov
