#include "common/PrintableText.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdint>

#include "common/TextUtils.h"

namespace tov {

namespace {

// Control characters, the line and paragraph separators, and the bidirectional controls,
// which would let a name display in another order than it is stored ("exe.gnp").
bool isKept(UChar32 character) {
    const std::int8_t type = u_charType(character);
    if (type == U_CONTROL_CHAR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR) return false;
    return !u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL);
}

}  // namespace

std::string printableText(std::string_view bytes) {
    // fromUTF8 already replaces ill-formed sequences with U+FFFD.
    const icu::UnicodeString decoded =
        icu::UnicodeString::fromUTF8(icu::StringPiece(bytes.data(), static_cast<std::int32_t>(bytes.size())));
    icu::UnicodeString kept;
    for (std::int32_t at = 0; at < decoded.length(); at = decoded.moveIndex32(at, 1)) {
        const UChar32 character = decoded.char32At(at);
        if (isKept(character)) kept.append(character);
    }
    std::string text;
    kept.toUTF8String(text);
    return trimWhitespaceAndNewlines(text);
}

}  // namespace tov
