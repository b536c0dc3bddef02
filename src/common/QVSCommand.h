#pragma once

// Runs system tools and returns what they printed on standard output.

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tov {

class QVSCommand {
public:
    // Joins the command and its arguments with single blanks and hands the line to the
    // shell (/bin/sh -c) as it stands, so pipes and redirections in it take effect. Only for
    // fixed command lines: outside text never goes through here. Nothing when the shell
    // could not be started; "" when the command printed nothing.
    static std::optional<std::string> run(const std::string& command,
                                          const std::vector<std::string>& arguments = {});

    // Starts the program at the path program (not searched for in PATH) with each argument
    // as one argument vector entry, no shell involved, and returns its standard output.
    // Nothing when it could not be started (a missing program included).
    static std::optional<std::string> runProgram(const std::string& program,
                                                 const std::vector<std::string>& arguments = {});

    // How a run with limits ended.
    enum class RunEnd { Finished, NotStarted, TimedOut, OutputTooLarge };

    // runProgram, but the program is started in a process group of its own, and that
    // group is killed when the run lasts longer than timeLimit or prints more than
    // outputLimit bytes; the output is then nothing. end, when given, says which it was.
    static std::optional<std::string> runProgramWithLimits(const std::string& program,
                                                           const std::vector<std::string>& arguments,
                                                           std::chrono::milliseconds timeLimit,
                                                           std::size_t outputLimit, RunEnd* end = nullptr);

    // All forms: standard input reads /dev/null, standard error is the daemon's own, the
    // exit status is not examined, and the call blocks until the child has ended. Several
    // threads may run commands at once.
};

}  // namespace tov
