// Runs the built executable's installation modes as a user would, in a private mount
// namespace whose /opt, /tmp and /etc/systemd/system are empty memory file systems, so
// the real unit path is written without touching the machine's own.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <systemd/sd-daemon.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "app/SystemdUnitText.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

using testing::ChildResult;
using testing::PrivateFolders;
using testing::runOpenedProgram;

constexpr const char* kUnitPath = "/etc/systemd/system/com.quorvel.keldservice.tov.service";
constexpr const char* kLogPath = "/opt/Quorvel/KELD/logs/tov.log";

class TovServiceInstallation : public ::testing::Test {
protected:
    void SetUp() override {
        // systemd itself would be asked to reload and enable: it does not see the private
        // folder, but a test must not make the machine's manager reload.
        if (sd_booted() > 0) GTEST_SKIP() << "this machine runs systemd";
        if (!testing::privateOptAndTmpAvailable(PrivateFolders::OptTmpAndSystemdUnits)) {
            GTEST_SKIP() << "needs root, /opt, /etc/systemd/system and mount namespaces";
        }
        unitWasThere = std::filesystem::exists(std::filesystem::symlink_status(kUnitPath));
    }

    void TearDown() override {
        if (!unitWasThere) {
            EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(kUnitPath)));
        }
    }

    bool unitWasThere = false;
};

TEST_F(TovServiceInstallation, InstallWritesTheUnitAndUninstallRemovesIt) {
    const ChildResult result = testing::runWithTovInNamespace(
        [](int program) {
            if (runOpenedProgram(program, {"-i"}) != 0) return 1;
            const struct stat status = testing::lstatOf(kUnitPath);
            std::printf("mode %o owner %u group %u\n", static_cast<unsigned>(status.st_mode & 07777),
                        static_cast<unsigned>(status.st_uid), static_cast<unsigned>(status.st_gid));
            std::printf("=====\n%s=====\n", testing::readFile(kUnitPath).c_str());
            if (runOpenedProgram(program, {"-u"}) != 0) return 2;
            if (std::filesystem::exists(std::filesystem::symlink_status(kUnitPath))) return 3;
            std::printf("%s", testing::readFile(kLogPath).c_str());
            return 0;
        },
        PrivateFolders::OptTmpAndSystemdUnits);
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const std::string unit =
        systemdUnitText("com.quorvel.keldservice.tov", "/opt/Quorvel/KELD/Components/TOV/tov", 60, true);
    EXPECT_TRUE(result.output.starts_with("mode 600 owner 0 group 0\n=====\n" + unit + "=====\n")) << result.output;
    // No systemd answers here: the load's failure is the warning, and the uninstallation
    // does not try to unload what nothing lists.
    EXPECT_NE(result.output.find("    WARNING - Loading the daemon results: ["), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find("Unloading the daemon results"), std::string::npos) << result.output;
}

TEST_F(TovServiceInstallation, InstallingTwiceRewritesTheUnit) {
    const ChildResult result = testing::runWithTovInNamespace(
        [](int program) {
            if (runOpenedProgram(program, {"i"}) != 0) return 1;
            testing::writeFile(kUnitPath, "edited\n");
            if (runOpenedProgram(program, {"I"}) != 0) return 2;
            std::printf("%s", testing::readFile(kUnitPath).c_str());
            return 0;
        },
        PrivateFolders::OptTmpAndSystemdUnits);
    ASSERT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, systemdUnitText("com.quorvel.keldservice.tov", "/opt/Quorvel/KELD/Components/TOV/tov", 60,
                                             true));
}

}  // namespace
}  // namespace tov
