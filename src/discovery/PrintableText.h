#pragma once

// Text read from the machine's files is whatever bytes someone wrote there. Before such
// text becomes a report value it is made into valid, single-line UTF-8, so that the value
// reads back from a stored report exactly as it was discovered.

#include <string>
#include <string_view>

namespace tov {

// The bytes as UTF-8 with each invalid sequence replaced by U+FFFD, control characters
// removed, and white space trimmed from both ends.
std::string printableText(std::string_view bytes);

}  // namespace tov
