#pragma once

// Text that came from firmware or the kernel, made fit for a report: such bytes may hold
// invalid UTF-8, control characters or padding.

#include <string>
#include <string_view>

namespace tov {

// The bytes as UTF-8 with every ill-formed sequence replaced by U+FFFD, control
// characters (NUL, tabs and line ends included), line and paragraph separators and
// bidirectional controls removed, and white space trimmed from both ends.
std::string printableText(std::string_view bytes);

}  // namespace tov
