#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "app/QVAppDaemonUtil.h"
#include "common/QVSCommand.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

constexpr int kNoNamespace = 77;

pid_t startProgram(const std::string& program, const std::string& argument) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(program.c_str(), program.c_str(), argument.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    return child;
}

// Runs as process 1 of a fresh process-id namespace with its own /proc, so the process
// list holds only this process and what it starts, whatever else runs on the machine.
// Prints the count without and with a program named "tovsleeper", and the raw list.
int countInFreshNamespace(const std::string& sleeper) {
    if (::mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0) return kNoNamespace;
    const std::int64_t alone = QVAppDaemonUtil::tovInstanceCountExcludingCurrentProcess();
    const pid_t other = startProgram(sleeper, "600");
    if (other <= 0) return 2;
    const std::int64_t withOther = QVAppDaemonUtil::tovInstanceCountExcludingCurrentProcess();
    const std::string list = QVSCommand::run("ps acx | grep -i tov").value_or("(no list)");
    ::kill(other, SIGKILL);
    ::waitpid(other, nullptr, 0);
    std::printf("%lld %lld\n%s", static_cast<long long>(alone), static_cast<long long>(withOther), list.c_str());
    return 0;
}

int inFreshProcessNamespace(const std::string& sleeper) {
    if (::unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) return kNoNamespace;
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kNoNamespace;
    const testing::ChildResult result = testing::runInChild([&] { return countInFreshNamespace(sleeper); });
    std::fputs(result.output.c_str(), stdout);
    return result.exitCode;
}

TEST(QVAppDaemonUtilProcessList, CountsAnotherTovProgramAndNotThisProcess) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "needs root";
    testing::TestFolder folder;
    const std::string sleeper = folder.file("tovsleeper");
    std::filesystem::copy_file("/bin/sleep", sleeper);
    ASSERT_EQ(::chmod(sleeper.c_str(), 0755), 0);

    const testing::ChildResult result = testing::runInChild([&] { return inFreshProcessNamespace(sleeper); });
    if (result.exitCode == kNoNamespace) GTEST_SKIP() << "cannot make a process-id namespace here";
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const std::string counts = result.output.substr(0, result.output.find('\n'));
    EXPECT_EQ(counts, "0 1") << result.output;
    // The list did show this process (tov_tests, process 1) and the sleeper.
    EXPECT_NE(result.output.find("tov_tests"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("tovsleeper"), std::string::npos) << result.output;
}

}  // namespace
}  // namespace tov
