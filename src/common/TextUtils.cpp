#include "common/TextUtils.h"

#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <cctype>
#include <cstdlib>
#include <locale>
#include <memory>
#include <sstream>

namespace tov {
namespace {

bool isWhitespaceOrNewline(UChar32 character) {
    return character >= 0 && u_isUWhiteSpace(character);
}

// ICU's transliterators are not to be shared between threads: each thread builds its own.
icu::Transliterator* javaEscapeDecoder() {
    thread_local std::unique_ptr<icu::Transliterator> decoder = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Transliterator> made(
            icu::Transliterator::createInstance("Hex-Any/Java", UTRANS_FORWARD, status));
        if (U_FAILURE(status)) made.reset();
        return made;
    }();
    return decoder.get();
}

}  // namespace

std::string trimWhitespaceAndNewlines(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t start = 0;
    while (start < length) {
        std::int32_t next = start;
        UChar32 character;
        U8_NEXT(bytes, next, length, character);
        if (!isWhitespaceOrNewline(character)) break;
        start = next;
    }
    std::int32_t end = length;
    while (end > start) {
        std::int32_t previous = end;
        UChar32 character;
        U8_PREV(bytes, start, previous, character);
        if (!isWhitespaceOrNewline(character)) break;
        end = previous;
    }
    return std::string(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
}

std::string decodeJavaEscapes(std::string text) {
    if (text.find("\\u") == std::string::npos) return text;
    icu::Transliterator* decoder = javaEscapeDecoder();
    if (!decoder) return text;
    icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(text);
    decoder->transliterate(unicode);
    std::string decoded;
    unicode.toUTF8String(decoded);
    return decoded;
}

std::string asciiLowercase(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::string asciiUppercase(std::string text) {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    return left.size() == right.size() && asciiLowercase(std::string(left)) == asciiLowercase(std::string(right));
}

bool hasPrefix(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool hasSuffix(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

std::vector<std::string_view> splitAt(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::int64_t leadingIntegerValue(std::string_view text) {
    const std::string terminated(text);
    return std::strtoll(terminated.c_str(), nullptr, 10);
}

std::optional<LeadingDecimal> leadingDecimal(std::string_view text) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text.front())) || text.front() == '+') {
        return std::nullopt;
    }
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    LeadingDecimal number;
    if (!(stream >> number.value)) return std::nullopt;
    number.length = stream.eof() ? text.size() : static_cast<std::size_t>(stream.tellg());
    return number;
}

}  // namespace tov
