#pragma once

// Fails chosen system calls of a program with strace's fault injection, and reads
// strace's trace of a run to find out which calls a run makes, in which order.

#include <string>
#include <vector>

namespace tov::testing {

// One system call of a traced run: its name, which call of that name it was in its
// thread (1, 2, ...), and the trace line that shows it.
struct TracedCall {
    int thread = 0;
    std::string name;
    int occurrence = 0;
    std::string line;
};

// The calls in a trace written with "strace -f" (each line led by its thread id); a call
// that strace shows in two parts counts once.
std::vector<TracedCall> tracedCalls(const std::string& trace);

// The path of strace, "" when it is not installed.
std::string straceProgram();
// strace is installed and may trace and inject faults here (ptrace can be forbidden).
bool straceCanInjectFaults();

// strace's options that fail the occurrence-th call of syscall in each traced thread with
// errorName (ENOSPC, EIO, ...), writing no trace.
std::vector<std::string> faultInjectionOptions(const std::string& syscall, int occurrence,
                                               const std::string& errorName);

// Runs the program opened at descriptor program under strace with options, to its end,
// with its standard output thrown away; answers strace's exit code (the program's).
int runOpenedProgramUnderStrace(int program, const std::vector<std::string>& options,
                                const std::vector<std::string>& arguments);

}  // namespace tov::testing
