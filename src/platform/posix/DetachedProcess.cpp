#include "platform/DetachedProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/FileDescriptor.h"
#include "common/QVSLogger.h"
#include "platform/CloseOnExecPipe.h"

extern char** environ;

namespace tov {
namespace {

// Everything the children need is made before the fork: between fork and exec only
// async-signal-safe calls are allowed, since other threads may hold locks at that moment.
struct LaunchPlan {
    std::vector<char*> argv;
    int nullDevice = -1;
    int errorReport = -1;  // write end of a close-on-exec pipe: exec failure's errno
};

std::vector<char*> argumentVector(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 2);
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    return argv;
}

// Standard input, output and error on /dev/null. dup2 onto itself would keep the
// close-on-exec flag, so a descriptor already in place has the flag cleared instead.
bool redirectStandardDescriptors(int nullDevice) {
    for (int target = STDIN_FILENO; target <= STDERR_FILENO; ++target) {
        const bool done = nullDevice == target ? ::fcntl(target, F_SETFD, 0) == 0 : ::dup2(nullDevice, target) == target;
        if (!done) return false;
    }
    return true;
}

// The daemon may block or ignore signals for its own run loop; the new program starts
// with none blocked and every disposition at its default.
void resetSignals() {
    struct sigaction defaultAction {};
    defaultAction.sa_handler = SIG_DFL;
    sigemptyset(&defaultAction.sa_mask);
    for (int signal = 1; signal < NSIG; ++signal) ::sigaction(signal, &defaultAction, nullptr);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void reportFailureAndExit(int errorReport) {
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(errorReport, &error, sizeof error);
    ::_exit(127);
}

// Runs in the grandchild: a session of its own, then the program.
[[noreturn]] void becomeProgram(const LaunchPlan& plan) {
    if (::setsid() == -1 || !redirectStandardDescriptors(plan.nullDevice)) reportFailureAndExit(plan.errorReport);
    resetSignals();
    ::execve(plan.argv[0], plan.argv.data(), environ);
    reportFailureAndExit(plan.errorReport);
}

// Runs in the intermediate child: it starts the grandchild and ends at once, so the
// grandchild is adopted by init and never becomes our zombie.
[[noreturn]] void startGrandchild(const LaunchPlan& plan) {
    const pid_t grandchild = ::fork();
    if (grandchild == 0) becomeProgram(plan);
    if (grandchild == -1) reportFailureAndExit(plan.errorReport);
    ::_exit(0);
}

void reapChild(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
}

// The errno the children reported before exec, or 0 when the program was started: the
// pipe then reaches its end as exec closes the last write end.
int reportedError(int errorReport) {
    int error = 0;
    for (;;) {
        const ssize_t count = ::read(errorReport, &error, sizeof error);
        if (count == static_cast<ssize_t>(sizeof error)) return error;
        if (count == -1 && errno == EINTR) continue;
        return count == 0 ? 0 : (count == -1 ? errno : EIO);
    }
}

// A descriptor that is 0, 1 or 2 (the daemon started with them closed) would be replaced
// when the grandchild sets up its standard descriptors; it is moved above them.
int aboveStandardDescriptors(int descriptor) {
    if (descriptor == -1 || descriptor > STDERR_FILENO) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(descriptor);
    return moved;
}

bool logFailure(const std::string& program, int error) {
    QVSLogger::error("Could not start [%s] detached: %s", program.c_str(), std::strerror(error));
    return false;
}

}  // namespace

bool startDetachedProcess(const std::string& program, const std::vector<std::string>& arguments) {
    if (program.empty()) return logFailure(program, ENOENT);
    FileDescriptor nullDevice(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!nullDevice.isOpen()) return logFailure(program, errno);
    int pipeEnds[2];
    if (!openCloseOnExecPipe(pipeEnds)) return logFailure(program, errno);
    FileDescriptor readEnd(pipeEnds[0]);
    FileDescriptor writeEnd(aboveStandardDescriptors(pipeEnds[1]));
    if (!writeEnd.isOpen()) return logFailure(program, errno);
    const LaunchPlan plan{argumentVector(program, arguments), nullDevice.get(), writeEnd.get()};

    const pid_t child = ::fork();
    if (child == 0) startGrandchild(plan);
    if (child == -1) return logFailure(program, errno);
    writeEnd.close();
    reapChild(child);
    const int error = reportedError(readEnd.get());
    if (error != 0) return logFailure(program, error);
    return true;
}

}  // namespace tov
