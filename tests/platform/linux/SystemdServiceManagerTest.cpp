// systemd's D-Bus API as the service manager: against a stand-in manager on a bus of the
// test's own, and against this machine when it does not run systemd.

#include "platform/linux/SystemdServiceManager.h"

#include <gtest/gtest.h>
#include <systemd/sd-daemon.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "app/QVDaemonInstaller.h"
#include "app/SystemdUnitText.h"
#include "common/Paths.h"
#include "platform/linux/FakeSystemd.h"
#include "platform/linux/PrivateBus.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using testing::FakeSystemd;
using testing::PrivateBus;

constexpr const char* kLabel = "com.quorvel.keldservice.tov";
constexpr const char* kUnit = "com.quorvel.keldservice.tov.service";
constexpr const char* kJobFile = "/etc/systemd/system/com.quorvel.keldservice.tov.service";

using Calls = std::vector<std::string>;

TEST(SystemdServiceManager, TheUnitIsNamedByTheJobFile) {
    EXPECT_EQ(SystemdServiceManager::unitName(kJobFile), kUnit);
    EXPECT_EQ(SystemdServiceManager::unitName("x.service"), "x.service");
}

TEST(SystemdServiceManager, TheJobFileIsTheSystemdUnit) {
    EXPECT_EQ(SystemdServiceManager().jobFileText(kLabel, "/opt/tov", 59.9, true),
              systemdUnitText(kLabel, "/opt/tov", 59.9, true));
}

TEST(SystemdServiceManager, TheSharedManagerIsSystemdUnlessATestSetsAnother) {
    EXPECT_NE(dynamic_cast<SystemdServiceManager*>(&ServiceManager::shared()), nullptr);
}

// A bus of the test's own with the stand-in manager on it.
class SystemdOverPrivateBus : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        if (!PrivateBus::available()) GTEST_SKIP() << "needs dbus-daemon";
        bus = std::make_unique<PrivateBus>(folder.path());
        ASSERT_FALSE(bus->address().empty()) << "dbus-daemon did not start";
        systemd = std::make_unique<FakeSystemd>(bus->address());
        ASSERT_TRUE(systemd->ready());
        manager = std::make_unique<SystemdServiceManager>(bus->address());
    }

    void TearDown() override {
        manager.reset();
        systemd.reset();
        bus.reset();
        TemporaryRootTest::TearDown();
    }

    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<FakeSystemd> systemd;
    std::unique_ptr<SystemdServiceManager> manager;
};

TEST_F(SystemdOverPrivateBus, AUnitSystemdDoesNotHaveIsNotListed) {
    EXPECT_EQ(manager->list(kLabel), std::optional<std::string>(""));
    EXPECT_EQ(systemd->calls(), Calls({"GetUnit com.quorvel.keldservice.tov.service"}));
}

TEST_F(SystemdOverPrivateBus, LoadingReloadsEnablesAndStartsTheUnit) {
    EXPECT_EQ(manager->load(kJobFile), "");
    EXPECT_EQ(systemd->calls(), Calls({
                                    "Reload",
                                    "EnableUnitFiles [com.quorvel.keldservice.tov.service] 0 1",
                                    "StartUnit com.quorvel.keldservice.tov.service replace",
                                }));
}

TEST_F(SystemdOverPrivateBus, AStartedUnitIsListedWithItsMainProcess) {
    systemd->setMainPid(4321);
    ASSERT_EQ(manager->load(kJobFile), "");
    systemd->clearCalls();
    EXPECT_EQ(manager->list(kLabel), std::optional<std::string>("4321\t0\tcom.quorvel.keldservice.tov"));
    EXPECT_EQ(systemd->calls(), Calls({"GetUnit com.quorvel.keldservice.tov.service", "Get MainPID"}));
}

TEST_F(SystemdOverPrivateBus, AUnitWithoutAMainProcessIsListedWithADash) {
    ASSERT_EQ(manager->load(kJobFile), "");
    EXPECT_EQ(manager->list(kLabel), std::optional<std::string>("-\t0\tcom.quorvel.keldservice.tov"));
}

TEST_F(SystemdOverPrivateBus, UnloadingStopsAndDisablesTheUnit) {
    ASSERT_EQ(manager->load(kJobFile), "");
    systemd->clearCalls();
    EXPECT_EQ(manager->unload(kJobFile), "");
    EXPECT_EQ(systemd->calls(), Calls({
                                    "StopUnit com.quorvel.keldservice.tov.service replace",
                                    "DisableUnitFiles [com.quorvel.keldservice.tov.service] 0",
                                }));
    EXPECT_EQ(manager->list(kLabel), std::optional<std::string>(""));
}

TEST_F(SystemdOverPrivateBus, AFailedStartIsNamedWithTheBussWords) {
    systemd->failMethod("StartUnit", "org.freedesktop.systemd1.NoSuchUnit", "Unit x.service not found.");
    EXPECT_EQ(manager->load(kJobFile), "Failed to start com.quorvel.keldservice.tov.service: Unit x.service not found.");
}

TEST_F(SystemdOverPrivateBus, AFailedReloadStopsTheLoad) {
    systemd->failMethod("Reload", "org.freedesktop.DBus.Error.AccessDenied", "Access denied");
    EXPECT_EQ(manager->load(kJobFile), "Failed to reload the unit files: Access denied");
    EXPECT_EQ(systemd->calls(), Calls({"Reload"}));
}

