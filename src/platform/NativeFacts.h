#pragma once

// The platform's native facts by name (discovery/SystemFacts.h names them and their
// shapes), and the platform's own name.

#include <string>

#include "model/Value.h"

namespace tov {

// Absent when the platform has no such fact or cannot tell.
Value nativeFact(const std::string& name, const std::string& key);

// "linux" or "macos".
const char* hostPlatformName();

}  // namespace tov
