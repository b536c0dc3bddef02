#include "support/KilledRun.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <thread>

#include "support/TovInNamespace.h"

namespace tov::testing {
namespace {

pid_t startOpenedProgram(int program, const std::vector<std::string>& arguments) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (nothing < 0 || ::dup2(nothing, STDOUT_FILENO) < 0) ::_exit(126);
        ::_exit(executeOpenedProgram(program, arguments));
    }
    return child;
}

}  // namespace

bool runOpenedProgramKilledAfter(int program, const std::vector<std::string>& arguments,
                                 std::chrono::microseconds delay) {
    const pid_t child = startOpenedProgram(program, arguments);
    if (child < 0) return false;
    std::this_thread::sleep_for(delay);
    // Until it is waited for, an ended child keeps its id, so the kill cannot hit another.
    ::kill(child, SIGKILL);
    int status = 0;
    if (::waitpid(child, &status, 0) != child) return false;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

std::chrono::microseconds timeOfOpenedProgram(int program, const std::vector<std::string>& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = startOpenedProgram(program, arguments);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::chrono::microseconds(-1);
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
}

}  // namespace tov::testing
