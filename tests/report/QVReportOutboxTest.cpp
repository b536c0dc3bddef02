#include "report/QVReportOutbox.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "common/Paths.h"
#include "model/Json.h"
#include "report/FakeDiscoverers.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

using testing::lstatOf;
using testing::readFile;
using testing::writeFile;

using std::chrono::system_clock;

system_clock::time_point januaryThirtyFirst() {
    return system_clock::time_point(std::chrono::seconds(1706692500));  // 2024-01-31 09:15:00 UTC
}

class QVReportOutboxTest : public testing::ReportTest {
protected:
    void SetUp() override {
        testing::ReportTest::SetUp();
        QVReportOutbox::lazyCreateOutboxAndDeltaFolders();
    }
    std::string stagedArchive() const { return stagingFolder() + "/hardware.json-20240131091500.zip"; }
};

TEST(QVReportOutboxNames, ArchiveIsNamedByTheUtcTime) {
    EXPECT_EQ(QVReportOutbox::archiveNameForDate(januaryThirtyFirst()), "hardware.json-20240131091500.zip");
    EXPECT_EQ(QVReportOutbox::archiveNameForDate(januaryThirtyFirst() + std::chrono::milliseconds(999)),
              "hardware.json-20240131091500.zip");
    EXPECT_EQ(QVReportOutbox::headerPathForArchivePath("/tmp/hardware.json-20240131091500.zip"),
              "/tmp/hardware.json-20240131091500.hdr");
}

TEST(QVReportOutboxHeader, DeltaHeaderLine) {
    const std::string line = QVReportOutbox::headerLine(QVScanTypeDelta);
    ASSERT_EQ(line.rfind("X-NG-metadata: ", 0), 0u);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    const std::optional<Value> metadata = parseJson(line.substr(15));
    ASSERT_TRUE(metadata && metadata->isDictionary());
    const Dictionary& members = *metadata->dictionary();
    EXPECT_EQ(members.size(), 3u);
    EXPECT_EQ(members.get("scanType"), Value("delta"));
    EXPECT_EQ(members.get("Component"), Value("TOV"));
    EXPECT_EQ(members.get("Version"), Value("1.0.0.402"));
    EXPECT_EQ(line, R"(X-NG-metadata: {"scanType":"delta","Component":"TOV","Version":"1.0.0.402"})");
}

TEST(QVReportOutboxHeader, FullAndOtherScanTypes) {
    EXPECT_EQ(QVReportOutbox::headerLine(QVScanTypeFull),
              R"(X-NG-metadata: {"scanType":"full","Component":"TOV","Version":"1.0.0.402"})");
    EXPECT_EQ(QVReportOutbox::headerLine(static_cast<QVScanType>(7)),
              R"(X-NG-metadata: {"scanType":"","Component":"TOV","Version":"1.0.0.402"})");
}

TEST_F(QVReportOutboxTest, ReportIsZippedAsOneMemberAndMovedWithItsHeader) {
    writeFile(Paths::temporaryReport(), R"({"added": {}})");
    QVReportOutbox::compressReportFileWithScanType(QVScanTypeDelta, januaryThirtyFirst());
    EXPECT_EQ(outboxNames(), (std::vector<std::string>{"hardware.json-20240131091500.hdr", "hardware.json-20240131091500.zip"}));
    const std::string archive = outbox() + "/hardware.json-20240131091500.zip";
    EXPECT_EQ(testing::zipMemberNames(archive), std::vector<std::string>{"__h_hardware_h__.json"});
    EXPECT_EQ(testing::zipFirstMemberText(archive), R"({"added": {}})");
    EXPECT_EQ(readFile(outbox() + "/hardware.json-20240131091500.hdr"),
              R"(X-NG-metadata: {"scanType":"delta","Component":"TOV","Version":"1.0.0.402"})");
    EXPECT_FALSE(std::filesystem::exists(stagedArchive()));
    const std::string log = logText();
    EXPECT_NE(log.find("Compressed hardware report [hardware.json-20240131091500.zip]."), std::string::npos);
    EXPECT_NE(log.find("Generated header [hardware.json-20240131091500.hdr]."), std::string::npos);
    EXPECT_NE(log.find("Move report and header to outbox."), std::string::npos);
    if (testing::runningAsRoot()) {
        EXPECT_EQ(lstatOf(archive).st_mode & 07777, 0600u);
        EXPECT_EQ(lstatOf(archive).st_uid, 0u);
    }
}

TEST_F(QVReportOutboxTest, ScanTypeNoneLeavesTheArchiveInTheStagingFolderAndNothingInTheOutbox) {
    writeFile(Paths::temporaryReport(), "{}");
    QVReportOutbox::compressReportFileWithScanType(QVScanTypeNone, januaryThirtyFirst());
    EXPECT_TRUE(outboxNames().empty());
    EXPECT_TRUE(std::filesystem::is_regular_file(stagedArchive()));
    EXPECT_FALSE(std::filesystem::exists(stagingFolder() + "/hardware.json-20240131091500.hdr"));
}

