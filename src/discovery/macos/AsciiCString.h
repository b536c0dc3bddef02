#pragma once

// A registry string as the C string an ASCII conversion into a fixed buffer gives.

#include <cstddef>
#include <optional>
#include <string>

#include "model/Value.h"

namespace tov {

// The text of value when it is a string of ASCII characters that fits, with its
// terminator, into bufferBytes bytes; read back as a C string, it ends at its first zero
// byte. Nothing when value is no string, holds a non-ASCII character or is too long.
std::optional<std::string> asciiCString(const Value& value, std::size_t bufferBytes);

}  // namespace tov
