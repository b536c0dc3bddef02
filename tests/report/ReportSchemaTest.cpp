// Every document and header the report manager hands over matches the schemas in
// schema/: a full report and full-scan deltas between the inventories of real fixture
// machines (records changed, added and removed), and the deltas of the three change scans.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/Json.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIPInfo.h"
#include "report/FakeDiscoverers.h"
#include "report/QVSReport.h"
#include "support/FixtureReport.h"
#include "support/ReportSchemaCheck.h"

namespace tov {
namespace {

using testing::readFile;

// Changes a value of every record that its kind's equality looks at but its identifier
// does not, so that the next comparison finds the record changed.
void changeDetails(QVSystemInfo& record) {
    Dictionary& values = *record.innerDictionary();
    for (const char* key : {"manufacturer", "serialNumber", "ssid", "driver", "build"}) {
        const Value value = values.get(key);
        if (value.isString()) values.set(key, Value(*value.string() + " 2"));
    }
    for (const char* key : {"sizeBytes", "physicalCores", "totalVirtualRAMBytes"}) {
        const Value value = values.get(key);
        if (value.isNumber()) values.set(key, Value(value.toUInt64() + 1));
    }
}

void changeDetailsOfEveryRecord(const Dictionary& section) {
    for (const auto& [name, value] : section) {
        if (const RecordRef record = value.record()) changeDetails(*record);
        if (const ArrayRef list = value.array()) {
            for (const Value& element : *list) {
                if (const RecordRef record = element.record()) changeDetails(*record);
            }
        }
    }
}

class ReportSchemaTest : public testing::ReportTest {
protected:
    void SetUp() override {
        testing::ReportTest::SetUp();
        if (!testing::reportSchemaAvailable()) GTEST_SKIP() << "no python3 with jsonschema";
        checkFolder = folder.makeFolder("schema-check");
    }

    QVSReport& manager() { return QVSReport::sharedManager(); }

    // The sections the next scans find are those of the fixture machine.
    void discover(const std::string& fixture) {
        const DictionaryRef hardware = testing::fixtureInventory(std::string(TOV_TEST_FIXTURES) + "/" + fixture);
        ASSERT_TRUE(hardware) << fixture;
        const DictionaryRef inventory = hardware->get("HWInventory").dictionary();
        ASSERT_TRUE(inventory) << fixture;
        for (const auto& [name, section] : *inventory) {
            if (const DictionaryRef dictionary = section.dictionary()) factory->sections[name] = dictionary;
        }
    }

    // A full scan an hour after the last, which must hand over one more pair.
    void scanHandingOver(bool forced) {
        advance(3600);
        const std::size_t before = outboxNames().size();
        manager().reportHardware(forced);
        ASSERT_EQ(outboxNames().size(), before + 2) << logText();
    }

    // A change scan's delta an hour after the last report, which must hand over one more pair.
    void changeScanHandingOver(DictionaryRef (QVSReport::*scan)(const DictionaryRef&)) {
        advance(3600);
        const std::size_t before = outboxNames().size();
        const DictionaryRef stored = manager().getFullReportFromDisk();
        ASSERT_TRUE(stored);
        manager().outputJsonFileWithDeltaDictionary((manager().*scan)(stored));
        ASSERT_EQ(outboxNames().size(), before + 2) << logText();
    }

    // The documents of the outbox's archives, in the order they were handed over.
    std::vector<std::string> documentsHandedOver() {
        std::vector<std::string> documents;
        for (const std::string& name : outboxNames()) {
            if (name.ends_with(".zip")) documents.push_back(testing::zipFirstMemberText(outbox() + "/" + name));
        }
        return documents;
    }

    std::vector<std::string> headersHandedOver() {
        std::vector<std::string> headers;
        for (const std::string& name : outboxNames()) {
            if (name.ends_with(".hdr")) headers.push_back(readFile(outbox() + "/" + name));
        }
        return headers;
    }

