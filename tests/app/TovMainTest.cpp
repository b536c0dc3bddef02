#include "app/TovMain.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/QVSMD5Utils.h"
#include "platform/ServiceManager.h"
#include "report/QVSReport.h"
#include "support/ChildProcess.h"
#include "support/FakeServiceManager.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::ChildResult;
using testing::readFile;
using testing::runInChild;
using testing::TestFolder;
using testing::writeFile;

constexpr uid_t kNobody = 65534;

// Runs the entry sequence in a child whose paths all lie below the test's folder.
class TovMainTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "the entry sequence refuses to run without root";
        folder.makeFolder("tmp");
        std::filesystem::create_directories(jobFile().substr(0, jobFile().rfind('/')));
        // The installation modes never reach the machine's own service manager.
        serviceManager.loadOutput = "loaded by the test";
    }

    ChildResult run(std::vector<std::string> arguments, const std::function<void()>& after = {}) {
        return runInChild([&] {
            Paths::setRootForTesting(folder.path());
            QVSReport::resetForTesting();  // the manager this process may have made under another root
            ServiceManager::setForTesting(&serviceManager);
            std::vector<char*> argv{const_cast<char*>("tov")};
            for (std::string& argument : arguments) argv.push_back(argument.data());
            const int code = runTov(static_cast<int>(argv.size()), argv.data());
            if (after) after();
            return code;
        });
    }

    std::string outbox() const { return folder.path() + "/opt/Quorvel/KELD/Components/TOV/outbox"; }
    std::string policyPath() const { return folder.path() + "/opt/Quorvel/KELD/Components/TOV/policy.json"; }
    std::string logText() const { return readFile(folder.path() + "/opt/Quorvel/KELD/logs/tov.log"); }
    std::string jobFile() const { return folder.path() + "/etc/systemd/system/com.quorvel.keldservice.tov.service"; }

    TestFolder folder;
    testing::FakeServiceManager serviceManager;
};

TEST_F(TovMainTest, EnvironmentWithoutPolicyPrintsTwoLines) {
    const ChildResult result = run({"-e"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "Version:1.0.0.402\nOutbox:" + outbox() + "\n");
}

TEST_F(TovMainTest, EnvironmentWithPolicyAddsItsHash) {
    const std::string policy = R"({"ScanAfterRestart": true})";
    writeFile(policyPath(), policy);
    const ChildResult result = run({"E"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output,
              "Version:1.0.0.402\nOutbox:" + outbox() + "\nConfigHash:" + QVSMD5Utils::md5OfData(policy) + "\n");
}

TEST_F(TovMainTest, EnvironmentWinsOverInstallation) {
    const ChildResult result = run({"-i", "-e"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "Version:1.0.0.402\nOutbox:" + outbox() + "\n");
    EXPECT_EQ(logText().find("daemon"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(jobFile()));
}

TEST_F(TovMainTest, InstallationWritesAndLoadsTheJobAndExitsZero) {
    const ChildResult result = run({"-i"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(readFile(jobFile()), serviceManager.jobFileText("com.quorvel.keldservice.tov",
                                                              outbox().substr(0, outbox().rfind('/')) + "/tov", 60,
                                                              true));
    EXPECT_NE(logText().find("    WARNING - Loading the daemon results: [loaded by the test]."), std::string::npos)
        << logText();
}

TEST_F(TovMainTest, AFailedInstallationIsLoggedAndStillExitsZero) {
    std::filesystem::remove(jobFile().substr(0, jobFile().rfind('/')));
    EXPECT_EQ(run({"I"}).exitCode, 0);
    EXPECT_NE(logText().find("      ERROR - Filed to write Daemon config file.  Maybe not running as root?"),
              std::string::npos)
        << logText();
}

TEST_F(TovMainTest, UninstallationRemovesTheJobFileAndExitsZero) {
    writeFile(jobFile(), "job");
    const ChildResult result = run({"U"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_FALSE(std::filesystem::exists(jobFile()));
}

TEST_F(TovMainTest, ForcedFullScanSaysSoStoresTheInventoryAndHoldsTheFirstReportBack) {
    const ChildResult result = run({"-forcefullscan"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "Force Full Scan.\n");
    EXPECT_TRUE(std::filesystem::is_regular_file(folder.path() + "/opt/Quorvel/KELD/Components/TOV/.delta/previous.json"));
    EXPECT_TRUE(std::filesystem::is_empty(outbox()));
    EXPECT_NE(logText().find("scanType is None, No report written."), std::string::npos);
}

TEST_F(TovMainTest, SecondForcedFullScanHandsOverAFullReport) {
    ASSERT_EQ(run({"forcefullscan"}).exitCode, 0);
    ASSERT_EQ(run({"ForceFullScan"}).exitCode, 0);
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(outbox())) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    ASSERT_EQ(names.size(), 2u) << logText();
    EXPECT_TRUE(names[0].ends_with(".hdr"));
    EXPECT_TRUE(names[1].ends_with(".zip"));
    EXPECT_EQ(readFile(outbox() + "/" + names[0]),
              R"(X-NG-metadata: {"scanType":"full","Component":"TOV","Version":"1.0.0.402"})");
}

// The normal run first waits for other instances: this test program's name holds "tov",
// so the wait finds one all 19 times and the run ends quietly, printing nothing.
TEST_F(TovMainTest, UnknownLongSwitchesAreTheNormalRunNotTheEnvironment) {
    const ChildResult result = run({"--e"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(logText().find("TOV started."), std::string::npos);
}

TEST_F(TovMainTest, LoggerIsSetUpWithTheChosenLevel) {
    const ChildResult result = run({"-e", "-ll", "DEBUG"}, [] { std::printf("%s", QVSLogger::currentMinimumLogLevel().c_str()); });
    EXPECT_EQ(result.output.substr(result.output.rfind('\n') + 1), "DEBUG");
}

TEST_F(TovMainTest, EmptyDebugTriggerGivesInformationDespiteTheArgument) {
    writeFile(folder.path() + "/tmp/debug_tov", "");
    const ChildResult result = run({"-e", "-ll=DEBUG"}, [] { std::printf("%s", QVSLogger::currentMinimumLogLevel().c_str()); });
    EXPECT_EQ(result.output.substr(result.output.rfind('\n') + 1), "INFORMATION");
}

TEST_F(TovMainTest, DebugTriggerSetsTheLevel) {
    writeFile(folder.path() + "/tmp/debug_tov", "warning\n");
    const ChildResult result = run({"-e"}, [] { std::printf("%s", QVSLogger::currentMinimumLogLevel().c_str()); });
    EXPECT_EQ(result.output.substr(result.output.rfind('\n') + 1), "WARNING");
}

TEST_F(TovMainTest, NonRootUserGetsExitOneAndNothingOnStandardOutput) {
    const ChildResult result = runInChild([&] {
        Paths::setRootForTesting(folder.path());
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return 99;
        char program[] = "tov";
        char environment[] = "-e";
        char* argv[] = {program, environment, nullptr};
        return runTov(2, argv);
    });
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_FALSE(std::filesystem::exists(folder.path() + "/opt"));
}

}  // namespace
}  // namespace tov
