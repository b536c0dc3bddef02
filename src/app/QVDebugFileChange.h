#pragma once

// The debug trigger read again at run time: its text becomes the logger's minimum level.

#include <string>

namespace tov {

// Applies the level in the trigger file at path ("INFORMATION" when there is none); logs
// "Set new loglevel [...], [...]" at critical level when the level changed.
void didDebugFileChanged(const std::string& triggerPath);

}  // namespace tov
