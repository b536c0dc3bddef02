#pragma once

// The devices of the "iokit" section that a Mac's system profiler reports: graphics
// adapters with their displays, cameras and memory modules. Each answers the records of
// its category, equal records once, in the order of the profiler's entries.

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

// QVIOKitDisplay records of "SPDisplaysDataType": one per graphics adapter and one per
// display attached to it.
ArrayRef displaysFromSystemProfiler(SystemSource& source);

// QVIOKitCamera records of "SPCameraDataType".
ArrayRef camerasFromSystemProfiler(SystemSource& source);

// QVIOKitMemory records of the memory slots of "SPMemoryDataType".
ArrayRef memoryModulesFromSystemProfiler(SystemSource& source);

}  // namespace tov
