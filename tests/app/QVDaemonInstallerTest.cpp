#include "app/QVDaemonInstaller.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/Paths.h"
#include "support/FakeServiceManager.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using testing::FakeServiceManager;
using testing::readFile;
using testing::writeFile;

constexpr const char* kLabel = "com.quorvel.keldservice.tov";

class QVDaemonInstallerTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        std::filesystem::create_directories(std::filesystem::path(Paths::jobFile()).parent_path());
    }

    bool install() { return installer.lazyInstallAsDaemonWithExecutionInterval(60, true); }
    std::string expectedJob() const { return manager.jobFileText(kLabel, Paths::executable(), 60, true); }
    bool jobFileExists() const { return std::filesystem::exists(std::filesystem::symlink_status(Paths::jobFile())); }
    std::vector<std::string> calls(std::initializer_list<std::string> kinds) const {
        std::vector<std::string> result;
        for (const std::string& kind : kinds) result.push_back(kind == "list" ? "list " + std::string(kLabel)
                                                                               : kind + " " + Paths::jobFile());
        return result;
    }

    FakeServiceManager manager;
    QVDaemonInstaller installer{manager};
};

TEST_F(QVDaemonInstallerTest, FirstInstallationWritesTheJobAndLoadsIt) {
    EXPECT_TRUE(install());
    EXPECT_EQ(readFile(Paths::jobFile()), expectedJob());
    EXPECT_EQ(manager.calls, calls({"list", "load"}));
    EXPECT_TRUE(logHas("      DEBUG - Successfully loaded the daemon.")) << log();
}

TEST_F(QVDaemonInstallerTest, TheJobFileIsForRootOnly) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "only root repairs ownership";
    writeFile(Paths::jobFile(), "old");
    ::chmod(Paths::jobFile().c_str(), 0644);
    ::chown(Paths::jobFile().c_str(), 65534, 65534);
    ASSERT_TRUE(install());
    const struct stat status = testing::lstatOf(Paths::jobFile());
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_EQ(status.st_uid, 0u);
    EXPECT_EQ(status.st_gid, 0u);
}

TEST_F(QVDaemonInstallerTest, AListedJobIsRewrittenButNotLoadedAgain) {
    manager.listing = FakeServiceManager::listingOf(kLabel);
    writeFile(Paths::jobFile(), "edited by hand");
    EXPECT_TRUE(install());
    EXPECT_EQ(readFile(Paths::jobFile()), expectedJob());
    EXPECT_EQ(manager.calls, calls({"list"}));
}

TEST_F(QVDaemonInstallerTest, AJobFileDeletedWhileRunningIsRewrittenAndNotLoadedAgain) {
    ASSERT_TRUE(install());
    std::filesystem::remove(Paths::jobFile());
    EXPECT_TRUE(install());
    EXPECT_EQ(readFile(Paths::jobFile()), expectedJob());
    EXPECT_EQ(manager.count("load"), 1);
}

TEST_F(QVDaemonInstallerTest, ASymbolicLinkAtTheJobPathIsReplacedNotFollowed) {
    const std::string target = folder.write("target", "keep");
    std::filesystem::create_symlink(target, Paths::jobFile());
    ASSERT_TRUE(install());
    EXPECT_EQ(readFile(target), "keep");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(Paths::jobFile())));
}

TEST_F(QVDaemonInstallerTest, LoadOutputIsAWarningAndStillYes) {
    manager.loadOutput = "Failed to start com.quorvel.keldservice.tov.service: Access denied";
    EXPECT_TRUE(install());
    EXPECT_TRUE(logHas("    WARNING - Loading the daemon results: [Failed to start "
                       "com.quorvel.keldservice.tov.service: Access denied]."))
        << log();
    EXPECT_FALSE(logHas("Successfully loaded the daemon."));
}

