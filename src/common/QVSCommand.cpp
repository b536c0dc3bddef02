#include "common/QVSCommand.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <algorithm>
#include <exception>

#include "platform/CloseOnExecPipe.h"

extern char** environ;

namespace tov {
namespace {

constexpr const char* kShell = "/bin/sh";

std::string commandLine(const std::string& command, const std::vector<std::string>& arguments) {
    std::string line = command;
    for (const std::string& argument : arguments) {
        line += ' ';
        line += argument;
    }
    return line;
}

void closeKeepingErrno(int descriptor) {
    const int saved = errno;
    close(descriptor);
    errno = saved;
}

// A pipe end that happens to be 0, 1 or 2 (the daemon started with them closed) would be
// overwritten by the child's own set-up; such an end is moved above them.
bool moveAboveStandardDescriptors(int& descriptor) {
    if (descriptor > STDERR_FILENO) return true;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    closeKeepingErrno(descriptor);
    descriptor = moved;
    return moved != -1;
}

struct OutputPipe {
    int readEnd = -1;
    int writeEnd = -1;

    bool open() {
        int descriptors[2];
        if (!openCloseOnExecPipe(descriptors)) return false;
        readEnd = descriptors[0];
        writeEnd = descriptors[1];
        return moveAboveStandardDescriptors(readEnd) && moveAboveStandardDescriptors(writeEnd);
    }
    void closeWriteEnd() {
        if (writeEnd != -1) closeKeepingErrno(writeEnd);
        writeEnd = -1;
    }
    void closeReadEnd() {
        if (readEnd != -1) closeKeepingErrno(readEnd);
        readEnd = -1;
    }
    ~OutputPipe() {
        closeWriteEnd();
        closeReadEnd();
    }
};

// The child's standard input reads /dev/null, its standard output writes into the pipe;
// every other descriptor of ours is closed at exec.
class ChildFileActions {
public:
    explicit ChildFileActions(int outputDescriptor) {
        ready_ = posix_spawn_file_actions_init(&actions_) == 0;
        if (!ready_) return;
        ready_ = posix_spawn_file_actions_adddup2(&actions_, outputDescriptor, STDOUT_FILENO) == 0 &&
                 posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0) == 0;
        initialised_ = true;
    }
    ~ChildFileActions() {
        if (initialised_) posix_spawn_file_actions_destroy(&actions_);
    }
    ChildFileActions(const ChildFileActions&) = delete;
    ChildFileActions& operator=(const ChildFileActions&) = delete;

    bool ready() const { return ready_; }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
    bool initialised_ = false;
    bool ready_ = false;
};

void waitForChild(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
}

// Reaps the child on every way out of the caller, an exception included. The read end is
// closed first so that a child still writing is not left blocked on a full pipe.
class ChildReaper {
public:
    ChildReaper(pid_t child, OutputPipe& pipe) : child_(child), pipe_(pipe) {}
    ~ChildReaper() {
        pipe_.closeReadEnd();
        waitForChild(child_);
    }
    ChildReaper(const ChildReaper&) = delete;
    ChildReaper& operator=(const ChildReaper&) = delete;

private:
    pid_t child_;
    OutputPipe& pipe_;
};

// Everything readable until end of output, in the order it arrived; a read error ends
// the reading like the end of output does.
std::string readToEnd(int descriptor) {
    std::string output;
    char chunk[16384];
    for (;;) {
        const ssize_t count = read(descriptor, chunk, sizeof chunk);
        if (count > 0) {
            output.append(chunk, static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return output;
        }
    }
}

// Spawn attributes of every child: an empty signal mask (the daemon blocks SIGTERM in all
// its threads, and a tool must still end on it), and, on request, the head of a new
// process group, so that the group can be ended as a whole.
class ChildAttributes {
public:
    explicit ChildAttributes(bool ownProcessGroup) {
        initialised_ = posix_spawnattr_init(&attributes_) == 0;
        sigset_t none;
        sigemptyset(&none);
        short flags = POSIX_SPAWN_SETSIGMASK;
        if (ownProcessGroup) flags |= POSIX_SPAWN_SETPGROUP;
        ready_ = initialised_ && posix_spawnattr_setsigmask(&attributes_, &none) == 0 &&
                 posix_spawnattr_setflags(&attributes_, flags) == 0 && posix_spawnattr_setpgroup(&attributes_, 0) == 0;
    }
    ~ChildAttributes() {
        if (initialised_) posix_spawnattr_destroy(&attributes_);
    }
    ChildAttributes(const ChildAttributes&) = delete;
    ChildAttributes& operator=(const ChildAttributes&) = delete;

    bool ready() const { return ready_; }
    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
    bool initialised_ = false;
    bool ready_ = false;
};

std::optional<pid_t> spawn(const std::string& path, const std::vector<std::string>& arguments,
                           const ChildFileActions& actions, const ChildAttributes& attributes) {
    std::vector<char*> argumentVector;
    argumentVector.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) argumentVector.push_back(const_cast<char*>(argument.c_str()));
    argumentVector.push_back(nullptr);
    pid_t child = -1;
    const int result =
        posix_spawn(&child, path.c_str(), actions.get(), attributes.get(), argumentVector.data(), environ);
    if (result != 0) {
        errno = result;
        return std::nullopt;
    }
    return child;
}

// Starts path with the argument vector (argument 0 included) and collects its standard
// output. Nothing when the child could not be started.
std::optional<std::string> captureOutput(const std::string& path, const std::vector<std::string>& arguments) {
    OutputPipe pipe;
    if (!pipe.open()) return std::nullopt;
    std::optional<pid_t> child;
    {
        ChildFileActions actions(pipe.writeEnd);
        ChildAttributes attributes(false);
        if (!actions.ready() || !attributes.ready()) return std::nullopt;
        child = spawn(path, arguments, actions, attributes);
    }
    pipe.closeWriteEnd();
    if (!child) return std::nullopt;
    ChildReaper reaper(*child, pipe);
    return readToEnd(pipe.readEnd);
}

using SteadyClock = std::chrono::steady_clock;

// Reads until end of output, the deadline or more than outputLimit bytes; answers how the
// reading ended.
QVSCommand::RunEnd readWithinLimits(int descriptor, SteadyClock::time_point deadline, std::size_t outputLimit,
                                    std::string& output) {
    char chunk[16384];
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now());
        if (left.count() <= 0) return QVSCommand::RunEnd::TimedOut;
        pollfd waiting{descriptor, POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(std::min<long long>(left.count(), 60000)));
        if (ready == -1 && errno != EINTR) return QVSCommand::RunEnd::Finished;
        if (ready <= 0) continue;
        const ssize_t count = read(descriptor, chunk, sizeof chunk);
        if (count == 0 || (count == -1 && errno != EINTR && errno != EAGAIN)) return QVSCommand::RunEnd::Finished;
        if (count < 0) continue;
        output.append(chunk, static_cast<std::size_t>(count));
        if (output.size() > outputLimit) return QVSCommand::RunEnd::OutputTooLarge;
    }
}

