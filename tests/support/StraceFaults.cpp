#include "support/StraceFaults.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <regex>
#include <sstream>
#include <utility>

namespace tov::testing {
namespace {

constexpr const char* kStraceCandidates[] = {"/usr/bin/strace", "/bin/strace", "/usr/local/bin/strace"};

// "1234  name(" opens a call; "1234  <... name resumed>" continues one already counted.
const std::regex& callStart() {
    static const std::regex pattern(R"(^(\d+) +([a-z0-9_]+)\()");
    return pattern;
}

int runToEnd(const std::vector<std::string>& argv) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (nothing < 0 || ::dup2(nothing, STDOUT_FILENO) < 0) ::_exit(126);
        std::vector<char*> pointers;
        for (const std::string& argument : argv) pointers.push_back(const_cast<char*>(argument.c_str()));
        pointers.push_back(nullptr);
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

std::vector<TracedCall> tracedCalls(const std::string& trace) {
    std::vector<TracedCall> calls;
    std::map<std::pair<int, std::string>, int> counts;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (!std::regex_search(line, match, callStart())) continue;
        TracedCall call;
        call.thread = std::stoi(match[1].str());
        call.name = match[2].str();
        call.occurrence = ++counts[{call.thread, call.name}];
        call.line = line;
        calls.push_back(std::move(call));
    }
    return calls;
}

std::string straceProgram() {
    for (const char* candidate : kStraceCandidates) {
        if (::access(candidate, X_OK) == 0) return candidate;
    }
    return "";
}

bool straceCanInjectFaults() {
    const std::string strace = straceProgram();
    if (strace.empty() || ::access("/bin/true", X_OK) != 0) return false;
    return runToEnd({strace, "-f", "-o", "/dev/null", "-e", "inject=getpid:error=EIO:when=1", "/bin/true"}) == 0;
}

std::vector<std::string> faultInjectionOptions(const std::string& syscall, int occurrence,
                                               const std::string& errorName) {
    return {"-f", "-o", "/dev/null", "-e", "trace=" + syscall,
            "-e", "inject=" + syscall + ":error=" + errorName + ":when=" + std::to_string(occurrence)};
}

int runOpenedProgramUnderStrace(int program, const std::vector<std::string>& options,
                                const std::vector<std::string>& arguments) {
    // A copy without close-on-exec, so that strace's child can run it by its /proc name.
    const int inherited = ::dup(program);
    if (inherited < 0) return -1;
    // LeakSanitizer cannot work under ptrace and would end a sanitizer build's run with an
    // error of its own; leaks are checked by every untraced run.
    std::vector<std::string> argv{straceProgram(), "-E", "ASAN_OPTIONS=detect_leaks=0"};
    argv.insert(argv.end(), options.begin(), options.end());
    argv.push_back("/proc/self/fd/" + std::to_string(inherited));
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    const int code = runToEnd(argv);
    ::close(inherited);
    return code;
}

}  // namespace tov::testing
