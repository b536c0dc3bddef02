#include "discovery/formats/SmbiosStructure.h"

#include <algorithm>

#include "common/PrintableText.h"

namespace tov {
namespace {

constexpr std::size_t kHeaderLength = 4;
// SMBIOS allows at most 255 strings per structure (the index is one byte).
constexpr std::size_t kMaximumStrings = 255;

// The strings of the set that follows the formatted area, up to its terminating empty
// string or the end of the bytes, whichever comes first.
std::vector<std::string_view> stringSetOf(std::string_view rest) {
    std::vector<std::string_view> strings;
    while (!rest.empty() && strings.size() < kMaximumStrings) {
        const std::size_t end = rest.find('\0');
        const std::string_view text = rest.substr(0, end);
        if (text.empty()) break;
        strings.push_back(text);
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    return strings;
}

}  // namespace

std::optional<SmbiosStructure> SmbiosStructure::parse(std::string_view raw) {
    if (raw.size() < kHeaderLength) return std::nullopt;
    const auto declaredLength = static_cast<std::uint8_t>(raw[1]);
    if (declaredLength < kHeaderLength) return std::nullopt;
    const std::size_t formattedLength = std::min<std::size_t>(declaredLength, raw.size());
    const std::string_view rest = raw.size() > declaredLength ? raw.substr(declaredLength) : std::string_view();
    return SmbiosStructure(raw.substr(0, formattedLength), stringSetOf(rest), declaredLength);
}

SmbiosStructure::SmbiosStructure(std::string_view formatted, std::vector<std::string_view> strings,
                                 std::uint8_t declaredLength)
    : formatted_(formatted), type_(static_cast<std::uint8_t>(formatted[0])), declaredLength_(declaredLength) {
    strings_.reserve(strings.size());
    for (std::string_view text : strings) strings_.push_back(printableText(text));
}

bool SmbiosStructure::holds(std::size_t offset, std::size_t width) const {
    return offset + width <= formatted_.size();
}

std::optional<std::uint8_t> SmbiosStructure::byteAt(std::size_t offset) const {
    if (!holds(offset, 1)) return std::nullopt;
    return static_cast<std::uint8_t>(formatted_[offset]);
}

std::optional<std::uint16_t> SmbiosStructure::wordAt(std::size_t offset) const {
    if (!holds(offset, 2)) return std::nullopt;
    return static_cast<std::uint16_t>(*byteAt(offset) | (*byteAt(offset + 1) << 8));
}

std::optional<std::uint32_t> SmbiosStructure::doubleWordAt(std::size_t offset) const {
    if (!holds(offset, 4)) return std::nullopt;
    return static_cast<std::uint32_t>(*wordAt(offset)) | (static_cast<std::uint32_t>(*wordAt(offset + 2)) << 16);
}

std::string SmbiosStructure::stringAt(std::size_t offset) const {
    const std::optional<std::uint8_t> index = byteAt(offset);
    if (!index || *index == 0 || *index > strings_.size()) return "";
    return strings_[*index - 1];
}

}  // namespace tov
