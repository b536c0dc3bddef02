// Runs the built executable as a user would, in a private mount namespace whose /opt and
// /tmp are empty memory file systems, so the real paths can be used without touching the
// machine's own files.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "common/QVSMD5Utils.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

using testing::ChildResult;
using testing::runOpenedProgram;

constexpr const char* kPolicyPath = "/opt/Quorvel/KELD/Components/TOV/policy.json";
constexpr const char* kOutboxPath = "/opt/Quorvel/KELD/Components/TOV/outbox";
constexpr const char* kLogsPath = "/opt/Quorvel/KELD/logs";
constexpr uid_t kNobody = 65534;

// The names in a folder, sorted, one per line.
std::string listing(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) text += name + "\n";
    return text;
}

class TovExecutable : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::privateOptAndTmpAvailable()) GTEST_SKIP() << "needs root, /opt and mount namespaces";
    }

    ChildResult runTovInNamespace(const std::string& policy, const std::vector<std::string>& arguments) {
        return testing::runWithTovInNamespace([&](int program) {
            if (!policy.empty()) testing::writeFile(kPolicyPath, policy);
            return testing::executeOpenedProgram(program, arguments);
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

// A new machine: the first forced scan only stores the inventory; the second hands over
// one archive and its header.
TEST_F(TovExecutable, TwoForcedScansLeaveOneArchiveAndOneHeaderInTheOutbox) {
    const ChildResult result = testing::runWithTovInNamespace([](int program) {
        if (runOpenedProgram(program, {"forcefullscan"}) != 0) return 1;
        std::printf("after first:\n%s", listing(kOutboxPath).c_str());
        if (!std::filesystem::is_regular_file("/opt/Quorvel/KELD/Components/TOV/.delta/previous.json")) return 2;
        if (runOpenedProgram(program, {"forcefullscan"}) != 0) return 3;
        std::printf("after second:\n%s", listing(kOutboxPath).c_str());
        return 0;
    });
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const std::string firstPart = "Force Full Scan.\nafter first:\nForce Full Scan.\nafter second:\n";
    ASSERT_EQ(result.output.substr(0, firstPart.size()), firstPart) << result.output;
    const std::string names = result.output.substr(firstPart.size());
    ASSERT_EQ(std::count(names.begin(), names.end(), '\n'), 2) << names;
    // Sorted: the header's name comes first.
    const std::string header = names.substr(0, names.find('\n'));
    const std::string archive = names.substr(names.find('\n') + 1);
    EXPECT_TRUE(header.starts_with("hardware.json-") && header.ends_with(".hdr")) << header;
    EXPECT_EQ(archive, header.substr(0, header.size() - 3) + "zip\n");
}

// Anyone may write /tmp: a level an ordinary user plants there is ignored, root's own
// trigger counts. "DEBUG" shows the uninstallation's debug line, which the default level hides.
TEST_F(TovExecutable, OnlyRootsOwnDebugTriggerChoosesTheLogLevel) {
    if (!testing::privateOptAndTmpAvailable(testing::PrivateFolders::OptTmpAndSystemdUnits)) {
        GTEST_SKIP() << "needs /etc/systemd/system to lay a private folder over";
    }
    const auto debugLineLogged = [](bool plantedByRoot) {
        return testing::runWithTovInNamespace(
                   [plantedByRoot](int program) {
                       const ChildResult planting = testing::runInChild([plantedByRoot] {
                           if (!plantedByRoot && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) return 99;
                           testing::writeFile("/tmp/debug_tov", "DEBUG\n");
                           return 0;
                       });
                       if (planting.exitCode != 0) return 2;
                       if (runOpenedProgram(program, {"-u"}) != 0) return 3;
                       const std::string log = testing::readFile(std::string(kLogsPath) + "/tov.log");
                       return log.find("DEBUG - The daemon plist file at path [") != std::string::npos ? 0 : 1;
                   },
                   testing::PrivateFolders::OptTmpAndSystemdUnits)
            .exitCode;
    };
    EXPECT_EQ(debugLineLogged(false), 1);
    EXPECT_EQ(debugLineLogged(true), 0);
}

}  // namespace
}  // namespace tov