TEST_F(QVDaemonInstallerTest, AFailedLoadIsTriedAgainOnTheNextCall) {
    manager.loadLists = false;
    manager.loadOutput = "no";
    ASSERT_TRUE(install());
    ASSERT_TRUE(install());
    EXPECT_EQ(manager.count("load"), 2);
}

TEST_F(QVDaemonInstallerTest, AManagerThatCannotBeAskedCountsAsNotListed) {
    manager.listing = std::nullopt;
    manager.loadLists = false;
    EXPECT_TRUE(install());
    EXPECT_EQ(manager.calls, calls({"list", "load"}));
    EXPECT_FALSE(installer.isInstalledAsDaemon());
}

TEST_F(QVDaemonInstallerTest, AMissingFolderGivesTheErrorLineAndNoLoad) {
    std::filesystem::remove(std::filesystem::path(Paths::jobFile()).parent_path());
    EXPECT_FALSE(install());
    EXPECT_TRUE(logHas("      ERROR - Filed to write Daemon config file.  Maybe not running as root?")) << log();
    EXPECT_EQ(manager.calls, calls({"list"}));
}

TEST_F(QVDaemonInstallerTest, AnUnwritableFolderGivesTheErrorLine) {
    // A file where the folder should be: not even root can write below it.
    const std::string folderPath = std::filesystem::path(Paths::jobFile()).parent_path();
    std::filesystem::remove(folderPath);
    writeFile(folderPath, "not a folder");
    EXPECT_FALSE(install());
    EXPECT_TRUE(logHas("Filed to write Daemon config file.  Maybe not running as root?")) << log();
    EXPECT_EQ(manager.count("load"), 0);
}

TEST_F(QVDaemonInstallerTest, MissingOrEmptyArgumentsAnswerNoAndTouchNothing) {
    EXPECT_FALSE(installer.lazyInstallAsDaemonWithName("", Paths::jobFile(), "text"));
    EXPECT_FALSE(installer.lazyInstallAsDaemonWithName(kLabel, "", "text"));
    EXPECT_FALSE(installer.lazyInstallAsDaemonWithName(kLabel, Paths::jobFile(), ""));
    EXPECT_FALSE(installer.lazyUninstallDaemonWithName("", Paths::jobFile()));
    EXPECT_FALSE(installer.lazyUninstallDaemonWithName(kLabel, ""));
    EXPECT_FALSE(installer.isInstalledAsDaemonWithDaemonName(""));
    EXPECT_TRUE(manager.calls.empty());
    EXPECT_FALSE(jobFileExists());
}

TEST_F(QVDaemonInstallerTest, TheTextIsWrittenInLatin1) {
    EXPECT_TRUE(installer.lazyInstallAsDaemonWithName(kLabel, Paths::jobFile(), "caf\xc3\xa9\n"));
    EXPECT_EQ(readFile(Paths::jobFile()), "caf\xe9\n");
}

TEST_F(QVDaemonInstallerTest, TextBeyondLatin1CannotBeWritten) {
    EXPECT_FALSE(installer.lazyInstallAsDaemonWithName(kLabel, Paths::jobFile(), "\xe2\x82\xac\n"));
    EXPECT_TRUE(logHas("Filed to write Daemon config file.  Maybe not running as root?")) << log();
    EXPECT_FALSE(jobFileExists());
    EXPECT_FALSE(installer.lazyInstallAsDaemonWithName(kLabel, Paths::jobFile(), "broken \xc3"));
}

TEST_F(QVDaemonInstallerTest, UninstallingAListedJobUnloadsItThenRemovesTheFile) {
    ASSERT_TRUE(install());
    manager.calls.clear();
    EXPECT_TRUE(installer.lazyUninstallDaemon());
    EXPECT_EQ(manager.calls, calls({"list", "unload"}));
    EXPECT_FALSE(jobFileExists());
    const std::string text = log();
    const std::vector<std::string> lines{
        "      DEBUG - Will attempt to remove the daemon.",
        "      DEBUG - Successfully removed the daemon.",
        "      DEBUG - Will attempt to remove the daemon plist file at path [" + Paths::jobFile() + "].",
        "      DEBUG - Successfully removed the daemon plist file.",
    };
    std::size_t position = 0;
    for (const std::string& line : lines) {
        position = text.find(line, position);
        ASSERT_NE(position, std::string::npos) << line << "\n" << text;
    }
}

