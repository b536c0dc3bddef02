#include "support/TovInNamespace.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

extern char** environ;

namespace tov::testing {

namespace {

constexpr const char* kSystemdUnitFolder = "/etc/systemd/system";

bool mountPrivateSystemdUnits(PrivateFolders folders) {
    return folders != PrivateFolders::OptTmpAndSystemdUnits ||
           ::mount("tmpfs", kSystemdUnitFolder, "tmpfs", 0, "mode=0755") == 0;
}

}  // namespace

bool enterPrivateOptAndTmp(PrivateFolders folders) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", "/opt", "tmpfs", 0, "mode=0755") == 0 &&
           ::mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777") == 0 && mountPrivateSystemdUnits(folders);
}

bool privateOptAndTmpAvailable(PrivateFolders folders) {
    if (::geteuid() != 0 || !std::filesystem::is_directory("/opt")) return false;
    if (folders == PrivateFolders::OptTmpAndSystemdUnits && !std::filesystem::is_directory(kSystemdUnitFolder)) {
        return false;
    }
    return runInChild([folders] { return enterPrivateOptAndTmp(folders) ? 0 : 1; }).exitCode == 0;
}

int executeOpenedProgram(int program, const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>("tov")};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    ::fexecve(program, argv.data(), environ);
    return 127;
}

int runOpenedProgram(int program, const std::vector<std::string>& arguments) {
    return runOpenedProgramInto(program, arguments, "");
}

int runOpenedProgramInto(int program, const std::vector<std::string>& arguments, const std::string& outputPath) {
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        if (!outputPath.empty()) {
            const int output = ::open(outputPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            if (output < 0 || ::dup2(output, STDOUT_FILENO) < 0) ::_exit(126);
        }
        ::_exit(executeOpenedProgram(program, arguments));
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

ChildResult runWithTovInNamespace(const std::function<int(int program)>& body, PrivateFolders folders) {
    return runInChild([&body, folders] {
        // Opened before the mounts: the build folder itself may lie below /tmp.
        const int program = ::open(TOV_EXECUTABLE, O_RDONLY | O_CLOEXEC);
        if (program < 0 || !enterPrivateOptAndTmp(folders)) return 126;
        return body(program);
    });
}

}  // namespace tov::testing
