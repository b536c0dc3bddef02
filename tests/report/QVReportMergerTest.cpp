#include "report/QVReportMerger.h"

#include <gtest/gtest.h>

#include "common/QVSLogger.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIPInfo.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

std::shared_ptr<QVIOKitDisplay> display(const std::string& description, const std::string& manufacturer, int width) {
    const auto record = QVIOKitDisplay::iokitDisplay();
    record->setDescription(description);
    record->setManufacturer(manufacturer);
    record->setWidth(width);
    return record;
}

std::shared_ptr<QVIOKitKeyboard> keyboard(const std::string& name) {
    const auto record = QVIOKitKeyboard::ioKitKeyboard();
    record->setName(name);
    return record;
}

std::shared_ptr<QVIPInfo> address(const std::string& local, const std::string& publicAddress) {
    const auto record = QVIPInfo::ipInfo();
    record->setLocalIp(local);
    record->setPublicIp(publicAddress);
    return record;
}

DictionaryRef dictionaryOf(std::initializer_list<std::pair<const char*, Value>> entries) {
    DictionaryRef dictionary = makeDictionary();
    for (const auto& [key, value] : entries) dictionary->set(key, value);
    return dictionary;
}

Value arrayOf(std::initializer_list<Value> values) { return Value(makeArray(Array(values))); }

// A stored report with two displays under "iokit" and an address under "events".
DictionaryRef storedReport() {
    return dictionaryOf({
        {"iokit", Value(dictionaryOf({{"displays", arrayOf({Value(display("Color LCD", "Apple", 2560)),
                                                            Value(display("DELL U2720Q", "Dell", 3840))})}}))},
        {"events", Value(dictionaryOf({{"Network", Value(address("10.0.0.1", "198.51.100.1"))}}))},
        {"operatingSystems", Value(dictionaryOf({{"systemName", Value("mac")}, {"username", Value("alice")}}))},
    });
}

ArrayRef storedDisplays(const DictionaryRef& report) {
    return report->get("iokit").dictionary()->get("displays").array();
}

class QVReportMergerTest : public ::testing::Test {
protected:
    void SetUp() override {
        QVSLogger::resetForTesting();
        QVSLogger::setFilename("tov", folder.path());
    }
    void TearDown() override { QVSLogger::resetForTesting(); }
    std::string logText() const { return testing::readFile(folder.file("tov.log")); }

    testing::TestFolder folder;
};

TEST_F(QVReportMergerTest, AddedRecordsAreAppendedToTheirStoredArray) {
    const DictionaryRef report = storedReport();
    const auto added = dictionaryOf(
        {{"iokit", Value(dictionaryOf({{"displays", arrayOf({Value(display("LG UltraFine", "LG", 5120))})}}))}});
    QVReportMerger::mergeAdded(added, nullptr, nullptr, *report);
    const ArrayRef displays = storedDisplays(report);
    ASSERT_EQ(displays->size(), 3u);
    EXPECT_EQ((*displays)[2].record()->identifier(), "LG UltraFine");
}

TEST_F(QVReportMergerTest, AddedRecordUnderAKeyTheStoredReportLacksIsNotMerged) {
    const DictionaryRef report = storedReport();
    const auto added = dictionaryOf({{"iokit", Value(dictionaryOf({{"keyboards", arrayOf({Value(keyboard("K"))})}}))},
                                     {"appkit", Value(dictionaryOf({{"printers", arrayOf({Value(keyboard("P"))})}}))}});
    QVReportMerger::mergeAdded(added, nullptr, nullptr, *report);
    EXPECT_FALSE(report->get("iokit").dictionary()->contains("keyboards"));
    EXPECT_FALSE(report->contains("appkit"));
}

TEST_F(QVReportMergerTest, ChangedRecordInAnArrayReplacesAllKeysOfItsCounterpart) {
    const DictionaryRef report = storedReport();
    const auto changed = QVIOKitDisplay::iokitDisplay();
    changed->setDescription("DELL U2720Q");
    changed->setManufacturer("Dell Inc.");
    const auto modified = dictionaryOf({{"iokit", Value(dictionaryOf({{"displays", arrayOf({Value(changed)})}}))}});
    QVReportMerger::mergeAdded(nullptr, modified, nullptr, *report);
    const ArrayRef displays = storedDisplays(report);
    ASSERT_EQ(displays->size(), 2u);
    const Dictionary& keys = *(*displays)[1].record()->innerDictionary();
    EXPECT_EQ(keys.get("manufacturer"), Value("Dell Inc."));
    EXPECT_FALSE(keys.contains("width"));
    EXPECT_EQ(keys.size(), changed->innerDictionary()->size());
    EXPECT_EQ((*displays)[0].record()->innerDictionary()->get("width"), Value(2560));
}

TEST_F(QVReportMergerTest, ChangedRecordWithoutACounterpartIsDropped) {
    const DictionaryRef report = storedReport();
    const auto modified = dictionaryOf(
        {{"iokit", Value(dictionaryOf({{"displays", arrayOf({Value(display("Unknown", "X", 1))})}}))}});
    QVReportMerger::mergeAdded(nullptr, modified, nullptr, *report);
    EXPECT_EQ(storedDisplays(report)->size(), 2u);
}

