#include "report/QVSReport.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "common/Paths.h"
#include "common/QVSMD5Utils.h"
#include "common/QVSSettings.h"
#include "model/Json.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIPInfo.h"
#include "report/FakeDiscoverers.h"
#include "report/QVCollectionUtil.h"
#include "report/QVHardwareReportJsonWriter.h"

namespace tov {
namespace {

using testing::readFile;
using testing::writeFile;

class QVSReportTest : public testing::ReportTest {
protected:
    QVSReport& manager() { return QVSReport::sharedManager(); }

    // Two forced scans: the first stores the inventory, the second hands a full report over.
    void handOverFirstFullReport() {
        manager().reportHardwareForced();
        manager().reportHardwareForced();
        ASSERT_EQ(outboxNames().size(), 2u);
    }

    void setDisplayManufacturer(const std::string& manufacturer) {
        const auto display = QVIOKitDisplay::iokitDisplay();
        display->setDescription("Color LCD");
        display->setManufacturer(manufacturer);
        factory->section("iokit").set("displays", Value(makeArray({Value(display)})));
    }

    // Counts the hand-overs of reports that each differ from the last.
    void reportAChange(int number) {
        setDisplayManufacturer("Maker " + std::to_string(number));
        manager().reportHardware();
    }
};

TEST_F(QVSReportTest, ThereIsOneManager) {
    // Asked for from several threads at once, every caller gets the same manager, and what
    // one of them changes the others see.
    std::vector<QVSReport*> managers(8, nullptr);
    std::vector<std::thread> threads;
    for (QVSReport*& found : managers) threads.emplace_back([&found] { found = &QVSReport::sharedManager(); });
    for (std::thread& thread : threads) thread.join();
    for (QVSReport* found : managers) EXPECT_EQ(found, &manager());
    setTime(4242);
    managers.front()->compressReportFileWithScanType(QVScanTypeNone);
    EXPECT_EQ(managers.back()->previousReportTime(), 4242);
}

TEST_F(QVSReportTest, FullScanRunsEverySectionInOrderUnderTheInventory) {
    const DictionaryRef hardware = manager().performFullHardwareDiscovery();
    ASSERT_EQ(hardware->size(), 1u);
    const DictionaryRef inventory = hardware->get("HWInventory").dictionary();
    ASSERT_TRUE(inventory);
    std::vector<std::string> keys;
    for (const auto& entry : *inventory) keys.push_back(entry.first);
    EXPECT_EQ(keys, (std::vector<std::string>{"collection", "iokit", "appkit", "diskutil", "operatingSystems",
                                              "coreaudio", "sysctl", "corefoundation", "events"}));
    EXPECT_EQ(inventory->get("collection"), Value("2024-01-31T09:15:00Z"));
}

TEST_F(QVSReportTest, FullScanReleasesTheVendorList) {
    manager().reportHardwareForced();
    EXPECT_EQ(factory->vendorListReleases, 1);
}

// The rate limit, with the last hand-over at t = 1000.
class RateLimitTest : public QVSReportTest {
protected:
    void SetUp() override {
        QVSReportTest::SetUp();
        setTime(1000);
        manager().compressReportFileWithScanType(QVScanTypeNone);  // nothing to compress: only the time moves
        ASSERT_EQ(manager().previousReportTime(), 1000);
    }
};

TEST_F(RateLimitTest, FirstCheckAfterStartResetsTheCount) {
    QVSReport::resetForTesting();
    setTime(1030);
    EXPECT_TRUE(manager().shouldGenerateReportFile());
    EXPECT_NE(logText().find("Reset rapidReportCount"), std::string::npos);
}

TEST_F(RateLimitTest, ReportsThirtySecondsApartCountUpToTenAndThenHoldBack) {
    setTime(1030);
    for (int check = 1; check <= 9; ++check) {
        EXPECT_TRUE(manager().shouldGenerateReportFile()) << check;
        EXPECT_EQ(manager().rapidReportCount(), static_cast<std::uint64_t>(check));
    }
    EXPECT_FALSE(manager().shouldGenerateReportFile());
    EXPECT_EQ(manager().rapidReportCount(), 10u);
    EXPECT_FALSE(manager().shouldGenerateReportFile());
    EXPECT_EQ(manager().rapidReportCount(), 10u);
    EXPECT_FALSE(manager().allowScan());
    EXPECT_NE(logText().find("diff: 30.000000 rapidReportCount: 10"), std::string::npos);
}

TEST_F(RateLimitTest, AnAttempt601SecondsAfterTheLastHandOverResetsTheCount) {
    setTime(1030);
    for (int check = 0; check < 10; ++check) manager().shouldGenerateReportFile();
    setTime(1600);
    EXPECT_FALSE(manager().shouldGenerateReportFile());
    EXPECT_EQ(manager().rapidReportCount(), 10u);
    setTime(1601);
    EXPECT_TRUE(manager().shouldGenerateReportFile());
    EXPECT_EQ(manager().rapidReportCount(), 0u);
    EXPECT_TRUE(manager().allowScan());
}

TEST_F(RateLimitTest, BetweenOneAndTenMinutesTheCountStays) {
    setTime(1030);
    manager().shouldGenerateReportFile();
    setTime(1060);
    EXPECT_TRUE(manager().shouldGenerateReportFile());
    EXPECT_EQ(manager().rapidReportCount(), 1u);
}

TEST_F(QVSReportTest, TheEleventhRapidReportIsHeldBackWithItsLogLine) {
    fillTypicalInventory(*factory);
    handOverFirstFullReport();
    for (int report = 1; report <= 9; ++report) {
        advance(30);
        reportAChange(report);
    }
    EXPECT_EQ(manager().rapidReportCount(), 9u);
    EXPECT_EQ(logText().find("rapidReportCount is larger than 10"), std::string::npos);
    const std::size_t handedOver = outboxNames().size();
    EXPECT_EQ(handedOver, 2u + 9 * 2);
    advance(30);
    reportAChange(10);
    EXPECT_EQ(manager().rapidReportCount(), 10u);
    EXPECT_NE(logText().find("No report written, because rapidReportCount is larger than 10. Rest for 10mins."),
              std::string::npos);
    EXPECT_EQ(outboxNames().size(), handedOver);
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
}

TEST_F(QVSReportTest, SameDocumentAsTheLastHandedOverIsNotHandedOverButIsStored) {
    fillTypicalInventory(*factory);
    handOverFirstFullReport();
    const std::string stored = readFile(previousReport());
    writeFile(previousReport(), "{}");
    std::filesystem::remove_all(outbox());  // collected
    manager().reportHardwareForced();
    EXPECT_NE(logText().find("No report written, because previous report hash has not been changed."), std::string::npos);
    EXPECT_TRUE(outboxNames().empty());
    EXPECT_EQ(readFile(previousReport()), stored);
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
}

TEST_F(QVSReportTest, ForcedReportEmptiesTheOutboxEvenWhenItIsHeldBack) {
    writeFile(outbox() + "/hardware.json-20240101000000.zip", "old");
    writeFile(outbox() + "/hardware.json-20240101000000.hdr", "old");
    manager().reportHardwareForced();  // a new installation: held back
    EXPECT_TRUE(outboxNames().empty());
    EXPECT_TRUE(std::filesystem::is_directory(outbox()));
}

TEST_F(QVSReportTest, ReportHashIsStoredOnlyWhenHandedOver) {
    fillTypicalInventory(*factory);
    manager().reportHardwareForced();
    EXPECT_FALSE(QVSSettings::defaultSettings().previousReportHash());
    manager().reportHardwareForced();
    const std::string archive = outbox() + "/" + outboxNames()[1];
    EXPECT_EQ(QVSSettings::defaultSettings().previousReportHash(), QVSMD5Utils::md5OfData(testing::zipFirstMemberText(archive)));
    EXPECT_GT(QVSSettings::defaultSettings().previousFullScanDatetime(), 0);
}

TEST_F(QVSReportTest, IpChangeWithoutPublicAnswerIsEmptyAndLeavesTheAddressesAlone) {
    QVSSettings::defaultSettings().setLocalIP("10.0.0.1");
    QVSSettings::defaultSettings().setPublicIP("198.51.100.1");
    factory->local = "10.0.0.2";
    const DictionaryRef changes = manager().performIPChangeDiscoveryWithFullReport(makeDictionary());
    ASSERT_TRUE(changes);
    EXPECT_TRUE(changes->empty());
    EXPECT_EQ(factory->publicQueries, 1);
    EXPECT_EQ(QVSSettings::defaultSettings().localIP(), "10.0.0.1");
    EXPECT_EQ(QVSSettings::defaultSettings().publicIP(), "198.51.100.1");
    EXPECT_NE(logText().find("No New Public IP, do not report."), std::string::npos);
}

TEST_F(QVSReportTest, IpChangeScanNeedsAStoredReport) {
    EXPECT_FALSE(manager().performIPChangeDiscoveryWithFullReport(nullptr));
    EXPECT_FALSE(manager().performSysChangeDiscoveryWithFullReport(nullptr));
    EXPECT_FALSE(manager().performDiskChangeDiscoveryWithFullReport(nullptr));
}

TEST_F(QVSReportTest, UnchangedLocalAddressAsksNoPublicAddress) {
    QVSSettings::defaultSettings().setLocalIP("10.0.0.1");
    factory->local = "10.0.0.1";
    factory->publicAddress = "203.0.113.9";
    EXPECT_TRUE(manager().performIPChangeDiscoveryWithFullReport(makeDictionary())->empty());
    EXPECT_EQ(factory->publicQueries, 0);
    EXPECT_NE(logText().find("No Local IP change, do not report."), std::string::npos);
}

TEST_F(QVSReportTest, IpChangeGivesAChangedNetworkRecordAndStoresTheAddresses) {
    QVSSettings::defaultSettings().setLocalIP("10.0.0.1");
    QVSSettings::defaultSettings().setPublicIP("198.51.100.1");
    factory->local = "10.0.0.2";
    factory->publicAddress = "203.0.113.9";
    const DictionaryRef changes = manager().performIPChangeDiscoveryWithFullReport(makeDictionary());
    const DictionaryRef events = changes->get("events").dictionary();
    ASSERT_TRUE(events);
    const auto record = std::dynamic_pointer_cast<QVIPInfo>(events->get("Network").record());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->localIp(), "10.0.0.2");
    EXPECT_EQ(record->publicIp(), "203.0.113.9");
    EXPECT_EQ(record->scanResult(), QVScanResultChanged);
    EXPECT_EQ(QVSSettings::defaultSettings().localIP(), "10.0.0.2");
    EXPECT_EQ(QVSSettings::defaultSettings().publicIP(), "203.0.113.9");
    EXPECT_FALSE(QVSSettings::defaultSettings().isDirty());
    EXPECT_NE(logText().find("LocalIP [10.0.0.1] -> [10.0.0.2], PublicIP [198.51.100.1] -> [203.0.113.9]. Report."),
              std::string::npos);
}

TEST_F(QVSReportTest, ChangedSystemNameAloneGivesARecordWithOnlyThatKey) {
    fillTypicalInventory(*factory);
    const DictionaryRef stored = makeDictionary();
    stored->set("operatingSystems", Value(factory->section("operatingSystems").deepCopy()));
    factory->section("operatingSystems").set("systemName", "alices-new-mac");
    const DictionaryRef changes = manager().performSysChangeDiscoveryWithFullReport(stored);
    ASSERT_EQ(changes->size(), 1u);
    const RecordRef record = changes->get("operatingSystems").record();
    ASSERT_TRUE(record);
    EXPECT_EQ(record->scanResult(), QVScanResultChanged);
    ASSERT_EQ(record->innerDictionary()->size(), 1u);
    EXPECT_EQ(record->innerDictionary()->get("systemName"), Value("alices-new-mac"));
}

TEST_F(QVSReportTest, UnchangedOrVanishedIdentityFactsReportNothing) {
    fillTypicalInventory(*factory);
    const DictionaryRef stored = makeDictionary();
    stored->set("operatingSystems", Value(factory->section("operatingSystems").deepCopy()));
    EXPECT_TRUE(manager().performSysChangeDiscoveryWithFullReport(stored)->empty());
    factory->section("operatingSystems").remove("username");
    EXPECT_TRUE(manager().performSysChangeDiscoveryWithFullReport(stored)->empty());
}

TEST_F(QVSReportTest, IdentityFactNewSinceTheStoredReportIsReported) {
    fillTypicalInventory(*factory);
    const DictionaryRef stored = makeDictionary();
    stored->set("operatingSystems", Value(makeDictionary()));
    const DictionaryRef changes = manager().performSysChangeDiscoveryWithFullReport(stored);
    const RecordRef record = changes->get("operatingSystems").record();
    ASSERT_TRUE(record);
    EXPECT_EQ(record->innerDictionary()->size(), 3u);
    EXPECT_EQ(record->innerDictionary()->get("username"), Value("alice"));
}

TEST_F(QVSReportTest, DiskChangeScanComparesEachDiskListWithItsStoredSection) {
    fillTypicalInventory(*factory);
    const DictionaryRef stored = makeDictionary();
    stored->set("diskutil", Value(factory->section("diskutil").deepCopy()));
    stored->set("iokit", Value(factory->section("iokit").deepCopy()));
    EXPECT_TRUE(manager().performDiskChangeDiscoveryWithFullReport(stored)->empty());

    const auto stick = QVDiskUtilDisk::diskUtilDisk();
    stick->setName("STICK");
    stick->setIdentifier("disk4s1");
    factory->section("diskutil").get("disks").array()->push_back(Value(stick));
    const DictionaryRef changes = manager().performDiskChangeDiscoveryWithFullReport(stored);
    ASSERT_EQ(changes->size(), 1u);
    const ArrayRef disks = changes->get("diskutil").dictionary()->get("disks").array();
    ASSERT_EQ(disks->size(), 1u);
    EXPECT_EQ((*disks)[0].record()->identifier(), "disk4s1");
    EXPECT_EQ((*disks)[0].record()->scanResult(), QVScanResultAdded);
}

}  // namespace
}  // namespace tov
