#pragma once

// Reading one property of a registry entry or a power-source description by the type the
// rules expect. A property of another type reads as absent, so an odd entry never breaks
// its category; numbers are read with the value tree's own conversions (anything that is
// not a number reads as 0).

#include <optional>
#include <string>
#include <string_view>

#include "model/Value.h"

namespace tov {

// The property when it is a string; nothing otherwise.
std::optional<std::string> stringProperty(const Dictionary& properties, std::string_view key);

// The property when it is a dictionary; null otherwise.
DictionaryRef dictionaryProperty(const Dictionary& properties, std::string_view key);

}  // namespace tov