TEST_F(QVReportOutboxTest, NoTemporaryReportIsLogged) {
    QVReportOutbox::compressReportFileWithScanType(QVScanTypeFull, januaryThirtyFirst());
    EXPECT_NE(logText().find("ERROR - The was no file to compress."), std::string::npos);
    EXPECT_TRUE(outboxNames().empty());
}

TEST_F(QVReportOutboxTest, PairOfTheSameSecondIsNotOverwrittenAndFailsWhole) {
    writeFile(Paths::temporaryReport(), "first");
    EXPECT_TRUE(QVReportOutbox::compressReportFileWithScanType(QVScanTypeFull, januaryThirtyFirst()));
    writeFile(Paths::temporaryReport(), "second");
    EXPECT_FALSE(QVReportOutbox::compressReportFileWithScanType(QVScanTypeFull, januaryThirtyFirst()));
    EXPECT_EQ(testing::zipFirstMemberText(outbox() + "/hardware.json-20240131091500.zip"), "first");
    EXPECT_EQ(outboxNames().size(), 2u);
    EXPECT_NE(logText().find("ERROR - Could not move [hardware.json-20240131091500.zip] into the outbox: File exists"),
              std::string::npos)
        << logText();
    EXPECT_FALSE(std::filesystem::exists(stagedArchive()));
    EXPECT_FALSE(std::filesystem::exists(stagingFolder() + "/hardware.json-20240131091500.hdr"));
}

TEST_F(QVReportOutboxTest, TemporaryReportReachedThroughALinkIsNotZipped) {
    const std::string secret = folder.write("secret", "not for the outbox");
    ASSERT_EQ(::symlink(secret.c_str(), Paths::temporaryReport().c_str()), 0);
    QVReportOutbox::compressReportFileWithScanType(QVScanTypeFull, januaryThirtyFirst());
    EXPECT_TRUE(outboxNames().empty());
}

TEST_F(QVReportOutboxTest, RemovingTheUncompressedReport) {
    writeFile(Paths::temporaryReport(), "{}");
    QVReportOutbox::removeUncompressedReportFile();
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
    QVReportOutbox::removeUncompressedReportFile();
}

TEST_F(QVReportOutboxTest, FoldersBelongToRootAndTheDaemonGroup) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "ownership needs root";
    for (const std::string& path : {outbox(), Paths::deltaFolder()}) {
        const struct stat status = lstatOf(path);
        EXPECT_TRUE(S_ISDIR(status.st_mode)) << path;
        EXPECT_EQ(status.st_uid, 0u);
        EXPECT_EQ(status.st_gid, 0u);
        EXPECT_EQ(status.st_mode & 07777, 0600u);
    }
}

TEST_F(QVReportOutboxTest, PlainFileInPlaceOfTheOutboxIsReplacedByTheFolder) {
    std::filesystem::remove_all(outbox());
    writeFile(outbox(), "not a folder");
    EXPECT_TRUE(QVReportOutbox::lazyCreateOutboxAndDeltaFolders());
    EXPECT_TRUE(std::filesystem::is_directory(outbox()));
    EXPECT_NE(logText().find("TOV outbox is created."), std::string::npos);
}

TEST_F(QVReportOutboxTest, SymbolicLinkInPlaceOfTheDeltaFolderIsReplacedNotFollowed) {
    const std::string elsewhere = folder.makeFolder("elsewhere");
    writeFile(elsewhere + "/keep", "x");
    std::filesystem::remove_all(Paths::deltaFolder());
    ASSERT_EQ(::symlink(elsewhere.c_str(), Paths::deltaFolder().c_str()), 0);
    QVReportOutbox::lazyCreateOutboxAndDeltaFolders();
    EXPECT_TRUE(S_ISDIR(lstatOf(Paths::deltaFolder()).st_mode));
    EXPECT_TRUE(std::filesystem::exists(elsewhere + "/keep"));
}

TEST_F(QVReportOutboxTest, ClearingRemovesEverythingAndMakesTheFoldersAgain) {
    writeFile(outbox() + "/a.zip", "a");
    writeFile(outbox() + "/sub/b", "b");
    QVReportOutbox::clearOutbox();
    EXPECT_TRUE(std::filesystem::is_directory(outbox()));
    EXPECT_TRUE(outboxNames().empty());
    const std::string log = logText();
    EXPECT_NE(log.find("Proceeding to remove the outbox in order to clear it."), std::string::npos);
    EXPECT_NE(log.find("Succeeded in removing the outbox."), std::string::npos);
}

TEST_F(QVReportOutboxTest, ClearingAMissingOutboxDoesNothing) {
    std::filesystem::remove_all(outbox());
    QVReportOutbox::clearOutbox();
    EXPECT_FALSE(std::filesystem::exists(outbox()));
    EXPECT_EQ(logText().find("Proceeding to remove the outbox"), std::string::npos);
}

TEST_F(QVReportOutboxTest, HandOverSetsTheReportTimeEvenWhenNothingIsCompressed) {
    setTime(5000);
    QVSReport::sharedManager().compressReportFileWithScanType(QVScanTypeFull);
    EXPECT_EQ(QVSReport::sharedManager().previousReportTime(), 5000);
}

}  // namespace
}  // namespace tov