TEST_F(SystemdOverPrivateBus, AFailedEnableStopsTheLoad) {
    systemd->failMethod("EnableUnitFiles", "org.freedesktop.DBus.Error.FileNotFound", "No such file");
    EXPECT_EQ(manager->load(kJobFile), "Failed to enable com.quorvel.keldservice.tov.service: No such file");
    EXPECT_EQ(systemd->calls().size(), 2u);
}

TEST_F(SystemdOverPrivateBus, BothStepsOfAnUnloadAreTriedAndTheirFailuresNamed) {
    systemd->failMethod("StopUnit", "org.freedesktop.systemd1.NoSuchUnit", "Unit not loaded.");
    systemd->failMethod("DisableUnitFiles", "org.freedesktop.DBus.Error.AccessDenied", "Access denied");
    EXPECT_EQ(manager->unload(kJobFile),
              "Failed to stop com.quorvel.keldservice.tov.service: Unit not loaded.\n"
              "Failed to disable com.quorvel.keldservice.tov.service: Access denied");
    EXPECT_EQ(systemd->calls().size(), 2u);
}

TEST_F(SystemdOverPrivateBus, AnotherErrorOfGetUnitMeansSystemdCouldNotBeAsked) {
    systemd->failMethod("GetUnit", "org.freedesktop.DBus.Error.AccessDenied", "Access denied");
    EXPECT_EQ(manager->list(kLabel), std::nullopt);
    EXPECT_TRUE(logHas("Access denied")) << log();
}

TEST_F(SystemdOverPrivateBus, ABusWithoutSystemdListsNothingAndCannotLoad) {
    systemd.reset();
    EXPECT_EQ(manager->list(kLabel), std::nullopt);
    EXPECT_NE(manager->load(kJobFile), "");
    EXPECT_NE(manager->unload(kJobFile), "");
}

TEST_F(SystemdOverPrivateBus, TheInstallerInstallsRepairsAndRemovesTheUnit) {
    std::filesystem::create_directories(std::filesystem::path(Paths::jobFile()).parent_path());
    QVDaemonInstaller installer(*manager);
    ASSERT_TRUE(installer.lazyInstallAsDaemonWithExecutionInterval(60, true));
    EXPECT_EQ(testing::readFile(Paths::jobFile()), systemdUnitText(kLabel, Paths::executable(), 60, true));
    EXPECT_EQ(systemd->calls().size(), 4u);  // GetUnit, Reload, EnableUnitFiles, StartUnit

    std::filesystem::remove(Paths::jobFile());
    systemd->clearCalls();
    ASSERT_TRUE(installer.lazyInstallAsDaemonWithExecutionInterval(60, true));
    EXPECT_TRUE(std::filesystem::exists(Paths::jobFile()));
    EXPECT_EQ(systemd->calls(), Calls({"GetUnit com.quorvel.keldservice.tov.service", "Get MainPID"}));

    systemd->clearCalls();
    ASSERT_TRUE(installer.lazyUninstallDaemon());
    EXPECT_FALSE(std::filesystem::exists(Paths::jobFile()));
    EXPECT_EQ(systemd->calls(), Calls({
                                    "GetUnit com.quorvel.keldservice.tov.service",
                                    "Get MainPID",
                                    "StopUnit com.quorvel.keldservice.tov.service replace",
                                    "DisableUnitFiles [com.quorvel.keldservice.tov.service] 0",
                                }));
}

// This machine, when systemd is not its init: no manager answers.
class SystemdAbsent : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        if (sd_booted() > 0) GTEST_SKIP() << "this machine runs systemd";
    }
};

TEST_F(SystemdAbsent, NothingIsListedAndALoadSaysWhyItFailed) {
    SystemdServiceManager manager;
    EXPECT_EQ(manager.list(kLabel), std::nullopt);
    const std::string loaded = manager.load(kJobFile);
    EXPECT_NE(loaded, "");
    EXPECT_NE(manager.unload(kJobFile), "");
    // Without a system bus the connection is what failed.
    if (!std::filesystem::exists("/run/dbus/system_bus_socket")) {
        EXPECT_TRUE(loaded.starts_with("Failed to connect to the system bus: ")) << loaded;
    }
}

TEST_F(SystemdAbsent, TheInstallerWritesTheUnitWarnsAndAnswersYes) {
    std::filesystem::create_directories(std::filesystem::path(Paths::jobFile()).parent_path());
    SystemdServiceManager manager;
    QVDaemonInstaller installer(manager);
    EXPECT_TRUE(installer.lazyInstallAsDaemonWithExecutionInterval(60, true));
    EXPECT_TRUE(logHas("    WARNING - Loading the daemon results: [")) << log();
    EXPECT_EQ(testing::readFile(Paths::jobFile()), systemdUnitText(kLabel, Paths::executable(), 60, true));
    EXPECT_FALSE(installer.isInstalledAsDaemon());
    EXPECT_TRUE(installer.lazyUninstallDaemon());
    EXPECT_FALSE(std::filesystem::exists(Paths::jobFile()));
}

}  // namespace
}  // namespace tov
