#include "discovery/macos/RegistryMatchingKey.h"

#include <charconv>
#include <vector>

#include "common/TextUtils.h"

namespace tov {
namespace {

// A registry class name fits in an io_name_t of 128 bytes with its terminating zero.
constexpr std::size_t kMaximumClassNameBytes = 127;

bool isClassNameCharacter(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
           (character >= '0' && character <= '9') || character == '_';
}

bool isClassName(std::string_view text) {
    if (text.empty() || text.size() > kMaximumClassNameBytes) return false;
    for (const char character : text) {
        if (!isClassNameCharacter(character)) return false;
    }
    return true;
}

// Decimal digits only, within a 32-bit signed number.
std::optional<std::int32_t> usageNumber(std::string_view text) {
    if (text.empty() || text.front() < '0' || text.front() > '9') return std::nullopt;
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace

std::optional<RegistryMatchingKey> parseRegistryMatchingKey(std::string_view key) {
    const std::vector<std::string_view> pieces = splitAt(key, ' ');
    if ((pieces.size() != 1 && pieces.size() != 3) || !isClassName(pieces[0])) return std::nullopt;
    RegistryMatchingKey matching{std::string(pieces[0]), std::nullopt, std::nullopt};
    if (pieces.size() == 1) return matching;
    matching.usagePage = usageNumber(pieces[1]);
    matching.usage = usageNumber(pieces[2]);
    if (!matching.usagePage || !matching.usage) return std::nullopt;
    return matching;
}

}  // namespace tov
