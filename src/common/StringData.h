#pragma once

#include <string_view>

namespace tov {

// True when the bytes, read as a NUL-terminated UTF-8 string (so reading stops at the
// first zero byte), are valid UTF-8 and give at least one character. False for no bytes.
bool isValidStringData(std::string_view bytes);

}  // namespace tov
