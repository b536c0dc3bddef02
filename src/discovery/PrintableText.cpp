#include "discovery/PrintableText.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

#include "common/TextUtils.h"

namespace tov {
namespace {

constexpr UChar32 kReplacementCharacter = 0xFFFD;

void appendCharacter(std::string& text, UChar32 character) {
    std::uint8_t buffer[U8_MAX_LENGTH];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(buffer, length, character);
    text.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
}

}  // namespace

std::string printableText(std::string_view bytes) {
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto length = static_cast<std::int32_t>(bytes.size());
    std::string text;
    text.reserve(bytes.size());
    for (std::int32_t position = 0; position < length;) {
        UChar32 character;
        U8_NEXT(data, position, length, character);
        if (character < 0) character = kReplacementCharacter;
        if (u_charType(character) == U_CONTROL_CHAR) continue;
        appendCharacter(text, character);
    }
    return trimWhitespaceAndNewlines(text);
}

}  // namespace tov
