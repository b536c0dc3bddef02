#include "report/QVHardwareReportJsonWriter.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "model/Json.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIPInfo.h"
#include "model/QVSystemInfo.h"
#include "model/RecordSamples.h"

namespace tov {
namespace {

using Writer = QVHardwareReportJsonWriter;

RecordRef keyboard(std::string_view name, std::int32_t scanResult = 0) {
    auto record = QVIOKitKeyboard::ioKitKeyboard();
    record->setName(name);
    record->setScanResult(scanResult);
    return record;
}

RecordRef display(std::string_view description) {
    auto record = QVIOKitDisplay::iokitDisplay();
    record->setDescription(description);
    record->setManufacturer("Apple");
    record->setWidth(2560);
    record->setHeight(1600);
    return record;
}

RecordRef ipInfo(std::string_view local, std::string_view publicAddress, std::int32_t scanResult = 0) {
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp(local);
    record->setPublicIp(publicAddress);
    record->setScanResult(scanResult);
    return record;
}

RecordRef volume(std::string_view name, std::string_view identifier, std::int32_t scanResult = 0) {
    auto record = QVDiskUtilDisk::diskUtilDisk();
    record->setName(name);
    record->setIdentifier(identifier);
    record->setSize(500107862016u);
    record->setScanResult(scanResult);
    return record;
}

DictionaryRef dictionaryOf(std::initializer_list<std::pair<std::string_view, Value>> entries) {
    auto dictionary = makeDictionary();
    for (const auto& [key, value] : entries) dictionary->set(key, value);
    return dictionary;
}

Value arrayOf(std::initializer_list<Value> values) { return Value(makeArray(Array(values))); }

// The written text read back as a tree, to compare with what a document should hold.
Value written(const std::optional<std::string>& text) {
    EXPECT_TRUE(text.has_value());
    if (!text) return Value();
    const std::optional<Value> parsed = parseJson(*text);
    EXPECT_TRUE(parsed.has_value()) << *text;
    return parsed ? *parsed : Value();
}

Value tree(std::string_view json) {
    const std::optional<Value> parsed = parseJson(json);
    EXPECT_TRUE(parsed.has_value()) << json;
    return parsed ? *parsed : Value();
}

// A chain of `depth` nested containers, alternately objects and arrays, ending in "leaf".
Value nestedContainers(int depth) {
    Value inner("leaf");
    for (int level = depth; level > 0; --level) {
        inner = level % 2 == 0 ? arrayOf({inner}) : Value(dictionaryOf({{"next", inner}}));
    }
    return inner;
}

TEST(QVHardwareReportJsonWriter, NullArgumentGivesNothing) {
    EXPECT_FALSE(Writer::jsonContentOfHardware(nullptr).has_value());
    EXPECT_FALSE(Writer::jsonContentOfDeltaHardware(nullptr).has_value());
    EXPECT_EQ(Writer::jsonDictionaryForSystemInfoDictionary(nullptr), nullptr);
}

TEST(QVHardwareReportJsonWriter, AssembleStructureIsCallableAndChangesNothing) {
    static_assert(noexcept(Writer::assembleStructure()), "kept for its name, it can do nothing that fails");
    const auto inventory = dictionaryOf({{"keyboards", arrayOf({keyboard("Internal")})}});
    Writer::assembleStructure();
    EXPECT_EQ(written(Writer::jsonContentOfHardware(inventory)), tree(R"({"keyboards":[{"name":"Internal"}]})"));
    const RecordRef record = inventory->get("keyboards").array()->at(0).record();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->innerDictionary()->size(), 1u);
    EXPECT_EQ(record->scanResult(), 0);  // not marked
}

TEST(QVHardwareReportJsonWriter, SectionOfEmptyArraysIsARecordTableWrittenAsEmptyArrays) {
    const auto section = dictionaryOf({{"displays", Value::newArray()}, {"keyboards", Value::newArray()}});
    EXPECT_TRUE(Writer::isStrictlySystemInfoDictionary(Value(section)));

    const auto inventory = dictionaryOf({{"iokit", Value(section)}});
    EXPECT_EQ(written(Writer::jsonContentOfHardware(inventory)), tree(R"({"iokit":{"displays":[],"keyboards":[]}})"));
    EXPECT_EQ(written(Writer::jsonContentOfHardware(section)), tree(R"({"displays":[],"keyboards":[]})"));
}

TEST(QVHardwareReportJsonWriter, EmptySectionIsNoRecordTableAndIsWrittenAsAnEmptyObject) {
    const auto section = makeDictionary();
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(Value(section)));

