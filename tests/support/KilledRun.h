#pragma once

// Runs a program and kills it with SIGKILL at a chosen instant, as a crash or a power cut
// would end it, and times whole runs to choose such instants.

#include <chrono>
#include <string>
#include <vector>

namespace tov::testing {

// Starts the program opened at descriptor program (standard output thrown away) and
// kills it after delay unless it ended before; true when the kill ended it.
bool runOpenedProgramKilledAfter(int program, const std::vector<std::string>& arguments,
                                 std::chrono::microseconds delay);

// The wall time from start to end of one run of the program opened at descriptor
// program (standard output thrown away); negative when it did not end normally.
std::chrono::microseconds timeOfOpenedProgram(int program, const std::vector<std::string>& arguments);

}  // namespace tov::testing
