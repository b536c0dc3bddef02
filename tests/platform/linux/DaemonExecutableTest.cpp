// The built executable as the daemon, as systemd starts it, in a private mount namespace
// whose /opt, /tmp and service folder are empty memory file systems.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "support/TestFolder.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

using namespace std::chrono_literals;

// The unit the daemon writes on every tick stays in the namespace too.
constexpr testing::PrivateFolders kFolders = testing::PrivateFolders::OptTmpAndSystemdUnits;
// The daemon's arguments: no instance wait, and the highest memory threshold, as a
// sanitizer build of tov is many times the size of a plain one.
const std::vector<std::string> kDaemonArguments {"re", "-mm=1073741824"};
constexpr const char* kPolicyPath = "/opt/Quorvel/KELD/Components/TOV/policy.json";
constexpr const char* kOutboxPath = "/opt/Quorvel/KELD/Components/TOV/outbox";
constexpr const char* kSettingsPath = "/opt/Quorvel/KELD/Components/TOV/settings.bin";
constexpr const char* kLogPath = "/opt/Quorvel/KELD/logs/tov.log";

bool outboxHoldsAnArchive() {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(kOutboxPath, error)) {
        if (entry.path().extension() == ".zip") return true;
    }
    return false;
}

// Waits up to limit for the child to end; its exit code, or -1 when it did not end in time
// (it is then killed) or did not exit normally.
int waitForExit(pid_t child, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (std::chrono::steady_clock::now() < deadline) {
        const pid_t ended = ::waitpid(child, &status, WNOHANG);
        if (ended == child) return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        std::this_thread::sleep_for(50ms);
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    return -1;
}

// Reads the log until it holds text, for at most limit.
bool waitForLogLine(const std::string& text, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < deadline) {
        std::error_code error;
        if (std::filesystem::exists(kLogPath, error) && testing::readFile(kLogPath).find(text) != std::string::npos) {
            return true;
        }
        std::this_thread::sleep_for(20ms);
    }
    return false;
}

class DaemonExecutable : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::privateOptAndTmpAvailable(kFolders)) GTEST_SKIP() << "needs root, /opt and mount namespaces";
    }
};

// After one earlier scan (a new installation's first report is kept back), the daemon's
// start-up scan hands a report over at once; SIGTERM ends it with its settings written.
TEST_F(DaemonExecutable, FirstReportReachesTheOutboxSoonAndSigtermEndsItCleanly) {
    const testing::ChildResult result = testing::runWithTovInNamespace(
        [](int program) {
        testing::writeFile(kPolicyPath, R"({"ScanAfterRestart": true, "EventDrivenScan": true})");
        if (testing::runOpenedProgram(program, {"forcefullscan"}) != 0) return 11;
        if (outboxHoldsAnArchive()) return 12;
        std::filesystem::remove(kLogPath);
        const pid_t daemon = ::fork();
        if (daemon == 0) ::_exit(testing::executeOpenedProgram(program, kDaemonArguments));
        if (daemon < 0) return 13;
        const auto deadline = std::chrono::steady_clock::now() + 15s;
        while (!outboxHoldsAnArchive() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(100ms);
        }
        const bool handedOver = outboxHoldsAnArchive();
        ::kill(daemon, SIGTERM);
        const int exitCode = waitForExit(daemon, 60s);
        const std::string log = testing::readFile(kLogPath);
        std::printf("%s", log.c_str());
        if (!handedOver) return 14;
        if (exitCode != 0) return 15;
        if (log.find("TOV started.") == std::string::npos) return 16;
        if (log.find("TOV finished.") == std::string::npos) return 17;
        if (!std::filesystem::is_regular_file(kSettingsPath)) return 18;
        return 0;
        },
        kFolders);
    EXPECT_EQ(result.exitCode, 0) << result.output;
}

// SIGTERM while the scan thread scans: the daemon ends at once and cleanly, and the files
// it leaves let the next daemon start and hand its report over.
TEST_F(DaemonExecutable, SigtermDuringAScanEndsItAndTheNextStartFindsConsistentFiles) {
    const testing::ChildResult result = testing::runWithTovInNamespace(
        [](int program) {
            testing::writeFile(kPolicyPath, R"({"EventDrivenScan": true})");
            const pid_t first = ::fork();
            if (first == 0) ::_exit(testing::executeOpenedProgram(program, kDaemonArguments));
            if (first < 0) return 13;
            if (!waitForLogLine("Force full scan, FullScanIntervalHours...", 60s)) return 14;
            ::kill(first, SIGTERM);
            if (waitForExit(first, 60s) != 0) return 15;
            if (!waitForLogLine("TOV finished.", 5s)) return 16;
            std::filesystem::remove(kLogPath);
            const pid_t second = ::fork();
            if (second == 0) ::_exit(testing::executeOpenedProgram(program, kDaemonArguments));
            if (second < 0) return 17;
            const auto deadline = std::chrono::steady_clock::now() + 60s;
            while (!outboxHoldsAnArchive() && std::chrono::steady_clock::now() < deadline) {
                std::this_thread::sleep_for(100ms);
            }
            const bool handedOver = outboxHoldsAnArchive();
            ::kill(second, SIGTERM);
            const int exitCode = waitForExit(second, 60s);
            std::printf("%s", testing::readFile(kLogPath).c_str());
            if (!handedOver) return 18;
            return exitCode == 0 ? 0 : 19;
        },
        kFolders);
    EXPECT_EQ(result.exitCode, 0) << result.output;
}

// Without a policy the daemon scans nothing, keeps running and still ends on SIGTERM.
TEST_F(DaemonExecutable, WithoutPolicyItWaitsAndEndsOnSigterm) {
    const testing::ChildResult result = testing::runWithTovInNamespace(
        [](int program) {
        const pid_t daemon = ::fork();
        if (daemon == 0) ::_exit(testing::executeOpenedProgram(program, kDaemonArguments));
        if (daemon < 0) return 13;
        waitForLogLine("The policy file does not exit.", 60s);
        ::kill(daemon, SIGTERM);
        const int exitCode = waitForExit(daemon, 60s);
        const std::string log = testing::readFile(kLogPath);
        std::printf("%s", log.c_str());
        if (log.find("The policy file does not exit.") == std::string::npos) return 14;
        if (exitCode != 0) return 15;
        if (log.find("TOV finished.") == std::string::npos) return 17;
        if (outboxHoldsAnArchive()) return 19;
        return 0;
        },
        kFolders);
    EXPECT_EQ(result.exitCode, 0) << result.output;
}

}  // namespace
}  // namespace tov
