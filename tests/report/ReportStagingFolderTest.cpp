// The private staging folder, and what another local user can and cannot do to the reports
// by planting links, folders and files in /tmp and beside the staging folder.

#include "report/ReportStagingFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "common/Paths.h"
#include "model/Json.h"
#include "model/QVIOKitKeyboard.h"
#include "report/FakeDiscoverers.h"
#include "report/QVReportOutbox.h"
#include "report/QVSReport.h"
#include "support/ChildProcess.h"

namespace tov {
namespace {

using testing::lstatOf;
using testing::readFile;
using testing::writeFile;

constexpr uid_t kNobody = 65534;

class ReportStagingFolderTest : public testing::ReportTest {
protected:
    QVSReport& manager() { return QVSReport::sharedManager(); }

    std::string staged(const std::string& name) const { return stagingFolder() + "/" + name; }
    std::string archiveNameNow() const { return QVReportOutbox::archiveNameForDate(*time); }

    // A new installation's first scan, then a full report handed over.
    void handOverFullReport() {
        manager().reportHardwareForced();
        advance(5);
        manager().reportHardwareForced();
    }
};

TEST_F(ReportStagingFolderTest, FolderIsRootOnlyAndFilesAre0600FromTheStart) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "ownership needs root";
    ::umask(0);  // nothing is created wider and narrowed afterwards
    ASSERT_TRUE(QVReportOutbox::writeTemporaryReport("{}", nullptr));
    ::umask(022);
    const struct stat folder = lstatOf(stagingFolder());
    EXPECT_TRUE(S_ISDIR(folder.st_mode));
    EXPECT_EQ(folder.st_mode & 07777, 0700u);
    EXPECT_EQ(folder.st_uid, 0u);
    EXPECT_EQ(folder.st_gid, 0u);
    EXPECT_EQ(lstatOf(Paths::temporaryReport()).st_mode & 07777, 0600u);
    ::umask(0);
    QVReportOutbox::compressReportFileWithScanType(QVScanTypeNone, *time);
    ::umask(022);
    EXPECT_EQ(lstatOf(staged(archiveNameNow())).st_mode & 07777, 0600u);
    EXPECT_EQ(Paths::temporaryReport(), staged("__h_hardware_h__.json"));
    EXPECT_EQ(stagingFolder(), Paths::componentFolder() + "/.staging");
}

TEST_F(ReportStagingFolderTest, LinkAtTheStagingPathIsReplacedNotFollowed) {
    const std::string elsewhere = folder.makeFolder("elsewhere");
    std::filesystem::create_directories(Paths::componentFolder());
    ASSERT_EQ(::symlink(elsewhere.c_str(), stagingFolder().c_str()), 0);
    ASSERT_TRUE(QVReportOutbox::writeTemporaryReport("{}", nullptr));
    EXPECT_TRUE(S_ISDIR(lstatOf(stagingFolder()).st_mode));
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
    EXPECT_NE(logText().find("WARNING - Replacing [" + stagingFolder() + "]: it is not a folder that only root can use."),
              std::string::npos);
}

TEST_F(ReportStagingFolderTest, FileOrOpenFolderAtTheStagingPathIsReplaced) {
    writeFile(stagingFolder(), "a file");
    ASSERT_TRUE(ReportStagingFolder::open());
    EXPECT_TRUE(S_ISDIR(lstatOf(stagingFolder()).st_mode));
    std::filesystem::remove_all(stagingFolder());
    writeFile(staged("planted/deep/file"), "x");
    ::chmod(stagingFolder().c_str(), 0777);
    ASSERT_TRUE(ReportStagingFolder::open());
    EXPECT_EQ(lstatOf(stagingFolder()).st_mode & 077, 0u);
    EXPECT_FALSE(std::filesystem::exists(staged("planted")));
}

TEST_F(ReportStagingFolderTest, LeftoversOfAnInterruptedHandOverAreRemovedByTheNextOne) {
    fillTypicalInventory(*factory);
    ASSERT_TRUE(QVReportOutbox::writeTemporaryReport("{}", nullptr));
    writeFile(staged("hardware.json-20000101000000.zip"), "half an archive");
    writeFile(staged("hardware.json-20000101000000.hdr"), "its header");
    handOverFullReport();
    EXPECT_TRUE(std::filesystem::is_empty(stagingFolder()));
    EXPECT_EQ(outboxNames().size(), 2u);
}

// Another local user plants what they can in /tmp at the names reports used to have there,
// and, with the component folder opened to everyone like /tmp, at and beside the staging
// folder. The reports stay genuine, whole and unread, and none is held back.
TEST_F(ReportStagingFolderTest, UnprivilegedUserForgesReadsBlocksAndSuppressesNothing) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "needs root to switch to another user";
    fillTypicalInventory(*factory);
    const std::string component = Paths::componentFolder();
    std::filesystem::create_directories(component);
    for (std::filesystem::path path = component; path.string().size() >= folder.path().size(); path = path.parent_path()) {
        ::chmod(path.c_str(), 0755);
    }
    ::chmod(component.c_str(), 01777);
    ::chmod((folder.path() + "/tmp").c_str(), 01777);
    const std::string oldTemporary = folder.path() + "/tmp/__h_hardware_h__.json";
    const std::string forged = folder.path() + "/tmp/forged.json";
    const std::vector<std::string> reportTimes = {"20240131091500", "20240131091505"};

