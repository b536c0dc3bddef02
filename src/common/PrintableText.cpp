#include "common/PrintableText.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdint>

#include "common/TextUtils.h"

namespace tov {

std::string printableText(std::string_view bytes) {
    // fromUTF8 already replaces ill-formed sequences with U+FFFD.
    const icu::UnicodeString decoded =
        icu::UnicodeString::fromUTF8(icu::StringPiece(bytes.data(), static_cast<std::int32_t>(bytes.size())));
    icu::UnicodeString kept;
    for (std::int32_t at = 0; at < decoded.length(); at = decoded.moveIndex32(at, 1)) {
        const UChar32 character = decoded.char32At(at);
        if (u_charType(character) != U_CONTROL_CHAR) kept.append(character);
    }
    std::string text;
    kept.toUTF8String(text);
    return trimWhitespaceAndNewlines(text);
}

}  // namespace tov
