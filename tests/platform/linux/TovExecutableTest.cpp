// Runs the built executable as a user would, in a private mount namespace whose /opt and
// /tmp are empty memory file systems, so the real paths can be used without touching the
// machine's own files.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>

#include "common/QVSMD5Utils.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"

extern char** environ;

namespace tov {
namespace {

using testing::ChildResult;
using testing::runInChild;

constexpr const char* kPolicyPath = "/opt/Quorvel/KELD/Components/TOV/policy.json";

bool enterPrivateOptAndTmp() {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", "/opt", "tmpfs", 0, "mode=0755") == 0 &&
           ::mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777") == 0;
}

// Replaces the child with the program opened at descriptor program.
int executeOpenedProgram(int program, const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>("tov")};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    ::fexecve(program, argv.data(), environ);
    return 127;
}

class TovExecutable : public ::testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root for a mount namespace";
        if (!std::filesystem::is_directory("/opt")) GTEST_SKIP() << "no /opt to cover";
        const ChildResult probe = runInChild([] { return enterPrivateOptAndTmp() ? 0 : 1; });
        if (probe.exitCode != 0) GTEST_SKIP() << "mount namespaces are not available here";
    }

    ChildResult runTovInNamespace(const std::string& policy, const std::vector<std::string>& arguments) {
        return runInChild([&] {
            // Opened before the mounts: the build folder itself may lie below /tmp.
            const int program = ::open(TOV_EXECUTABLE, O_RDONLY | O_CLOEXEC);
            if (program < 0 || !enterPrivateOptAndTmp()) return 126;
            if (!policy.empty()) testing::writeFile(kPolicyPath, policy);
            return executeOpenedProgram(program, arguments);
        });
    }
};

TEST_F(TovExecutable, EnvironmentWithoutPolicyIsExactlyTwoLines) {
    const ChildResult result = runTovInNamespace("", {"-e"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "Version:1.0.0.402\nOutbox:/opt/Quorvel/KELD/Components/TOV/outbox\n");
}

TEST_F(TovExecutable, EnvironmentWithPolicyAddsTheConfigHash) {
    const std::string policy = R"({"FullScanIntervalHours": 12})";
    const ChildResult result = runTovInNamespace(policy, {"-e"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "Version:1.0.0.402\nOutbox:/opt/Quorvel/KELD/Components/TOV/outbox\nConfigHash:" +
                                 QVSMD5Utils::md5OfData(policy) + "\n");
}

TEST_F(TovExecutable, PolicyWithoutAnyKnownKeyGivesNoConfigHash) {
    const ChildResult result = runTovInNamespace(R"({"Unrelated": 1})", {"-e"});
    EXPECT_EQ(result.output, "Version:1.0.0.402\nOutbox:/opt/Quorvel/KELD/Components/TOV/outbox\n");
}

}  // namespace
}  // namespace tov
