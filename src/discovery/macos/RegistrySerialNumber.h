#pragma once

// The platform serial number of a Mac, as its platform expert states it.

#include <optional>
#include <string>

#include "discovery/SystemSource.h"

namespace tov {

// "IOPlatformSerialNumber" of the platform-expert service; nothing when there is no such
// service, its properties cannot be read or it states no serial number.
std::optional<std::string> platformSerialNumberFromRegistry(SystemSource& source);

}  // namespace tov
