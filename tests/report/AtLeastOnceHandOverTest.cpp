// No change is lost on its way to the outbox: reports held back by the rate limit, hand-overs
// that fail, forced scans that clear uncollected reports, and things planted where the
// stored report lives.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "common/Paths.h"
#include "common/QVSSettings.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIPInfo.h"
#include "report/FakeDiscoverers.h"
#include "report/QVReportOutbox.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

using testing::readFile;
using testing::writeFile;

class AtLeastOnceHandOverTest : public testing::ReportTest {
protected:
    void SetUp() override {
        testing::ReportTest::SetUp();
        fillTypicalInventory(*factory);
    }

    QVSReport& manager() { return QVSReport::sharedManager(); }

    // A new installation's first scan stores the inventory; the second hands a full report over.
    void handOverFirstFullReport() {
        manager().reportHardwareForced();
        advance(5);
        manager().reportHardwareForced();
        ASSERT_EQ(outboxNames().size(), 2u);
    }

    void addKeyboard(const std::string& name) {
        const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
        keyboard->setName(name);
        factory->section("iokit").get("keyboards").array()->push_back(Value(keyboard));
    }

    // Everything the archives in the outbox hold, one document after the other.
    std::string outboxDocuments() const {
        std::string documents;
        for (const std::string& name : outboxNames()) {
            if (name.ends_with(".zip")) documents += testing::zipFirstMemberText(outbox() + "/" + name) + "\n";
        }
        return documents;
    }

    std::string archiveNameNow() const { return QVReportOutbox::archiveNameForDate(*time); }

    // Every header in the outbox has its archive beside it.
    void expectWholePairs() const {
        for (const std::string& name : outboxNames()) {
            if (!name.ends_with(".hdr")) continue;
            const std::string archive = name.substr(0, name.size() - 3) + "zip";
            EXPECT_TRUE(std::filesystem::is_regular_file(outbox() + "/" + archive)) << name;
        }
    }

    std::size_t headerCount() const {
        std::size_t count = 0;
        for (const std::string& name : outboxNames()) count += name.ends_with(".hdr") ? 1 : 0;
        return count;
    }
};

TEST_F(AtLeastOnceHandOverTest, EveryChangeOfABurstReachesTheOutboxAfterAQuietTenMinutes) {
    handOverFirstFullReport();
    for (int change = 1; change <= 11; ++change) {
        advance(5);
        addKeyboard("Burst Keyboard " + std::to_string(change));
        manager().reportHardware();
    }
    ASSERT_NE(logText().find("No report written, because rapidReportCount is larger than 10. Rest for 10mins."),
              std::string::npos);
    EXPECT_EQ(outboxDocuments().find("Burst Keyboard 11"), std::string::npos);  // held back so far
    advance(601);
    manager().reportHardware();
    const std::string documents = outboxDocuments();
    for (int change = 1; change <= 11; ++change) {
        EXPECT_NE(documents.find("\"Burst Keyboard " + std::to_string(change) + "\""), std::string::npos) << change;
    }
    expectWholePairs();
}

TEST_F(AtLeastOnceHandOverTest, FailedHandOverLosesNothingAndLeavesNoHalfPair) {
    handOverFirstFullReport();
    const std::string previousHash = QVSSettings::defaultSettings().previousReportHash().value_or("");
    const std::string stored = readFile(previousReport());
    advance(60);
    addKeyboard("Keyboard Of The Failed Hand-Over");
    ASSERT_TRUE(std::filesystem::create_directory(outbox() + "/" + archiveNameNow()));  // where the archive goes
    manager().reportHardware();
    EXPECT_NE(logText().find("ERROR - Could not move [" + archiveNameNow() + "] into the outbox: File exists"),
              std::string::npos)
        << logText();
    EXPECT_EQ(headerCount(), 1u);
    EXPECT_EQ(QVSSettings::defaultSettings().previousReportHash().value_or(""), previousHash);
    EXPECT_EQ(readFile(previousReport()), stored);
    EXPECT_TRUE(std::filesystem::is_empty(stagingFolder()));

    advance(60);
    manager().reportHardware();
    EXPECT_EQ(headerCount(), 2u);
    EXPECT_NE(outboxDocuments().find("Keyboard Of The Failed Hand-Over"), std::string::npos);
    expectWholePairs();
}

TEST_F(AtLeastOnceHandOverTest, ChangeScanWhoseHandOverFailsIsReportedByTheNextFullScan) {
    handOverFirstFullReport();
    QVSSettings::defaultSettings().setLocalIP("192.168.1.20");
    factory->local = "192.168.1.99";
    factory->publicAddress = "203.0.113.99";
    const auto address = QVIPInfo::ipInfo();
    address->setLocalIp("192.168.1.99");
    address->setPublicIp("203.0.113.99");
    factory->section("events").set("Network", Value(address));
    advance(60);
    ASSERT_TRUE(std::filesystem::create_directory(outbox() + "/" + archiveNameNow()));
    manager().outputJsonFileWithDeltaDictionary(
        manager().performIPChangeDiscoveryWithFullReport(manager().getFullReportFromDisk()));
    EXPECT_EQ(headerCount(), 1u);
    EXPECT_EQ(readFile(previousReport()).find("192.168.1.99"), std::string::npos);

    advance(60);
    manager().reportHardware();
    EXPECT_EQ(headerCount(), 2u);
    EXPECT_NE(outboxDocuments().find("192.168.1.99"), std::string::npos);
    EXPECT_NE(readFile(previousReport()).find("192.168.1.99"), std::string::npos);
}

