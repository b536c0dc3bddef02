#pragma once

// How wide UTF-8 text shows in a terminal, and text cut to fit a column, for the tables
// tov prints for people.

#include <cstddef>
#include <string>
#include <string_view>

namespace tov {

// The columns the text takes: one per character, two for East Asian wide and full-width
// characters, none for combining marks and format characters. An ill-formed byte counts
// as one column (it shows as a replacement character).
std::size_t displayWidth(std::string_view text);

// The text when it fits in width columns; otherwise its longest leading whole characters
// that fit in width - 1 columns, followed by "…". A width of 0 gives "".
std::string cutToDisplayWidth(std::string_view text, std::size_t width);

}  // namespace tov
