#include "report/QVStoredReport.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "common/Paths.h"
#include "model/QVIOKitKeyboard.h"
#include "report/FakeDiscoverers.h"
#include "report/QVHardwareReportJsonWriter.h"
#include "report/QVReportOutbox.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

using testing::readFile;
using testing::writeFile;

// A stored report as the writer makes it: one keyboard and every other section empty.
DictionaryRef inventoryWithKeyboard(const std::string& name) {
    DictionaryRef inventory = makeDictionary();
    for (const char* section : {"iokit", "appkit", "diskutil", "operatingSystems", "coreaudio", "sysctl",
                                "corefoundation", "events"}) {
        inventory->set(section, Value(makeDictionary()));
    }
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName(name);
    inventory->get("iokit").dictionary()->set("keyboards", Value(makeArray({Value(keyboard)})));
    return inventory;
}

std::string keyboardNameOf(const DictionaryRef& inventory) {
    const ArrayRef keyboards = inventory->get("iokit").dictionary()->get("keyboards").array();
    return keyboards && !keyboards->empty() ? (*keyboards)[0].record()->identifier().value_or("") : "";
}

class QVStoredReportTest : public testing::ReportTest {
protected:
    void SetUp() override {
        testing::ReportTest::SetUp();
        QVReportOutbox::lazyCreateOutboxAndDeltaFolders();
    }
    QVStoredReport store;
};

TEST_F(QVStoredReportTest, NoStoredReportAndNoCopyLogsTheReadErrorAndGivesNothing) {
    EXPECT_FALSE(store.getFullReportFromDisk());
    EXPECT_NE(logText().find("INFORMATION - Could not read the previous scan data. Error code = [260]"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(previousReport()));
}

TEST_F(QVStoredReportTest, StoredReportIsWrittenReadBackAndKeptInMemory) {
    QVFileUtilErrorSlot error;
    ASSERT_TRUE(store.saveFullReportToDisk(inventoryWithKeyboard("K1"), &error));
    EXPECT_FALSE(error);
    EXPECT_EQ(store.previousDataInMemory(), readFile(previousReport()));
    EXPECT_EQ(keyboardNameOf(store.getFullReportFromDisk()), "K1");
    if (testing::runningAsRoot()) {
        EXPECT_EQ(testing::lstatOf(previousReport()).st_mode & 07777, 0600u);
    }
}

TEST_F(QVStoredReportTest, VanishedStoredReportIsRestoredFromMemoryOnce) {
    ASSERT_TRUE(store.saveFullReportToDisk(inventoryWithKeyboard("K1"), nullptr));
    const std::string bytes = readFile(previousReport());
    std::filesystem::remove(previousReport());
    EXPECT_EQ(keyboardNameOf(store.getFullReportFromDisk()), "K1");
    EXPECT_NE(logText().find("Restore previous report."), std::string::npos);
    EXPECT_EQ(readFile(previousReport()), bytes);
}

TEST_F(QVStoredReportTest, LoadingAtStartKeepsValidTextOnly) {
    writeFile(previousReport(), "{\"iokit\": {}}");
    store.loadPreviousReportData();
    EXPECT_EQ(store.previousDataInMemory(), "{\"iokit\": {}}");
    EXPECT_NE(logText().find("Load previous report."), std::string::npos);

    QVStoredReport other;
    writeFile(previousReport(), std::string("\xff\xfe\x00", 3));
    other.loadPreviousReportData();
    EXPECT_EQ(other.previousDataInMemory(), "");
}

TEST_F(QVStoredReportTest, StoredReportThatIsNotTextReadsAsNothing) {
    writeFile(previousReport(), std::string("\xc3\x28 broken", 9));
    EXPECT_FALSE(store.getFullReportFromDisk());
    writeFile(previousReport(), "");
    EXPECT_FALSE(store.getFullReportFromDisk());
}

TEST_F(QVStoredReportTest, RestoredCopyThatIsNoReportReadsAsNothingAndIsKept) {
    writeFile(previousReport(), "not json at all");
    store.loadPreviousReportData();
    ASSERT_EQ(store.previousDataInMemory(), "not json at all");
    std::filesystem::remove(previousReport());
    EXPECT_FALSE(store.getFullReportFromDisk());
    EXPECT_EQ(store.previousDataInMemory(), "not json at all");  // valid text: kept for the next restore
}

TEST_F(QVStoredReportTest, StoredReportOverTheSizeLimitIsNotRead) {
    ASSERT_TRUE(store.saveFullReportToDisk(inventoryWithKeyboard("K1"), nullptr));
    std::filesystem::resize_file(previousReport(), QVStoredReport::kMaximumReportBytes + 1);
    EXPECT_FALSE(store.getFullReportFromDisk());
    EXPECT_EQ(logText().find("Could not read the previous scan data"), std::string::npos);
    QVStoredReport fresh;
    fresh.loadPreviousReportData();
    EXPECT_EQ(fresh.previousDataInMemory(), "");
}

TEST_F(QVStoredReportTest, FailedStoreReportsTheWriteErrorAndTheOldFileIsGone) {
    ASSERT_TRUE(store.saveFullReportToDisk(inventoryWithKeyboard("K1"), nullptr));
    std::filesystem::remove_all(Paths::deltaFolder());
    QVFileUtilErrorSlot error;
    EXPECT_FALSE(store.saveFullReportToDisk(inventoryWithKeyboard("K2"), &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, 4);
    EXPECT_FALSE(store.saveFullReportToDisk(nullptr, &error));
}

TEST_F(QVStoredReportTest, StoredReportIsTheInventoryWithoutItsWrapper) {
    const DictionaryRef inventory = inventoryWithKeyboard("K1");
    ASSERT_TRUE(store.saveFullReportToDisk(inventory, nullptr));
    EXPECT_EQ(readFile(previousReport()), QVHardwareReportJsonWriter::jsonContentOfHardware(inventory).value());
}

}  // namespace
}  // namespace tov