std::optional<std::string> captureOutputWithinLimits(const std::string& path, const std::vector<std::string>& arguments,
                                                     std::chrono::milliseconds timeLimit, std::size_t outputLimit,
                                                     QVSCommand::RunEnd& end) {
    end = QVSCommand::RunEnd::NotStarted;
    const SteadyClock::time_point deadline = SteadyClock::now() + timeLimit;
    OutputPipe pipe;
    if (!pipe.open()) return std::nullopt;
    std::optional<pid_t> child;
    {
        ChildFileActions actions(pipe.writeEnd);
        ChildAttributes group(true);
        if (!actions.ready() || !group.ready()) return std::nullopt;
        child = spawn(path, arguments, actions, group);
    }
    pipe.closeWriteEnd();
    if (!child) return std::nullopt;
    ChildReaper reaper(*child, pipe);
    std::string output;
    end = readWithinLimits(pipe.readEnd, deadline, outputLimit, output);
    if (end == QVSCommand::RunEnd::Finished) return output;
    kill(-*child, SIGKILL);
    return std::nullopt;
}

std::optional<std::string> logExceptionAndGiveNothing(const std::exception& exception) {
    syslog(LOG_ERR, "e=%s", exception.what());
    return std::nullopt;
}

}  // namespace

std::optional<std::string> QVSCommand::run(const std::string& command, const std::vector<std::string>& arguments) {
    try {
        return captureOutput(kShell, {"sh", "-c", commandLine(command, arguments)});
    } catch (const std::exception& exception) {
        return logExceptionAndGiveNothing(exception);
    }
}

std::optional<std::string> QVSCommand::runProgram(const std::string& program,
                                                  const std::vector<std::string>& arguments) {
    try {
        std::vector<std::string> argumentVector{program};
        argumentVector.insert(argumentVector.end(), arguments.begin(), arguments.end());
        return captureOutput(program, argumentVector);
    } catch (const std::exception& exception) {
        return logExceptionAndGiveNothing(exception);
    }
}

std::optional<std::string> QVSCommand::runProgramWithLimits(const std::string& program,
                                                            const std::vector<std::string>& arguments,
                                                            std::chrono::milliseconds timeLimit,
                                                            std::size_t outputLimit, RunEnd* end) {
    RunEnd ending = RunEnd::NotStarted;
    std::optional<std::string> output;
    try {
        std::vector<std::string> argumentVector{program};
        argumentVector.insert(argumentVector.end(), arguments.begin(), arguments.end());
        output = captureOutputWithinLimits(program, argumentVector, timeLimit, outputLimit, ending);
    } catch (const std::exception& exception) {
        output = logExceptionAndGiveNothing(exception);
    }
    if (end != nullptr) *end = ending;
    return output;
}

}  // namespace tov
