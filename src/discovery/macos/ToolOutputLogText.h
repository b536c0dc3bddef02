#pragma once

// Tool output as it may appear inside a log line. The output is outside input: it can be
// large, hold line breaks or control characters, or be binary. A log line shows a
// bounded, printable rendering of it, never the raw bytes.

#include <cstddef>
#include <string>
#include <string_view>

namespace tov {

inline constexpr std::size_t kLoggedDataBytes = 64;
inline constexpr std::size_t kLoggedTextBytes = 1024;

// The first kLoggedDataBytes bytes in hexadecimal, in groups of four ("<3c3f786d 6c>"),
// followed by the whole length when the bytes were cut ("<3c3f...> (5000 bytes)").
std::string loggedData(std::string_view bytes);

// The text made printable (line breaks and control characters removed, ill-formed UTF-8
// replaced), cut at a character boundary after kLoggedTextBytes bytes and then marked "...".
std::string loggedText(std::string_view text);

}  // namespace tov
