// Hands arbitrary bytes to the KEY=value parser of os-release, machine-info and the
// locale files, and makes the parsed values printable as the discoverers do. Every key
// must be a valid name given once, every lookup must find its entry's value, and the
// printable form of a value must be valid UTF-8 without control characters.

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

#include "common/PrintableText.h"
#include "discovery/formats/OsRelease.h"

namespace {

bool isValidKey(const std::string& key) {
    if (key.empty() || (key[0] >= '0' && key[0] <= '9')) return false;
    for (char character : key) {
        const bool letterOrDigit = (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
                                   (character >= '0' && character <= '9');
        if (!letterOrDigit && character != '_') return false;
    }
    return true;
}

bool isPrintableUtf8(const std::string& text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t position = 0; position < length;) {
        UChar32 character;
        U8_NEXT(bytes, position, length, character);
        if (character < 0 || u_charType(character) == U_CONTROL_CHAR) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const tov::OsRelease release = tov::OsRelease::parse(text);
    std::set<std::string> keys;
    for (const auto& [key, value] : release.entries()) {
        if (!isValidKey(key) || !keys.insert(key).second) std::abort();
        if (release.value(key) != value) std::abort();
        if (!isPrintableUtf8(tov::printableText(value))) std::abort();
    }
    return 0;
}
