#pragma once

// The installed system's version file, "/System/Library/CoreServices/SystemVersion.plist":
// a property list whose top level is a dictionary of texts (ProductName, ProductVersion,
// ProductBuildVersion, ...).

#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

inline constexpr const char* kSystemVersionPath = "/System/Library/CoreServices/SystemVersion.plist";

// The file's top dictionary; null when the file cannot be read, is no property list, or
// its top level is not a dictionary.
DictionaryRef readSystemVersion(SystemSource& source);

// The text under key; nothing when there is no dictionary, no such key, or its value is
// not a text.
std::optional<std::string> systemVersionText(const DictionaryRef& version, std::string_view key);

}  // namespace tov
