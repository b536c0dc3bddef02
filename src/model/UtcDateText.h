#pragma once

// Dates as the inventory writes them: UTC text of the pattern yyyy-MM-dd'T'HH:mm:ss'Z'
// (e.g. 2023-11-02T07:45:10Z), whole seconds only.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

// The instant as UTC text; a fraction of a second is dropped (rounded down).
std::string formatUtcDate(std::chrono::system_clock::time_point instant);

// The instant named by text of exactly that pattern, or nothing for any other text
// (no leading or trailing characters, every field in its calendar range).
std::optional<std::chrono::system_clock::time_point> parseUtcDate(std::string_view text);

}  // namespace tov
