#include "common/DisplayWidth.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

namespace tov {
namespace {

constexpr std::string_view kEllipsis = "…";

std::size_t widthOfCharacter(UChar32 character) {
    if (character < 0) return 1;
    const std::int8_t type = u_charType(character);
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR) return 0;
    const auto eastAsianWidth = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return eastAsianWidth == U_EA_WIDE || eastAsianWidth == U_EA_FULLWIDTH ? 2 : 1;
}

// Walks the text one character at a time; answers the offset of the next character and
// its width through the arguments.
std::size_t nextCharacter(std::string_view text, std::size_t at, std::size_t& width) {
    auto offset = static_cast<std::int32_t>(at);
    UChar32 character = 0;
    U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data()), offset, static_cast<std::int32_t>(text.size()),
            character);
    width = widthOfCharacter(character);
    return static_cast<std::size_t>(offset);
}

// The length in bytes of the leading whole characters that fit in width columns.
std::size_t bytesFitting(std::string_view text, std::size_t width) {
    std::size_t used = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t characterWidth = 0;
        const std::size_t next = nextCharacter(text, at, characterWidth);
        if (used + characterWidth > width) break;
        used += characterWidth;
        at = next;
    }
    return at;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t characterWidth = 0;
        at = nextCharacter(text, at, characterWidth);
        width += characterWidth;
    }
    return width;
}

std::string cutToDisplayWidth(std::string_view text, std::size_t width) {
    if (displayWidth(text) <= width) return std::string(text);
    if (width == 0) return "";
    std::string cut(text.substr(0, bytesFitting(text, width - 1)));
    return cut + std::string(kEllipsis);
}

}  // namespace tov
