#pragma once

#include <cstdint>

#include "app/QVMemoryGuard.h"
#include "app/QVSAppArgument.h"

namespace tov {

constexpr std::int64_t kDefaultMemoryThreshold = QVMemoryGuard::kDefaultMemoryThreshold;

// The whole entry sequence of the executable; answers the process's exit code.
int runTov(int argc, char** argv);

// The "-mm" byte count; a missing, zero or non-numeric value gives the default.
std::int64_t memoryThreshold(const QVSAppArgument& arguments);

}  // namespace tov