    const auto inventory = dictionaryOf({{"appkit", Value(section)}});
    EXPECT_EQ(written(Writer::jsonContentOfHardware(inventory)), tree(R"({"appkit":{}})"));
    EXPECT_EQ(written(Writer::jsonContentOfHardware(section)), tree("{}"));
}

TEST(QVHardwareReportJsonWriter, OperatingSystemsOfPlainStringsIsNoRecordTableAndIsWrittenAsItStands) {
    const auto section = dictionaryOf({{"osName", "macOS"}, {"username", "alice"}, {"serialNumber", "C02XK1ZZJG5H"}});
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(Value(section)));

    const auto inventory = dictionaryOf({{"operatingSystems", Value(section)}});
    EXPECT_EQ(written(Writer::jsonContentOfHardware(inventory)),
              tree(R"({"operatingSystems":{"osName":"macOS","username":"alice","serialNumber":"C02XK1ZZJG5H"}})"));
}

TEST(QVHardwareReportJsonWriter, ArraysMixingRecordsAndStringsAreNoRecordTableButTheirRecordsAreStillInnerDictionaries) {
    const auto section = dictionaryOf({{"keyboards", arrayOf({keyboard("Internal", 2), "loose text"})}});
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(Value(section)));

    EXPECT_EQ(written(Writer::jsonContentOfHardware(section)), tree(R"({"keyboards":[{"name":"Internal"},"loose text"]})"));
    const auto inventory = dictionaryOf({{"iokit", Value(section)}});
    EXPECT_EQ(written(Writer::jsonContentOfHardware(inventory)),
              tree(R"({"iokit":{"keyboards":[{"name":"Internal"},"loose text"]}})"));
}

TEST(QVHardwareReportJsonWriter, RecordTableTestRefusesWhatIsNotADictionaryOfArraysOfRecords) {
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(Value()));
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(Value("text")));
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(arrayOf({keyboard("Internal")})));
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(Value(keyboard("Internal"))));
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(
        Value(dictionaryOf({{"keyboards", arrayOf({keyboard("Internal")})}, {"Network", Value(ipInfo("10.0.0.2", ""))}}))));
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(
        Value(dictionaryOf({{"serialNumbers", arrayOf({Value(dictionaryOf({{"serialNumber", "C02XK1ZZJG5H"}}))})}}))));
    EXPECT_FALSE(Writer::isStrictlySystemInfoDictionary(Value(dictionaryOf({{"keyboards", arrayOf({RecordRef()})}}))));
}

TEST(QVHardwareReportJsonWriter, RecordTableTestAcceptsArraysOfRecordsOfAnyKindAndEmptyArrays) {
    const auto table = dictionaryOf({{"mixed", arrayOf({keyboard("Internal"), display("Apple M1"), QVSystemInfo::systemInfo()})},
                                     {"none", Value::newArray()}});
    EXPECT_TRUE(Writer::isStrictlySystemInfoDictionary(Value(table)));
}

TEST(QVHardwareReportJsonWriter, ConvertedRecordTableHoldsTheRecordsOwnInnerDictionariesInOrder) {
    const RecordRef first = keyboard("Internal", 1);
    const RecordRef second = keyboard("USB Keyboard", 2);
    const RecordRef adapter = display("Apple M1");
    const auto table = dictionaryOf({{"keyboards", arrayOf({first, second})}, {"displays", arrayOf({adapter})},
                                     {"batteries", Value::newArray()}});

    const DictionaryRef converted = Writer::jsonDictionaryForSystemInfoDictionary(table);
    ASSERT_NE(converted, nullptr);
    ASSERT_NE(converted, table);
    ASSERT_EQ(converted->size(), 3u);
    EXPECT_EQ(converted->entries()[0].first, "keyboards");
    EXPECT_EQ(converted->entries()[1].first, "displays");
    EXPECT_EQ(converted->entries()[2].first, "batteries");

    const ArrayRef keyboards = converted->get("keyboards").array();
    ASSERT_NE(keyboards, nullptr);
    ASSERT_EQ(keyboards->size(), 2u);
    EXPECT_EQ((*keyboards)[0].dictionary(), first->innerDictionary());
    EXPECT_EQ((*keyboards)[1].dictionary(), second->innerDictionary());
    EXPECT_NE(keyboards, table->get("keyboards").array());
    ASSERT_NE(converted->get("displays").array(), nullptr);
    EXPECT_EQ((*converted->get("displays").array())[0].dictionary(), adapter->innerDictionary());
    ASSERT_NE(converted->get("batteries").array(), nullptr);
    EXPECT_TRUE(converted->get("batteries").array()->empty());
}