    std::string checkFolder;
};

std::vector<std::string> membersOf(const std::string& document) {
    std::vector<std::string> members;
    if (const std::optional<Value> parsed = parseJson(document); parsed && parsed->isDictionary()) {
        for (const auto& [key, value] : *parsed->dictionary()) {
            if (!value.dictionary() || !value.dictionary()->empty()) members.push_back(key);
        }
    }
    return members;
}

// The texts as files prefix0suffix, prefix1suffix ...
std::vector<testing::NamedText> named(const std::vector<std::string>& texts, const std::string& prefix,
                                      const std::string& suffix) {
    std::vector<testing::NamedText> files;
    for (const std::string& text : texts) files.push_back({prefix + std::to_string(files.size()) + suffix, text});
    return files;
}

TEST_F(ReportSchemaTest, EveryDocumentAndHeaderHandedOverMatchesTheSchemas) {
    discover("linux/laptop");
    manager().reportHardwareForced();  // a new installation's first scan only stores its inventory
    ASSERT_NO_FATAL_FAILURE(scanHandingOver(true));

    // The same machine with changed details, then another machine on the other platform.
    for (const auto& [name, section] : factory->sections) changeDetailsOfEveryRecord(*section);
    const auto address = std::dynamic_pointer_cast<QVIPInfo>(factory->section("events").get("Network").record());
    ASSERT_TRUE(address);
    address->setLocalIp("192.168.178.35");
    ASSERT_NO_FATAL_FAILURE(scanHandingOver(false));
    discover("macos/imac-fusion");
    ASSERT_NO_FATAL_FAILURE(scanHandingOver(false));

    factory->local = "192.168.1.77";
    factory->publicAddress = "203.0.113.77";
    ASSERT_NO_FATAL_FAILURE(changeScanHandingOver(&QVSReport::performIPChangeDiscoveryWithFullReport));
    factory->section("operatingSystems").set("username", Value("marie"));
    ASSERT_NO_FATAL_FAILURE(changeScanHandingOver(&QVSReport::performSysChangeDiscoveryWithFullReport));
    const ArrayRef volumes = factory->section("diskutil").get("disks").array();
    volumes->erase(volumes->begin());
    const auto stick = QVIOKitDisk::ioKitDisk();
    stick->setName("Ultra Flair");
    stick->setSerialNo("4C530001230518112233");
    stick->setRemovable(true);
    factory->section("iokit").get("disks").array()->push_back(Value(stick));
    ASSERT_NO_FATAL_FAILURE(changeScanHandingOver(&QVSReport::performDiskChangeDiscoveryWithFullReport));

    const std::vector<std::string> documents = documentsHandedOver();
    ASSERT_EQ(documents.size(), 6u);
    // What the documents hold, so that each form of the schema is met.
    EXPECT_EQ(membersOf(documents[0]), std::vector<std::string>{"HWInventory"});
    EXPECT_EQ(membersOf(documents[1]), std::vector<std::string>{"changed"});
    EXPECT_EQ(membersOf(documents[2]), (std::vector<std::string>{"added", "changed", "removed"}));
    EXPECT_EQ(membersOf(documents[3]), std::vector<std::string>{"changed"});
    EXPECT_EQ(membersOf(documents[4]), std::vector<std::string>{"changed"});
    EXPECT_EQ(membersOf(documents[5]), (std::vector<std::string>{"added", "removed"}));
    EXPECT_TRUE(testing::matchReportSchema(named(documents, "document-", ".json"), checkFolder));
    const std::vector<std::string> headers = headersHandedOver();
    ASSERT_EQ(headers.size(), 6u);
    EXPECT_TRUE(testing::matchHeaderSchema(named(headers, "header-", ".hdr"), checkFolder));
}

TEST_F(ReportSchemaTest, ADocumentOrHeaderWithAnUnknownKeyIsRefused) {
    discover("linux/laptop");
    manager().reportHardwareForced();
    ASSERT_NO_FATAL_FAILURE(scanHandingOver(true));
    factory->local = "192.168.1.77";
    factory->publicAddress = "203.0.113.77";
    ASSERT_NO_FATAL_FAILURE(changeScanHandingOver(&QVSReport::performIPChangeDiscoveryWithFullReport));
    const std::vector<std::string> documents = documentsHandedOver();
    ASSERT_EQ(documents.size(), 2u);
    ASSERT_TRUE(testing::matchesReportSchema(documents[1], checkFolder, "delta.json"));

    Value delta = parseJson(documents[1]).value_or(Value());
    const DictionaryRef network =
        delta.dictionary()->get("changed").dictionary()->get("events").dictionary()->get("Network").dictionary();
    ASSERT_TRUE(network);
    network->set("gateway", Value("192.168.1.1"));
    const ::testing::AssertionResult refused =
        testing::matchesReportSchema(writeJson(delta, JsonStyle::Indented), checkFolder, "delta-with-gateway.json");
    EXPECT_FALSE(refused);
    EXPECT_NE(std::string(refused.message()).find("$.changed.events.Network"), std::string::npos) << refused.message();

    const std::string header = headersHandedOver().front();
    ASSERT_TRUE(testing::matchesHeaderSchema(header, checkFolder, "full.hdr"));
    std::string partial = header;
    partial.replace(partial.find("\"full\""), 6, "\"partial\"");
    EXPECT_FALSE(testing::matchesHeaderSchema(partial, checkFolder, "partial.hdr"));
    EXPECT_FALSE(testing::matchesHeaderSchema(header + "\n", checkFolder, "two-lines.hdr"));
}

}  // namespace
}  // namespace tov
