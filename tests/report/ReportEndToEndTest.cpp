// A new installation from its first forced scan to delta reports, on a temporary root:
// what reaches the outbox, and what the stored report becomes.

#include <gtest/gtest.h>

#include <filesystem>

#include "common/Paths.h"
#include "model/Json.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIPInfo.h"
#include "report/FakeDiscoverers.h"
#include "report/QVSReport.h"

namespace tov {
namespace {

using testing::readFile;

class ReportEndToEndTest : public testing::ReportTest {
protected:
    QVSReport& manager() { return QVSReport::sharedManager(); }

    // The document of the newest archive in the outbox.
    Value newestDocument() {
        std::vector<std::string> archives;
        for (const std::string& name : outboxNames()) {
            if (name.ends_with(".zip")) archives.push_back(name);
        }
        if (archives.empty()) return Value();
        return parseJson(testing::zipFirstMemberText(outbox() + "/" + archives.back())).value_or(Value());
    }

    std::string newestHeader() {
        const std::vector<std::string> names = outboxNames();
        for (auto name = names.rbegin(); name != names.rend(); ++name) {
            if (name->ends_with(".hdr")) return readFile(outbox() + "/" + *name);
        }
        return "";
    }
};

TEST_F(ReportEndToEndTest, FromANewInstallationToDeltaReports) {
    fillTypicalInventory(*factory);

    // First forced scan: the inventory is stored, nothing is handed over.
    manager().reportHardwareForced();
    EXPECT_TRUE(std::filesystem::is_regular_file(previousReport()));
    EXPECT_TRUE(outboxNames().empty());

    // Second: exactly one archive and its header, a full report.
    advance(3600);
    manager().reportHardwareForced();
    ASSERT_EQ(outboxNames().size(), 2u);
    EXPECT_EQ(outboxNames()[0], "hardware.json-20240131101500.hdr");
    EXPECT_EQ(outboxNames()[1], "hardware.json-20240131101500.zip");
    EXPECT_EQ(newestHeader(), R"(X-NG-metadata: {"scanType":"full","Component":"TOV","Version":"1.0.0.402"})");
    const Value full = newestDocument();
    ASSERT_TRUE(full.isDictionary());
    const DictionaryRef inventory = full.dictionary()->get("HWInventory").dictionary();
    ASSERT_TRUE(inventory);
    EXPECT_EQ(inventory->get("iokit").dictionary()->get("displays").array()->size(), 1u);

    // The display changes: a delta archive holds it under "changed" → "iokit" → "displays".
    advance(3600);
    const auto display = QVIOKitDisplay::iokitDisplay();
    display->setDescription("Color LCD");
    display->setManufacturer("Apple Inc.");
    factory->section("iokit").set("displays", Value(makeArray({Value(display)})));
    manager().reportHardware();
    ASSERT_EQ(outboxNames().size(), 4u);
    EXPECT_EQ(newestHeader(), R"(X-NG-metadata: {"scanType":"delta","Component":"TOV","Version":"1.0.0.402"})");
    const Value delta = newestDocument();
    const ArrayRef displays =
        delta.dictionary()->get("changed").dictionary()->get("iokit").dictionary()->get("displays").array();
    ASSERT_TRUE(displays);
    ASSERT_EQ(displays->size(), 1u);
    EXPECT_EQ((*displays)[0].dictionary()->get("manufacturer"), Value("Apple Inc."));
    EXPECT_EQ((*displays)[0].dictionary()->get("adapterDescription"), Value("Color LCD"));

    // An address change: { "changed": { "events": { "Network": ... } } }, merged into the stored report.
    advance(3600);
    factory->local = "192.168.1.77";
    factory->publicAddress = "203.0.113.77";
    const DictionaryRef stored = manager().getFullReportFromDisk();
    ASSERT_TRUE(stored);
    manager().outputJsonFileWithDeltaDictionary(manager().performIPChangeDiscoveryWithFullReport(stored));
    ASSERT_EQ(outboxNames().size(), 6u);
    const Value ipDelta = newestDocument();
    ASSERT_TRUE(ipDelta.isDictionary());
    EXPECT_EQ(ipDelta.dictionary()->size(), 1u);
    const DictionaryRef network =
        ipDelta.dictionary()->get("changed").dictionary()->get("events").dictionary()->get("Network").dictionary();
    ASSERT_TRUE(network);
    EXPECT_EQ(network->get("localIp"), Value("192.168.1.77"));
    EXPECT_EQ(network->get("publicIp"), Value("203.0.113.77"));
    const DictionaryRef merged = manager().getFullReportFromDisk();
    const auto record = std::dynamic_pointer_cast<QVIPInfo>(merged->get("events").dictionary()->get("Network").record());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->localIp(), "192.168.1.77");
    EXPECT_EQ(record->publicIp(), "203.0.113.77");
    EXPECT_FALSE(std::filesystem::exists(Paths::temporaryReport()));
}

}  // namespace
}  // namespace tov
