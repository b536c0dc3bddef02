#pragma once

// The output of "bless --info": lines such as
//   "       19519 => Blessed System Folder is /System/Library/CoreServices".

#include <optional>
#include <string>
#include <string_view>

namespace tov {

// The path of the first line that holds "Blessed System Folder is": the text from the
// second character after the phrase on (the phrase is followed by a blank) to the end of
// the line; "" when the line ends at or just after the phrase. Nothing when no line holds it.
std::optional<std::string> blessedSystemFolder(std::string_view blessOutput);

}  // namespace tov