TEST_F(QVReportMergerTest, ChangedRecordDirectlyUnderAKeyOnlyAddsAndReplacesKeys) {
    const DictionaryRef report = storedReport();
    const auto changed = QVIPInfo::ipInfo();
    changed->setLocalIp("10.0.0.2");
    changed->innerDictionary()->remove("publicIp");
    const auto modified = dictionaryOf({{"events", Value(dictionaryOf({{"Network", Value(changed)}}))}});
    QVReportMerger::mergeAdded(nullptr, modified, nullptr, *report);
    const auto stored = std::dynamic_pointer_cast<QVIPInfo>(report->get("events").dictionary()->get("Network").record());
    EXPECT_EQ(stored->localIp(), "10.0.0.2");
    EXPECT_EQ(stored->publicIp(), "198.51.100.1");
}

TEST_F(QVReportMergerTest, ChangedRecordUnderAPlainSectionUpdatesACopyOfIt) {
    const DictionaryRef report = storedReport();
    const DictionaryRef before = report->get("operatingSystems").dictionary();
    const auto changed = QVSystemInfo::systemInfo();
    changed->setStringValue("new-mac", "systemName");
    QVReportMerger::mergeAdded(nullptr, dictionaryOf({{"operatingSystems", Value(changed)}}), nullptr, *report);
    const DictionaryRef after = report->get("operatingSystems").dictionary();
    EXPECT_EQ(after->get("systemName"), Value("new-mac"));
    EXPECT_EQ(after->get("username"), Value("alice"));
    EXPECT_EQ(before->get("systemName"), Value("mac"));
}

TEST_F(QVReportMergerTest, RemovedRecordsLeaveTheirArray) {
    const DictionaryRef report = storedReport();
    const auto removed = dictionaryOf(
        {{"iokit", Value(dictionaryOf({{"displays", arrayOf({Value(display("DELL U2720Q", "Dell", 0))})}}))}});
    QVReportMerger::mergeAdded(nullptr, nullptr, removed, *report);
    const ArrayRef displays = storedDisplays(report);
    ASSERT_EQ(displays->size(), 1u);
    EXPECT_EQ((*displays)[0].record()->identifier(), "Color LCD");
}

TEST_F(QVReportMergerTest, RemovedRecordDirectlyUnderAKeyLosesItsKeys) {
    const DictionaryRef report = storedReport();
    const auto removed = QVIPInfo::ipInfo();
    removed->innerDictionary()->remove("localIp");
    removed->setPublicIp("198.51.100.1");
    QVReportMerger::mergeAdded(nullptr, nullptr, dictionaryOf({{"events", Value(dictionaryOf({{"Network", Value(removed)}}))}}),
                               *report);
    const Dictionary& keys = *report->get("events").dictionary()->get("Network").record()->innerDictionary();
    EXPECT_TRUE(keys.contains("localIp"));
    EXPECT_FALSE(keys.contains("publicIp"));
}

TEST_F(QVReportMergerTest, ElementsThatAreNotRecordsAreWarnedAboutAndSkipped) {
    const DictionaryRef report = storedReport();
    storedDisplays(report)->insert(storedDisplays(report)->begin(), Value("not a record"));
    const auto changes = dictionaryOf(
        {{"iokit", Value(dictionaryOf({{"displays", arrayOf({Value("text"), Value(display("Color LCD", "Apple", 1))})}}))}});
    QVReportMerger::mergeAdded(nullptr, changes, changes->deepCopy(), *report);
    const std::string log = logText();
    EXPECT_NE(log.find("item is not QVSystemInfo object!2"), std::string::npos);
    EXPECT_NE(log.find("olditem is not QVSystemInfo object!1"), std::string::npos);
    EXPECT_NE(log.find("item is not QVSystemInfo object!4"), std::string::npos);
    EXPECT_NE(log.find("olditem is not QVSystemInfo object!3"), std::string::npos);
    const ArrayRef displays = storedDisplays(report);
    ASSERT_EQ(displays->size(), 2u);
    EXPECT_EQ((*displays)[0], Value("not a record"));
    EXPECT_EQ((*displays)[1].record()->identifier(), "DELL U2720Q");
}

TEST_F(QVReportMergerTest, ShapesThatDoNotMatchAreSkippedSilently) {
    const DictionaryRef report = storedReport();
    const DictionaryRef before = report->deepCopy();
    const auto changes = dictionaryOf({{"events", arrayOf({Value(address("1.1.1.1", "2.2.2.2"))})},
                                       {"iokit", Value(dictionaryOf({{"displays", Value(display("Color LCD", "X", 1))}}))}});
    QVReportMerger::mergeAdded(changes, changes, changes, *report);
    EXPECT_EQ(*report, *before);
}

TEST_F(QVReportMergerTest, NoTreesChangeNothing) {
    const DictionaryRef report = storedReport();
    const DictionaryRef before = report->deepCopy();
    QVReportMerger::mergeAdded(nullptr, makeDictionary(), nullptr, *report);
    EXPECT_EQ(*report, *before);
}

}  // namespace
}  // namespace tov