    const testing::ChildResult planted = testing::runInChild([&] {
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return 99;
        std::ofstream(forged) << R"({"HWInventory":{"forged":true}})";
        if (::mkdir(oldTemporary.c_str(), 0777) != 0) return 1;
        for (const std::string& stamp : reportTimes) {
            for (const char* extension : {".zip", ".hdr"}) {
                const std::string name = "hardware.json-" + stamp + extension;
                if (::symlink(forged.c_str(), (folder.path() + "/tmp/" + name).c_str()) != 0) return 2;
            }
        }
        if (::mkdir(stagingFolder().c_str(), 0777) != 0) return 3;
        if (::symlink(forged.c_str(), staged("__h_hardware_h__.json").c_str()) != 0) return 4;
        if (::symlink(forged.c_str(), staged("hardware.json-" + reportTimes[1] + ".zip").c_str()) != 0) return 5;
        if (::symlink(forged.c_str(), (component + "/.staging.tmp").c_str()) != 0) return 6;
        return 0;
    });
    ASSERT_EQ(planted.exitCode, 0);

    handOverFullReport();
    ASSERT_EQ(outboxNames(), (std::vector<std::string>{"hardware.json-" + reportTimes[1] + ".hdr",
                                                       "hardware.json-" + reportTimes[1] + ".zip"}));
    const std::string archive = outbox() + "/hardware.json-" + reportTimes[1] + ".zip";
    const std::optional<Value> document = parseJson(testing::zipFirstMemberText(archive));
    ASSERT_TRUE(document && document->isDictionary());
    const DictionaryRef inventory = document->dictionary()->get("HWInventory").dictionary();
    ASSERT_TRUE(inventory);
    EXPECT_TRUE(inventory->get("forged").isAbsent());
    EXPECT_EQ(inventory->get("collection"), Value("2024-01-31T09:15:00Z"));
    EXPECT_EQ(lstatOf(stagingFolder()).st_uid, 0u);
    EXPECT_NE(logText().find("Replacing [" + stagingFolder() + "]"), std::string::npos);
    EXPECT_EQ(readFile(forged), R"({"HWInventory":{"forged":true}})");

    // With the staging folder in root's hands, the other user can neither read nor plant there.
    ASSERT_TRUE(QVReportOutbox::writeTemporaryReport("{\"secret\": 1}", nullptr));
    const testing::ChildResult intruder = testing::runInChild([&] {
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return 99;
        if (::open(Paths::temporaryReport().c_str(), O_RDONLY) >= 0) return 1;
        if (::open(staged("planted").c_str(), O_WRONLY | O_CREAT, 0666) >= 0) return 2;
        if (::rename(stagingFolder().c_str(), (component + "/moved").c_str()) == 0) return 3;
        if (::open(archive.c_str(), O_RDONLY) >= 0) return 4;
        return 0;
    });
    EXPECT_EQ(intruder.exitCode, 0);
    QVReportOutbox::removeUncompressedReportFile();

    // Nothing is suppressed: a change after the planting is handed over too.
    advance(60);
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("Keyboard After The Planting");
    factory->section("iokit").get("keyboards").array()->push_back(Value(keyboard));
    manager().reportHardware();
    EXPECT_EQ(outboxNames().size(), 4u);
}

}  // namespace
}  // namespace tov
