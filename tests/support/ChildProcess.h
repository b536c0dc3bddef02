#pragma once

// Runs code in a forked child so that process-wide changes (user ids, namespaces, the
// non-dumpable flag, global settings) stay out of the test process.

#include <functional>
#include <string>
#include <vector>

namespace tov::testing {

struct ChildResult {
    int exitCode = -1;   // -1 when the child did not exit normally
    std::string output;  // everything the child wrote to its standard output
};

// body runs in the child with standard output going to a pipe; its result is the exit code.
ChildResult runInChild(const std::function<int()>& body);

// Replaces the child with program and its arguments (for use inside runInChild).
int executeProgram(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace tov::testing
