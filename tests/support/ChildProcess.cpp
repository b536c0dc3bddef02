#include "support/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace tov::testing {

ChildResult runInChild(const std::function<int()>& body) {
    int output[2];
    if (::pipe(output) != 0) return {};
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(output[0]);
        ::dup2(output[1], STDOUT_FILENO);
        ::close(output[1]);
        const int code = body();
        std::fflush(nullptr);
        ::_exit(code);
    }
    ::close(output[1]);
    ChildResult result;
    char buffer[4096];
    ssize_t count;
    while ((count = ::read(output[0], buffer, sizeof buffer)) > 0) result.output.append(buffer, static_cast<size_t>(count));
    ::close(output[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

int executeProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    ::execv(program.c_str(), argv.data());
    return 127;
}

}  // namespace tov::testing