TEST(QVHardwareReportJsonWriter, WritesIndentedTextThatTheRecordTablesDoNotChange) {
    const auto section = dictionaryOf({{"keyboards", arrayOf({keyboard("Internal"), keyboard("USB Keyboard")})},
                                       {"displays", arrayOf({display("Apple M1")})}});
    const std::optional<std::string> text = Writer::jsonContentOfHardware(section);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(*text, writeJson(Value(section), JsonStyle::Indented));
    EXPECT_NE(text->find("\n  \"keyboards\": [\n"), std::string::npos) << *text;
    EXPECT_NE(text->find("\"name\": \"USB Keyboard\"\n"), std::string::npos) << *text;
    EXPECT_EQ(Writer::jsonContentOfDeltaHardware(section), text);
}

TEST(QVHardwareReportJsonWriter, WritesTheFullReportSkeleton) {
    auto battery = QVIOKitBattery::ioKitBattery();
    battery->setName("bq20z451");
    battery->setCapacity(87.9f);
    const auto iokit = dictionaryOf({{"serialNumbers", arrayOf({Value(dictionaryOf({{"serialNumber", "C02XK1ZZJG5H"}}))})},
                                     {"displays", arrayOf({display("Apple M1")})},
                                     {"keyboards", arrayOf({keyboard("Internal")})},
                                     {"batteries", arrayOf({battery})},
                                     {"camera", Value::newArray()}});
    const auto inventory = dictionaryOf({{"collection", "2024-01-31T09:15:00Z"},
                                         {"iokit", Value(iokit)},
                                         {"diskutil", Value(dictionaryOf({{"disks", arrayOf({volume("Macintosh HD", "disk3s1")})}}))},
                                         {"operatingSystems", Value(dictionaryOf({{"osName", "macOS"}}))},
                                         {"events", Value(dictionaryOf({{"Network", ipInfo("192.168.1.20", "203.0.113.7")}}))}});
    const auto document = dictionaryOf({{"HWInventory", Value(inventory)}});

    EXPECT_EQ(written(Writer::jsonContentOfHardware(document)), tree(R"({"HWInventory":{
        "collection":"2024-01-31T09:15:00Z",
        "iokit":{"serialNumbers":[{"serialNumber":"C02XK1ZZJG5H"}],
                 "displays":[{"adapterDescription":"Apple M1","manufacturer":"Apple","width":2560,"height":1600}],
                 "keyboards":[{"name":"Internal"}],
                 "batteries":[{"name":"bq20z451","capacity":87}],
                 "camera":[]},
        "diskutil":{"disks":[{"boot":false,"opticalMedia":false,"fileSystem":"","name":"Macintosh HD",
                              "deviceId":"disk3s1","sizeBytes":500107862016}]},
        "operatingSystems":{"osName":"macOS"},
        "events":{"Network":{"localIp":"192.168.1.20","publicIp":"203.0.113.7"}}}})"));
}

