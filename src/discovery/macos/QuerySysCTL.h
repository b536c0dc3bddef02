#pragma once

// A text-valued kernel parameter ("machdep.cpu.brand_string", "hw.model", ...) as the
// source gives it.

#include <optional>
#include <string>

#include "discovery/SystemSource.h"

namespace tov {

// The parameter's text; nothing when the kernel has no such parameter, the read failed,
// or the parameter is not text.
std::optional<std::string> QuerySysCTL(SystemSource& source, const std::string& name);

}  // namespace tov