TEST_F(AtLeastOnceHandOverTest, TwoForcedScansInOneSecondLeaveOneFullReport) {
    manager().reportHardwareForced();  // a new installation: stored, nothing handed over
    advance(5);
    manager().reportHardwareForced();
    manager().reportHardwareForced();
    ASSERT_EQ(outboxNames(), (std::vector<std::string>{archiveNameNow().substr(0, 28) + ".hdr", archiveNameNow()}));
    EXPECT_EQ(readFile(outbox() + "/" + outboxNames()[0]),
              R"(X-NG-metadata: {"scanType":"full","Component":"TOV","Version":"1.0.0.402"})");
    EXPECT_FALSE(std::filesystem::exists(Paths::fullReportOwedMarker()));
}

TEST_F(AtLeastOnceHandOverTest, ForcedReportReplacingUncollectedOnesIsOwedUntilItIsHandedOver) {
    handOverFirstFullReport();
    advance(5);
    addKeyboard("Uncollected Keyboard");
    manager().reportHardware();
    ASSERT_EQ(headerCount(), 2u);
    for (int check = 0; check < 10; ++check) manager().shouldGenerateReportFile();
    ASSERT_FALSE(manager().allowScan());

    manager().reportHardwareForced();  // clears the uncollected reports, then is held back
    EXPECT_TRUE(outboxNames().empty());
    EXPECT_TRUE(std::filesystem::exists(Paths::fullReportOwedMarker()));

    advance(601);
    manager().reportHardware();  // nothing changed since, yet the owed full report goes
    ASSERT_EQ(headerCount(), 1u);
    EXPECT_EQ(readFile(outbox() + "/" + outboxNames()[0]),
              R"(X-NG-metadata: {"scanType":"full","Component":"TOV","Version":"1.0.0.402"})");
    EXPECT_NE(outboxDocuments().find("Uncollected Keyboard"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Paths::fullReportOwedMarker()));
}

TEST_F(AtLeastOnceHandOverTest, FolderPlantedAtTheStoredReportIsRemovedAndAFullReportGoes) {
    handOverFirstFullReport();
    std::filesystem::remove(previousReport());
    writeFile(previousReport() + "/inside", "planted");
    advance(60);
    factory->collection = "2024-01-31T09:16:05Z";
    manager().reportHardware();
    EXPECT_NE(logText().find("Removed [" + previousReport() + "]: it was not a stored report file."), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_regular_file(previousReport()));
    ASSERT_EQ(headerCount(), 2u);
    EXPECT_NE(outboxDocuments().rfind("HWInventory"), outboxDocuments().find("HWInventory"));  // a second full report
}

TEST_F(AtLeastOnceHandOverTest, LinkPlantedAtTheStoredReportIsNotFollowed) {
    handOverFirstFullReport();
    const std::string secret = folder.write("secret", "{\"not\": \"yours\"}");
    std::filesystem::remove(previousReport());
    ASSERT_EQ(::symlink(secret.c_str(), previousReport().c_str()), 0);
    advance(60);
    manager().reportHardware();
    EXPECT_EQ(readFile(secret), "{\"not\": \"yours\"}");
    EXPECT_TRUE(S_ISREG(testing::lstatOf(previousReport()).st_mode));
    // The link fails the permission fix, which holds this report back; a full report is owed.
    EXPECT_TRUE(std::filesystem::exists(Paths::fullReportOwedMarker()));
    advance(60);
    manager().reportHardware();
    EXPECT_EQ(headerCount(), 2u) << logText();
    EXPECT_FALSE(std::filesystem::exists(Paths::fullReportOwedMarker()));
    EXPECT_EQ(outboxDocuments().find("yours"), std::string::npos);
}

TEST_F(AtLeastOnceHandOverTest, StoredReportIsReplacedWholeNeverRemovedFirst) {
    handOverFirstFullReport();
    const ino_t before = testing::lstatOf(previousReport()).st_ino;
    advance(60);
    addKeyboard("Another Keyboard");
    manager().reportHardware();
    EXPECT_NE(testing::lstatOf(previousReport()).st_ino, before);  // a new file renamed over the old one
    EXPECT_NE(readFile(previousReport()).find("Another Keyboard"), std::string::npos);
    EXPECT_TRUE(manager().getFullReportFromDisk());
}

}  // namespace
}  // namespace tov