TEST_F(QVDaemonInstallerTest, AfterUninstallingTheStillRunningAgentsNextCallWritesAndLoadsAgain) {
    ASSERT_TRUE(install());
    ASSERT_TRUE(installer.lazyUninstallDaemon());
    EXPECT_TRUE(install());
    EXPECT_EQ(readFile(Paths::jobFile()), expectedJob());
    EXPECT_EQ(manager.count("load"), 2);
}

TEST_F(QVDaemonInstallerTest, UnloadOutputIsAWarning) {
    manager.listing = FakeServiceManager::listingOf(kLabel);
    manager.unloadOutput = "Failed to stop it";
    writeFile(Paths::jobFile(), "job");
    EXPECT_TRUE(installer.lazyUninstallDaemon());
    EXPECT_TRUE(logHas("    WARNING - Unloading the daemon results: [Failed to stop it].")) << log();
    EXPECT_FALSE(jobFileExists());
}

TEST_F(QVDaemonInstallerTest, UninstallingWhatIsNotThereIsYes) {
    EXPECT_TRUE(installer.lazyUninstallDaemon());
    EXPECT_EQ(manager.calls, calls({"list"}));
    EXPECT_TRUE(logHas("      DEBUG - The daemon plist file at path [" + Paths::jobFile() + "] does not exist."))
        << log();
}

TEST_F(QVDaemonInstallerTest, AJobFileThatCannotBeRemovedIsAnError) {
    std::filesystem::create_directories(Paths::jobFile() + "/inside");
    EXPECT_FALSE(installer.lazyUninstallDaemon());
    EXPECT_TRUE(logHas("      ERROR - Could not remove the daemon plist file, with error [")) << log();
}

TEST_F(QVDaemonInstallerTest, OnlyAListingWhoseLastFieldBeginsWithTheNameIsInstalled) {
    manager.listing = "-\t0\tcom.quorvel.keldservice.tov";
    EXPECT_TRUE(installer.isInstalledAsDaemon());
    manager.listing = "123 0 com.quorvel.keldservice.tov.extra\n";
    EXPECT_TRUE(installer.isInstalledAsDaemon());
    manager.listing = "0 com.quorvel.keldservice.tov";
    EXPECT_FALSE(installer.isInstalledAsDaemon());
    manager.listing = "1 0 com.quorvel.keldservice.tov other";
    EXPECT_FALSE(installer.isInstalledAsDaemon());
    manager.listing = "";
    EXPECT_FALSE(installer.isInstalledAsDaemon());
}

TEST_F(QVDaemonInstallerTest, AnyListingMeansNoInstallationIsNeeded) {
    manager.listing = "garbage";
    EXPECT_FALSE(installer.needsInstallationAsDaemonWithDaemonName(kLabel));
    manager.listing = "";
    EXPECT_TRUE(installer.needsInstallationAsDaemonWithDaemonName(kLabel));
}

TEST_F(QVDaemonInstallerTest, TheDefaultManagerIsTheSharedOne) {
    FakeServiceManager shared;
    ServiceManager::setForTesting(&shared);
    EXPECT_TRUE(QVDaemonInstaller().lazyInstallAsDaemonWithExecutionInterval(59.9, false));
    ServiceManager::setForTesting(nullptr);
    EXPECT_EQ(readFile(Paths::jobFile()), shared.jobFileText(kLabel, Paths::executable(), 59, false));
    EXPECT_EQ(shared.count("load"), 1);
    EXPECT_TRUE(manager.calls.empty());
}

}  // namespace
}  // namespace tov
