#pragma once

// Small stateless text helpers shared by every part of the daemon.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tov {

// Removes Unicode white space and line breaks from both ends of UTF-8 text.
std::string trimWhitespaceAndNewlines(std::string_view text);

// Turns every Java-style escape (backslash, "u", four hex digits) into the character it
// names; escaped surrogate pairs combine into one character. Other text is unchanged.
std::string decodeJavaEscapes(std::string text);

// The text with A to Z turned into a to z (or a to z into A to Z); other bytes are kept.
std::string asciiLowercase(std::string text);
std::string asciiUppercase(std::string text);

// ASCII case-insensitive comparison of whole strings.
bool equalsIgnoringCase(std::string_view left, std::string_view right);
bool hasPrefix(std::string_view text, std::string_view prefix);
bool hasSuffix(std::string_view text, std::string_view suffix);

// The pieces of text between the separators, empty ones included: "a::b" gives "a", ""
// and "b", and "" gives one empty piece. The pieces point into text.
std::vector<std::string_view> splitAt(std::string_view text, char separator);

// The leading integer of text as C's strtoll reads it: white space and a sign are
// accepted, anything after the digits is ignored, text without digits gives 0.
std::int64_t leadingIntegerValue(std::string_view text);

// A decimal number read from the start of text in the C locale's notation, whatever the
// process's locale ("12.5" of "12.5%"), and the count of characters it took; nothing when
// text does not start with a digit, a point or a minus sign followed by a number. Written
// for std::from_chars on double, which macOS's C++ library lacks.
struct LeadingDecimal {
    double value = 0;
    std::size_t length = 0;
};
std::optional<LeadingDecimal> leadingDecimal(std::string_view text);

}  // namespace tov
