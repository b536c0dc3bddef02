// The full-scan report decision between full and delta documents, and the change-scan
// delta path with its merge into the stored report.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "common/Paths.h"
#include "common/QVSSettings.h"
#include "model/Json.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIPInfo.h"
#include "report/FakeDiscoverers.h"
#include "report/QVCollectionUtil.h"
#include "report/QVReportOutbox.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

using testing::readFile;
using testing::writeFile;

Value documentOf(const std::string& path) { return parseJson(readFile(path)).value_or(Value()); }

std::vector<std::string> keysOf(const Value& value) {
    std::vector<std::string> keys;
    if (const DictionaryRef dictionary = value.dictionary()) {
        for (const auto& entry : *dictionary) keys.push_back(entry.first);
    }
    return keys;
}

class DeltaReportTest : public testing::ReportTest {
protected:
    void SetUp() override {
        testing::ReportTest::SetUp();
        fillTypicalInventory(*factory);
        QVReportOutbox::lazyCreateOutboxAndDeltaFolders();
    }
    QVSReport& manager() { return QVSReport::sharedManager(); }

    QVScanType output(bool forced) {
        return manager().outputJsonFileWithHardware(manager().performFullHardwareDiscovery(), forced);
    }

    // The stored report of the typical inventory, as a first scan leaves it.
    void storeTypicalInventory() {
        ASSERT_EQ(output(true), QVScanTypeNone);  // no stored report yet: held back
        ASSERT_TRUE(std::filesystem::is_regular_file(previousReport()));
    }

    void addKeyboard(const std::string& name) {
        const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
        keyboard->setName(name);
        factory->section("iokit").get("keyboards").array()->push_back(Value(keyboard));
    }
};

TEST_F(DeltaReportTest, FirstForcedScanStoresTheInventoryButReportsTheMissingStoredReport) {
    EXPECT_EQ(output(true), QVScanTypeNone);
    EXPECT_TRUE(std::filesystem::is_regular_file(previousReport()));
    const std::string log = logText();
    if (testing::runningAsRoot()) {
        EXPECT_NE(log.find("ERROR - No item exists at path."), std::string::npos) << log;
        EXPECT_NE(log.find("Could not generate hardware report. Error code = [2]"), std::string::npos) << log;
    }
}

TEST_F(DeltaReportTest, FirstUnforcedScanReportsTheReadError) {
    EXPECT_EQ(output(false), QVScanTypeNone);
    const std::string log = logText();
    EXPECT_NE(log.find("Could not read the previous scan data.  Error code = [260]"), std::string::npos) << log;
    EXPECT_NE(log.find("Could not generate hardware report. Error code = [260]"), std::string::npos) << log;
    EXPECT_TRUE(std::filesystem::is_regular_file(previousReport()));
}

TEST_F(DeltaReportTest, ForcedScanWithAStoredReportWritesAFullDocument) {
    storeTypicalInventory();
    EXPECT_EQ(output(true), QVScanTypeFull);
    const Value document = documentOf(Paths::temporaryReport());
    EXPECT_EQ(keysOf(document), std::vector<std::string>{"HWInventory"});
    EXPECT_EQ(document.dictionary()->get("HWInventory").dictionary()->get("collection"), Value("2024-01-31T09:15:00Z"));
    EXPECT_NE(logText().find("Generated hardware report (FULL)."), std::string::npos);
    EXPECT_DOUBLE_EQ(QVSSettings::defaultSettings().previousFullScanDatetime(), 1706692500);
}

TEST_F(DeltaReportTest, UnforcedScanEqualToTheStoredReportGivesNothingAndLeavesItUntouched) {
    storeTypicalInventory();
    const struct stat before = testing::lstatOf(previousReport());
    const auto writtenAt = std::filesystem::last_write_time(previousReport());
    std::filesystem::remove(Paths::temporaryReport());
    factory->collection = "2024-02-01T00:00:00Z";  // a new time alone is no change
    EXPECT_EQ(output(false), QVScanTypeNone);
    const struct stat after = testing::lstatOf(previousReport());
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(std::filesystem::last_write_time(previousReport()), writtenAt);
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
}

TEST_F(DeltaReportTest, UnforcedScanWithAStoredReportThatIsNotTextWritesAFullReport) {
    storeTypicalInventory();
    writeFile(previousReport(), std::string("\xff\xff\xff", 3));
    EXPECT_EQ(output(false), QVScanTypeFull);
    EXPECT_EQ(keysOf(documentOf(Paths::temporaryReport())), std::vector<std::string>{"HWInventory"});
}

TEST_F(DeltaReportTest, UnforcedScanWithAnUnreadableStoredReportWritesAFullReport) {
    storeTypicalInventory();
    writeFile(previousReport(), "[1, 2]");
    EXPECT_EQ(output(false), QVScanTypeFull);
}