TEST(QVHardwareReportJsonWriter, WritesTheDeltaReportSkeleton) {
    auto operatingSystems = QVSystemInfo::systemInfo();
    operatingSystems->innerDictionary()->set("osName", "macOS");
    operatingSystems->innerDictionary()->set("osVersion", "14.3.1");
    operatingSystems->setScanResult(3);
    const auto delta = dictionaryOf(
        {{"added", Value(dictionaryOf({{"iokit", Value(dictionaryOf({{"keyboards", arrayOf({keyboard("USB Keyboard", 1)})}}))}}))},
         {"changed", Value(dictionaryOf({{"events", Value(dictionaryOf({{"Network", ipInfo("10.0.0.7", "203.0.113.9", 3)}}))},
                                         {"operatingSystems", operatingSystems}}))},
         {"removed", Value(dictionaryOf({{"diskutil", Value(dictionaryOf({{"disks", arrayOf({volume("Backup", "disk4s1", 2)})}}))}}))}});

    EXPECT_EQ(written(Writer::jsonContentOfDeltaHardware(delta)), tree(R"({
        "added":{"iokit":{"keyboards":[{"name":"USB Keyboard"}]}},
        "changed":{"events":{"Network":{"localIp":"10.0.0.7","publicIp":"203.0.113.9"}},
                   "operatingSystems":{"osName":"macOS","osVersion":"14.3.1"}},
        "removed":{"diskutil":{"disks":[{"boot":false,"opticalMedia":false,"fileSystem":"","name":"Backup",
                                          "deviceId":"disk4s1","sizeBytes":500107862016}]}}})"));
}

TEST(QVHardwareReportJsonWriter, WritesNeitherScanResultMarkNorClassNameInEitherDocument) {
    const std::vector<RecordRef> records = testing::filledRecordsOfEveryKind();
    auto everyKind = makeArray();
    for (const RecordRef& record : records) everyKind->push_back(Value(record));
    const auto section = dictionaryOf({{"records", Value(everyKind)}});
    const auto inventory = dictionaryOf({{"iokit", Value(section)}, {"events", Value(dictionaryOf({{"Network", records[2]}}))}});
    const auto delta = dictionaryOf({{"added", Value(inventory)}, {"changed", Value(section)}, {"removed", Value(section)}});

    for (const std::optional<std::string>& text :
         {Writer::jsonContentOfHardware(inventory), Writer::jsonContentOfHardware(section), Writer::jsonContentOfDeltaHardware(delta)}) {
        ASSERT_TRUE(text.has_value());
        EXPECT_NE(text->find("\"userTimezone\": \"(UTC+01:00) Central European Standard Time\""), std::string::npos);
        for (const char* marker : {"scan-result", "scanResult", "value-dictionary", "$class", "QVSystemInfo", "QVHardware"}) {
            EXPECT_EQ(text->find(marker), std::string::npos) << marker << " in " << *text;
        }
        for (const RecordRef& record : records) {
            EXPECT_EQ(text->find(record->className()), std::string::npos) << record->className();
        }
    }
}

TEST(QVHardwareReportJsonWriter, WritesContainersNestedToTheMaximumDepth) {
    // The document object is the first level.
    const auto document = dictionaryOf({{"deep", nestedContainers(kMaximumJsonDepth - 1)}});
    const std::optional<std::string> text = Writer::jsonContentOfHardware(document);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(written(text), Value(document));
}

TEST(QVHardwareReportJsonWriter, GivesNothingForContainersNestedDeeperThanTheMaximum) {
    const auto document = dictionaryOf({{"deep", nestedContainers(kMaximumJsonDepth)}});
    EXPECT_FALSE(Writer::jsonContentOfHardware(document).has_value());
    EXPECT_FALSE(Writer::jsonContentOfDeltaHardware(document).has_value());
}

TEST(QVHardwareReportJsonWriter, CountsARecordAsOneLevelOfNesting) {
    Value atTheLimit = arrayOf({keyboard("Internal")});
    Value pastTheLimit = arrayOf({arrayOf({keyboard("Internal")})});
    for (int level = 0; level < kMaximumJsonDepth - 3; ++level) {
        atTheLimit = arrayOf({atTheLimit});
        pastTheLimit = arrayOf({pastTheLimit});
    }
    // The document object, 30 arrays, then the record's object: exactly the maximum.
    EXPECT_TRUE(Writer::jsonContentOfHardware(dictionaryOf({{"deep", atTheLimit}})).has_value());
    EXPECT_FALSE(Writer::jsonContentOfHardware(dictionaryOf({{"deep", pastTheLimit}})).has_value());
}

TEST(QVHardwareReportJsonWriter, GivesNothingForADictionaryThatHoldsItself) {
    const auto looped = makeDictionary();
    looped->set("self", Value(looped));
    EXPECT_FALSE(Writer::jsonContentOfHardware(dictionaryOf({{"iokit", Value(looped)}})).has_value());
    looped->clear();  // breaks the cycle so that the dictionary is freed
}

}  // namespace
}  // namespace tov
