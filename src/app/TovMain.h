#pragma once

#include <cstdint>

#include "app/QVSAppArgument.h"

namespace tov {

constexpr std::int64_t kDefaultMemoryThreshold = 0x6400000;  // 100 MiB

// The whole entry sequence of the executable; answers the process's exit code.
int runTov(int argc, char** argv);

// The "-mm" byte count; a missing, zero or non-numeric value gives the default.
std::int64_t memoryThreshold(const QVSAppArgument& arguments);

}  // namespace tov