TEST_F(DeltaReportTest, FullScanDeltaDocumentAlwaysHoldsAllThreeMembers) {
    storeTypicalInventory();
    addKeyboard("USB Keyboard");
    EXPECT_EQ(output(false), QVScanTypeDelta);
    const Value document = documentOf(Paths::temporaryReport());
    EXPECT_EQ(keysOf(document), (std::vector<std::string>{"added", "changed", "removed"}));
    EXPECT_TRUE(document.dictionary()->get("changed").dictionary()->empty());
    EXPECT_TRUE(document.dictionary()->get("removed").dictionary()->empty());
    const ArrayRef keyboards =
        document.dictionary()->get("added").dictionary()->get("iokit").dictionary()->get("keyboards").array();
    ASSERT_TRUE(keyboards);
    ASSERT_EQ(keyboards->size(), 1u);
    EXPECT_EQ((*keyboards)[0].dictionary()->get("name"), Value("USB Keyboard"));
    EXPECT_NE(logText().find("Generated hardware report (DELTA)."), std::string::npos);
    // The stored report moves on only when the report is handed over.
    EXPECT_EQ(readFile(previousReport()).find("USB Keyboard"), std::string::npos);
}

TEST_F(DeltaReportTest, ChangeScanDocumentHoldsOnlyWhatChanged) {
    storeTypicalInventory();
    QVSSettings::defaultSettings().setLocalIP("192.168.1.20");
    factory->local = "192.168.1.30";
    factory->publicAddress = "203.0.113.8";
    const DictionaryRef stored = manager().getFullReportFromDisk();
    manager().outputJsonFileWithDeltaDictionary(manager().performIPChangeDiscoveryWithFullReport(stored));
    const std::vector<std::string> names = outboxNames();
    ASSERT_EQ(names.size(), 2u);
    const Value document = parseJson(testing::zipFirstMemberText(outbox() + "/" + names[1])).value_or(Value());
    EXPECT_EQ(keysOf(document), std::vector<std::string>{"changed"});
    const DictionaryRef network =
        document.dictionary()->get("changed").dictionary()->get("events").dictionary()->get("Network").dictionary();
    ASSERT_TRUE(network);
    EXPECT_EQ(network->get("localIp"), Value("192.168.1.30"));
    EXPECT_EQ(network->get("publicIp"), Value("203.0.113.8"));
    EXPECT_EQ(readFile(outbox() + "/" + names[0]),
              R"(X-NG-metadata: {"scanType":"delta","Component":"TOV","Version":"1.0.0.402"})");
    // Handed over: the stored "Network" record takes the new addresses.
    const DictionaryRef after = manager().getFullReportFromDisk();
    const auto record = std::dynamic_pointer_cast<QVIPInfo>(after->get("events").dictionary()->get("Network").record());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->localIp(), "192.168.1.30");
    EXPECT_EQ(record->publicIp(), "203.0.113.8");
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
}

TEST_F(DeltaReportTest, ChangeScanWithoutChangesWritesNothing) {
    manager().outputJsonFileWithDeltaDictionary(makeDictionary());
    EXPECT_NE(logText().find("No Change is detected."), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
    EXPECT_TRUE(outboxNames().empty());
}

TEST_F(DeltaReportTest, ChangeScanWithTheLastHashIsNotHandedOver) {
    storeTypicalInventory();
    const auto record = QVIPInfo::ipInfo();
    record->setLocalIp("10.1.1.1");
    record->setScanResult(QVScanResultChanged);
    DictionaryRef events = makeDictionary();
    events->set("Network", Value(record));
    DictionaryRef changes = makeDictionary();
    changes->set("events", Value(events));
    manager().outputJsonFileWithDeltaDictionary(changes->deepCopy());
    ASSERT_EQ(outboxNames().size(), 2u);
    std::filesystem::remove_all(outbox());
    QVReportOutbox::lazyCreateOutboxAndDeltaFolders();
    manager().outputJsonFileWithDeltaDictionary(changes->deepCopy());
    EXPECT_NE(logText().find("Delta report is writen, but md5 hash is same as previous on, So, do not report."),
              std::string::npos);
    EXPECT_TRUE(outboxNames().empty());
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
}

TEST_F(DeltaReportTest, RateLimitedChangeScanLeavesTheStoredReportAsItWas) {
    storeTypicalInventory();
    const std::string stored = readFile(previousReport());
    for (int check = 0; check < 10; ++check) {
        manager().compressReportFileWithScanType(QVScanTypeNone);
        manager().shouldGenerateReportFile();
    }
    ASSERT_FALSE(manager().allowScan());
    const DictionaryRef changes = makeDictionary();
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("Rapid Keyboard");
    keyboard->setScanResult(QVScanResultAdded);
    DictionaryRef iokit = makeDictionary();
    iokit->set("keyboards", Value(makeArray({Value(keyboard)})));
    changes->set("iokit", Value(iokit));
    manager().outputJsonFileWithDeltaDictionary(changes);
    EXPECT_NE(logText().find("Delta report is writen, but rapidReportCount is larger than 10. So, Rest for 10mins."),
              std::string::npos);
    EXPECT_EQ(readFile(previousReport()), stored);
    EXPECT_TRUE(outboxNames().empty());
}

TEST_F(DeltaReportTest, ChangeScanWithoutAStoredReportHandsOverAndLeavesNoStoredReport) {
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("K");
    keyboard->setScanResult(QVScanResultAdded);
    DictionaryRef iokit = makeDictionary();
    iokit->set("keyboards", Value(makeArray({Value(keyboard)})));
    DictionaryRef changes = makeDictionary();
    changes->set("iokit", Value(iokit));
    manager().outputJsonFileWithDeltaDictionary(changes);
    EXPECT_EQ(outboxNames().size(), 2u);
    EXPECT_FALSE(std::filesystem::exists(previousReport()));
}

}  // namespace
}  // namespace tov
