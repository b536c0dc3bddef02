#include "report/QVCollectionUtil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common/ObjectLock.h"
#include "model/QVAppKitPrinter.h"
#include "model/QVHardware.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIPInfo.h"

namespace tov {
namespace {

std::shared_ptr<QVAppKitPrinter> printer(std::string_view name, std::string_view driver = "gutenprint",
                                         std::int32_t mark = QVScanResultNone) {
    auto record = QVAppKitPrinter::appKitPrinter();
    record->setName(name);
    record->setDriver(driver);
    record->setScanResult(mark);
    return record;
}

std::shared_ptr<QVIPInfo> ipInfo(std::string_view localIp) {
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp(localIp);
    record->setPublicIp("203.0.113.7");
    return record;
}

std::shared_ptr<QVIOKitCamera> camera(std::string_view uuid) {
    auto record = QVIOKitCamera::ioKitCamera();
    record->setName("USB Camera");
    record->setUuid(uuid);
    return record;
}

ArrayRef arrayOf(std::initializer_list<Value> values) { return makeArray(Array(values)); }

DictionaryRef dictionaryOf(std::initializer_list<std::pair<std::string, Value>> entries) {
    DictionaryRef dictionary = makeDictionary();
    for (const auto& [key, value] : entries) dictionary->set(key, value);
    return dictionary;
}

// The records of the array, by identity, in order.
std::vector<const QVSystemInfo*> recordsIn(const Array& array) {
    std::vector<const QVSystemInfo*> records;
    for (const Value& element : array) records.push_back(element.record().get());
    return records;
}

std::vector<std::string> keysOf(const Dictionary& dictionary) {
    std::vector<std::string> keys;
    for (const auto& entry : dictionary) keys.push_back(entry.first);
    return keys;
}

Array arrayUnder(const Dictionary& dictionary, std::string_view key) {
    const ArrayRef array = dictionary.get(key).array();
    return array ? *array : Array();
}

// ---- array difference ----

TEST(QVCollectionUtil, ArrayDifferenceListsRemovedAndChangedThenAdded) {
    const auto a = printer("1");
    const auto b = printer("2", "old driver");
    const auto changedB = printer("2", "new driver");
    const auto c = printer("3");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {a, b}, {changedB, c});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{a.get(), changedB.get(), c.get()}));
    EXPECT_EQ(a->scanResult(), QVScanResultRemoved);
    EXPECT_EQ(b->scanResult(), QVScanResultChanged);
    EXPECT_EQ(changedB->scanResult(), QVScanResultChanged);
    EXPECT_EQ(c->scanResult(), QVScanResultAdded);
}

TEST(QVCollectionUtil, EqualArraysGiveAnEmptyResultAndLeaveEveryMarkZero) {
    const Array oldArray{printer("1", "x", QVScanResultChanged), printer("2", "y", QVScanResultRemoved)};
    const Array newArray{printer("1", "x", QVScanResultAdded), printer("2", "y", QVScanResultChanged)};
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, oldArray, newArray);
    EXPECT_TRUE(result.empty());
    for (const Array* array : {&oldArray, &newArray}) {
        for (const Value& element : *array) EXPECT_EQ(element.record()->scanResult(), QVScanResultNone);
    }
}

TEST(QVCollectionUtil, AnEmptyOldArrayMakesEveryNewRecordAdded) {
    const auto first = printer("1");
    const auto second = printer("2");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {}, {first, second});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{first.get(), second.get()}));
    EXPECT_EQ(first->scanResult(), QVScanResultAdded);
    EXPECT_EQ(second->scanResult(), QVScanResultAdded);
}

TEST(QVCollectionUtil, AnEmptyNewArrayMakesEveryOldRecordRemoved) {
    const auto first = printer("1");
    const auto second = printer("2");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {first, second}, {});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{first.get(), second.get()}));
    EXPECT_EQ(first->scanResult(), QVScanResultRemoved);
    EXPECT_EQ(second->scanResult(), QVScanResultRemoved);
}

TEST(QVCollectionUtil, TheArrayResultIsAppendedToWhatTheCallerPassed) {
    const auto earlier = printer("earlier");
    const auto added = printer("1");
    Array result{earlier};
    QVCollectionUtil::populateDifferencesIn(result, {}, {added});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{earlier.get(), added.get()}));
}

TEST(QVCollectionUtil, OfTwoNewRecordsWithOneIdentifierOnlyTheFirstIsCompared) {
    const auto old = printer("1", "x");
    const auto firstNew = printer("1", "y");
    const auto secondNew = printer("1", "z");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {old}, {firstNew, secondNew});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{firstNew.get()}));
    EXPECT_EQ(firstNew->scanResult(), QVScanResultChanged);
    EXPECT_EQ(secondNew->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, ARepeatedNewIdentifierIsNotAddedWhenTheFirstIsEqual) {
    const auto old = printer("1", "x");
    const auto firstNew = printer("1", "x");
    const auto secondNew = printer("1", "z");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {old}, {firstNew, secondNew});
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(secondNew->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, TwoOldRecordsDifferingFromOneNewRecordReportItTwice) {
    const auto firstOld = printer("1", "x");
    const auto secondOld = printer("1", "y");
    const auto updated = printer("1", "z");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {firstOld, secondOld}, {updated});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{updated.get(), updated.get()}));
    EXPECT_EQ(firstOld->scanResult(), QVScanResultChanged);
    EXPECT_EQ(secondOld->scanResult(), QVScanResultChanged);
    EXPECT_EQ(updated->scanResult(), QVScanResultChanged);
}

TEST(QVCollectionUtil, IdentifiersDifferingOnlyInCaseDoNotMatch) {
    const auto old = printer("Laser");
    const auto renamed = printer("laser");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {old}, {renamed});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{old.get(), renamed.get()}));
    EXPECT_EQ(old->scanResult(), QVScanResultRemoved);
    EXPECT_EQ(renamed->scanResult(), QVScanResultAdded);
}

TEST(QVCollectionUtil, RecordsSharingTheirKindsIdentifierMatchTheFirstOfTheOtherArray) {
    const auto firstOld = ipInfo("10.0.0.1");
    const auto secondOld = ipInfo("10.0.0.2");
    const auto current = ipInfo("10.0.0.2");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {firstOld, secondOld}, {current});
    // The first old record differs from the one new "IP" record, the second equals it.
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{current.get()}));
    EXPECT_EQ(firstOld->scanResult(), QVScanResultChanged);
    EXPECT_EQ(secondOld->scanResult(), QVScanResultNone);
    EXPECT_EQ(current->scanResult(), QVScanResultChanged);
}

TEST(QVCollectionUtil, CamerasAllNamedByTheEmptyIdentifierAreNeverAdded) {
    const auto oldA = camera("a");
    const auto oldB = camera("b");
    const auto newB = camera("b");
    const auto newC = camera("c");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {oldA, oldB}, {newB, newC});
    // Both old cameras are compared with the first new one; the second new camera finds
    // an old record with its (empty) identifier and so is not reported.
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{newB.get()}));
    EXPECT_EQ(oldA->scanResult(), QVScanResultChanged);
    EXPECT_EQ(oldB->scanResult(), QVScanResultNone);
    EXPECT_EQ(newC->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, RecordsWithoutIdentifierMatchNothingNotEvenEachOther) {
    // A keyboard never named has no identifier; it is reported removed and added, never
    // changed, even against another unnamed keyboard.
    const auto oldKeyboard = QVIOKitKeyboard::ioKitKeyboard();
    const auto newKeyboard = QVIOKitKeyboard::ioKitKeyboard();
    ASSERT_FALSE(oldKeyboard->identifier().has_value());
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {oldKeyboard}, {newKeyboard});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{oldKeyboard.get(), newKeyboard.get()}));
    EXPECT_EQ(oldKeyboard->scanResult(), QVScanResultRemoved);
    EXPECT_EQ(newKeyboard->scanResult(), QVScanResultAdded);
}

TEST(QVCollectionUtil, AnEmptyIdentifierIsAValueThatMatchesItself) {
    const auto old = QVIOKitKeyboard::ioKitKeyboard();
    old->setName("");
    const auto current = QVIOKitKeyboard::ioKitKeyboard();
    current->setName("");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {old}, {current});
    EXPECT_TRUE(result.empty());
}

TEST(QVCollectionUtil, ElementsOfArraysThatAreNoRecordsAreSkipped) {
    const auto old = printer("1", "x");
    const auto changed = printer("1", "y");
    Array result;
    QVCollectionUtil::populateDifferencesIn(result, {Value("text"), old, Value::newDictionary()},
                                            {Value(7), changed, Value("text")});
    EXPECT_EQ(recordsIn(result), (std::vector<const QVSystemInfo*>{changed.get()}));
}

// ---- dictionary difference ----

TEST(QVCollectionUtil, RecordsDirectlyUnderKeysAreAddedRemovedAndChanged) {
    const auto oldAddress = ipInfo("10.0.0.1");
    const auto newAddress = ipInfo("10.0.0.9");
    const auto gone = printer("gone");
    const auto keptOld = printer("kept", "x", QVScanResultChanged);
    const auto keptNew = printer("kept", "x", QVScanResultAdded);
    const auto arrived = printer("arrived");
    const auto oldTree = dictionaryOf({{"Network", oldAddress}, {"gone", gone}, {"kept", keptOld}});
    const auto newTree = dictionaryOf({{"arrived", arrived}, {"kept", keptNew}, {"Network", newAddress}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_EQ(keysOf(result), (std::vector<std::string>{"Network", "gone", "arrived"}));
    EXPECT_EQ(result.get("Network").record(), newAddress);
    EXPECT_EQ(result.get("gone").record(), gone);
    EXPECT_EQ(result.get("arrived").record(), arrived);
    EXPECT_EQ(oldAddress->scanResult(), QVScanResultChanged);
    EXPECT_EQ(newAddress->scanResult(), QVScanResultChanged);
    EXPECT_EQ(gone->scanResult(), QVScanResultRemoved);
    EXPECT_EQ(arrived->scanResult(), QVScanResultAdded);
    EXPECT_EQ(keptOld->scanResult(), QVScanResultNone);
    EXPECT_EQ(keptNew->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, ANewKeyHoldingAnArrayAddsNothing) {
    const auto cam = camera("0x1a11000005ac8514");
    const auto oldTree = dictionaryOf({{"printers", arrayOf({})}});
    const auto newTree = dictionaryOf({{"printers", arrayOf({})}, {"camera", arrayOf({cam})}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(cam->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, ANewKeyHoldingASectionOrAPlainValueAddsNothing) {
    const auto oldTree = dictionaryOf({});
    const auto newTree = dictionaryOf({{"hardware", dictionaryOf({{"Network", ipInfo("10.0.0.1")}})},
                                       {"collection", "2024-05-01T10:00:00Z"}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_TRUE(result.empty());
}

TEST(QVCollectionUtil, AChangedCollectionTimeAddsNothing) {
    const auto oldTree = dictionaryOf({{"collection", "2024-05-01T10:00:00Z"}, {"printers", arrayOf({printer("1")})}});
    const auto newTree = dictionaryOf({{"collection", "2024-05-02T10:00:00Z"}, {"printers", arrayOf({printer("1")})}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_TRUE(result.empty());
}

TEST(QVCollectionUtil, ChangedOperatingSystemStringsAddNothing) {
    const auto oldTree = dictionaryOf({{"operatingSystems", dictionaryOf({{"name", "Linux"}, {"version", "6.1"}})}});
    const auto newTree = dictionaryOf({{"operatingSystems", dictionaryOf({{"name", "Linux"}, {"version", "6.2"}})}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_TRUE(result.empty());
}

TEST(QVCollectionUtil, AContainerThatVanishesFromTheNewTreeIsNothingToReport) {
    const auto inArray = printer("1");
    const auto inSection = printer("2");
    const auto oldTree = dictionaryOf({{"printers", arrayOf({inArray})},
                                       {"hardware", dictionaryOf({{"printer", inSection}})},
                                       {"collection", "2024-05-01T10:00:00Z"}});
    const auto newTree = dictionaryOf({});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(inArray->scanResult(), QVScanResultNone);
    EXPECT_EQ(inSection->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, ValuesOfDifferentTypesUnderOneKeyReportNothing) {
    const auto oldRecord = printer("1");
    const auto oldAddress = ipInfo("10.0.0.1");
    const auto newCamera = camera("c");
    const auto oldTree = dictionaryOf({{"a", oldRecord}, {"b", arrayOf({printer("2")})}, {"c", oldAddress}});
    const auto newTree =
        dictionaryOf({{"a", arrayOf({printer("1")})}, {"b", dictionaryOf({{"x", printer("2")}})}, {"c", newCamera}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(oldRecord->scanResult(), QVScanResultNone);
    EXPECT_EQ(newCamera->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, NestedSectionsKeepTheirNestingAndOnlyTheirDifferences) {
    const auto oldDisk = printer("disk0", "x");
    const auto newDisk = printer("disk0", "y");
    const auto oldTree = dictionaryOf({
        {"hardware", dictionaryOf({{"storage", dictionaryOf({{"disks", arrayOf({oldDisk})}})},
                                   {"printers", arrayOf({printer("p")})}})},
        {"unchanged", dictionaryOf({{"keyboards", arrayOf({printer("k")})}})},
    });
    const auto newTree = dictionaryOf({
        {"unchanged", dictionaryOf({{"keyboards", arrayOf({printer("k")})}})},
        {"hardware", dictionaryOf({{"printers", arrayOf({printer("p")})},
                                   {"storage", dictionaryOf({{"disks", arrayOf({newDisk})}})}})},
    });
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    ASSERT_EQ(keysOf(result), (std::vector<std::string>{"hardware"}));
    const DictionaryRef hardware = result.get("hardware").dictionary();
    ASSERT_TRUE(hardware);
    ASSERT_EQ(keysOf(*hardware), (std::vector<std::string>{"storage"}));
    const DictionaryRef storage = hardware->get("storage").dictionary();
    ASSERT_TRUE(storage);
    EXPECT_EQ(recordsIn(arrayUnder(*storage, "disks")), (std::vector<const QVSystemInfo*>{newDisk.get()}));
    EXPECT_EQ(oldDisk->scanResult(), QVScanResultChanged);
}

TEST(QVCollectionUtil, TheResultFollowsTheOldTreesKeyOrderThenTheAddedRecords) {
    const auto oldTree = dictionaryOf({{"a", arrayOf({printer("1")})}, {"b", arrayOf({printer("2")})}});
    const auto added = printer("3");
    const auto newTree = dictionaryOf({{"c", added}, {"b", arrayOf({})}, {"a", arrayOf({})}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_EQ(keysOf(result), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(arrayUnder(result, "a").size(), 1u);
    EXPECT_EQ(arrayUnder(result, "b").size(), 1u);
}

TEST(QVCollectionUtil, OnlyRecordsDirectlyInTheComparedDictionariesAreResetFirst) {
    const auto deep = printer("deep", "x", QVScanResultRemoved);
    const auto direct = printer("direct", "x", QVScanResultChanged);
    const auto sameDirect = printer("direct", "x", QVScanResultAdded);
    // The deep record sits in a section that vanished, so no comparison reaches it.
    const auto oldTree = dictionaryOf({{"direct", direct}, {"section", dictionaryOf({{"deep", deep}})}});
    const auto newTree = dictionaryOf({{"direct", sameDirect}});
    Dictionary result;
    QVCollectionUtil::populateDifferencesIn(result, *oldTree, *newTree);
    EXPECT_TRUE(result.empty());
    EXPECT_EQ(direct->scanResult(), QVScanResultNone);
    EXPECT_EQ(sameDirect->scanResult(), QVScanResultNone);
    EXPECT_EQ(deep->scanResult(), QVScanResultRemoved);
}

// ---- culling ----

// A difference tree with one record of each mark in an array, in a nested section and
// directly under a key.
DictionaryRef differenceOfSampleTrees() {
    const auto oldTree = dictionaryOf({
        {"printers", arrayOf({printer("removed"), printer("changed", "x"), printer("same")})},
        {"hardware", dictionaryOf({{"displays", arrayOf({printer("old display")})}})},
        {"Network", ipInfo("10.0.0.1")},
        {"collection", "2024-05-01T10:00:00Z"},
    });
    const auto newTree = dictionaryOf({
        {"printers", arrayOf({printer("same"), printer("changed", "y"), printer("added")})},
        {"hardware", dictionaryOf({{"displays", arrayOf({printer("old display")})}})},
        {"Network", ipInfo("10.0.0.2")},
        {"collection", "2024-05-02T10:00:00Z"},
        {"battery", printer("battery")},
    });
    DictionaryRef difference = makeDictionary();
    QVCollectionUtil::populateDifferencesIn(*difference, *oldTree, *newTree);
    return difference;
}

std::vector<std::string> namesIn(const Array& array) {
    std::vector<std::string> names;
    for (const Value& element : array) {
        const Value name = element.record()->innerDictionary()->get("name");
        names.push_back(name.string() ? *name.string() : std::string());
    }
    return names;
}

TEST(QVCollectionUtil, CullingForAddedLeavesOnlyAddedRecordsAndNoEmptyContainer) {
    const DictionaryRef difference = differenceOfSampleTrees();
    const Value copy = Value(difference).deepCopy();
    Dictionary& added = *copy.dictionary();
    QVCollectionUtil::cullSystemInfosFromDictionary(added, QVScanResultAdded);
    EXPECT_EQ(keysOf(added), (std::vector<std::string>{"printers", "battery"}));
    EXPECT_EQ(namesIn(arrayUnder(added, "printers")), (std::vector<std::string>{"added"}));
    EXPECT_EQ(added.get("battery").record()->scanResult(), QVScanResultAdded);
    // The difference tree itself is left whole.
    EXPECT_EQ(keysOf(*difference), (std::vector<std::string>{"printers", "Network", "battery"}));
}

TEST(QVCollectionUtil, CullingForChangedLeavesTheNewSideOfChangedRecords) {
    const Value copy = Value(differenceOfSampleTrees()).deepCopy();
    Dictionary& changed = *copy.dictionary();
    QVCollectionUtil::cullSystemInfosFromDictionary(changed, QVScanResultChanged);
    EXPECT_EQ(keysOf(changed), (std::vector<std::string>{"printers", "Network"}));
    const Array printers = arrayUnder(changed, "printers");
    ASSERT_EQ(namesIn(printers), (std::vector<std::string>{"changed"}));
    EXPECT_EQ(printers[0].record()->innerDictionary()->get("driver"), Value("y"));
    EXPECT_EQ(changed.get("Network").record()->innerDictionary()->get("localIp"), Value("10.0.0.2"));
}

TEST(QVCollectionUtil, CullingForRemovedLeavesTheOldRecords) {
    const Value copy = Value(differenceOfSampleTrees()).deepCopy();
    Dictionary& removed = *copy.dictionary();
    QVCollectionUtil::cullSystemInfosFromDictionary(removed, QVScanResultRemoved);
    EXPECT_EQ(keysOf(removed), (std::vector<std::string>{"printers"}));
    EXPECT_EQ(namesIn(arrayUnder(removed, "printers")), (std::vector<std::string>{"removed"}));
}

TEST(QVCollectionUtil, CullingReachesRecordsAtEveryDepthAndPrunesEmptySections) {
    const auto keep = printer("keep", "x", QVScanResultAdded);
    Dictionary tree;
    tree.set("a", dictionaryOf({{"b", dictionaryOf({{"keep", keep}, {"drop", printer("drop", "x", 2)}})},
                                {"c", dictionaryOf({{"drop", printer("drop", "x", 3)}})},
                                {"d", arrayOf({printer("drop", "x", 0)})}}));
    QVCollectionUtil::cullSystemInfosFromDictionary(tree, QVScanResultAdded);
    ASSERT_EQ(keysOf(tree), (std::vector<std::string>{"a"}));
    const DictionaryRef a = tree.get("a").dictionary();
    ASSERT_EQ(keysOf(*a), (std::vector<std::string>{"b"}));
    const DictionaryRef b = a->get("b").dictionary();
    ASSERT_EQ(keysOf(*b), (std::vector<std::string>{"keep"}));
    EXPECT_EQ(b->get("keep").record(), keep);
}

TEST(QVCollectionUtil, CullingAnArrayKeepsElementsThatAreNoRecords) {
    const auto added = printer("added", "x", QVScanResultAdded);
    Array array{printer("changed", "x", QVScanResultChanged), Value("text"), added, Value(3), Value::newArray()};
    QVCollectionUtil::cullSystemInfosFromArray(array, QVScanResultAdded);
    ASSERT_EQ(array.size(), 4u);
    EXPECT_EQ(array[0], Value("text"));
    EXPECT_EQ(array[1].record(), added);
    EXPECT_EQ(array[2], Value(3));
    EXPECT_TRUE(array[3].isArray());
}

// ---- pruning ----

TEST(QVCollectionUtil, PruningRemovesEveryEntryThatLeadsToNoRecord) {
    const auto record = printer("kept");
    Dictionary tree;
    tree.set("collection", "2024-05-01T10:00:00Z");
    tree.set("count", 3);
    tree.set("empty array", Value::newArray());
    tree.set("numbers", arrayOf({1, 2}));
    tree.set("empty section", dictionaryOf({{"nested", Value::newDictionary()}, {"flag", true}}));
    tree.set("section", dictionaryOf({{"deeper", dictionaryOf({{"record", record}, {"text", "x"}})}}));
    tree.set("direct", record);
    EXPECT_TRUE(QVCollectionUtil::pruneDictionaryElementsWithoutSystemInfoInstances(tree));
    EXPECT_EQ(keysOf(tree), (std::vector<std::string>{"section", "direct"}));
    const DictionaryRef deeper = tree.get("section").dictionary()->get("deeper").dictionary();
    EXPECT_EQ(keysOf(*deeper), (std::vector<std::string>{"record"}));
}

TEST(QVCollectionUtil, PruningKeepsArraysOfTextOnly) {
    Dictionary tree;
    tree.set("serialNumbers", arrayOf({"C02XK0AAJGH5", 5}));
    EXPECT_TRUE(QVCollectionUtil::pruneDictionaryElementsWithoutSystemInfoInstances(tree));
    EXPECT_EQ(arrayUnder(tree, "serialNumbers"), (Array{"C02XK0AAJGH5"}));
}

TEST(QVCollectionUtil, PruningADictionaryWithoutRecordsLeavesItEmpty) {
    Dictionary tree;
    tree.set("collection", "2024-05-01T10:00:00Z");
    tree.set("section", dictionaryOf({{"empty", Value::newArray()}}));
    EXPECT_FALSE(QVCollectionUtil::pruneDictionaryElementsWithoutSystemInfoInstances(tree));
    EXPECT_TRUE(tree.empty());
}

TEST(QVCollectionUtil, PruningAnArrayKeepsRecordsAndTexts) {
    const auto record = printer("kept");
    Array array{1, record, Value::newArray(), "text", Value::newDictionary(), true, 2.5};
    EXPECT_TRUE(QVCollectionUtil::pruneArrayElementsWithoutSystemInfoInstances(array));
    ASSERT_EQ(array.size(), 2u);
    EXPECT_EQ(array[0].record(), record);
    EXPECT_EQ(array[1], Value("text"));

    Array numbers{1, 2.0, false};
    EXPECT_FALSE(QVCollectionUtil::pruneArrayElementsWithoutSystemInfoInstances(numbers));
    EXPECT_TRUE(numbers.empty());
}

// ---- reset ----

TEST(QVCollectionUtil, ResettingADictionaryResetsTheRecordsAmongItsValuesOnly) {
    const auto direct = printer("direct", "x", QVScanResultAdded);
    const auto inArray = printer("in array", "x", QVScanResultChanged);
    const auto inSection = printer("in section", "x", QVScanResultRemoved);
    const auto tree = dictionaryOf({{"direct", direct}, {"array", arrayOf({inArray})},
                                    {"section", dictionaryOf({{"record", inSection}})}, {"text", "x"}});
    QVCollectionUtil::resetScanResultOfDictionary(*tree);
    EXPECT_EQ(direct->scanResult(), QVScanResultNone);
    EXPECT_EQ(inArray->scanResult(), QVScanResultChanged);
    EXPECT_EQ(inSection->scanResult(), QVScanResultRemoved);
}

TEST(QVCollectionUtil, ResettingAnArrayResetsTheRecordsAmongItsElementsOnly) {
    const auto first = printer("1", "x", QVScanResultAdded);
    const auto second = printer("2", "x", QVScanResultRemoved);
    const auto nested = printer("3", "x", QVScanResultChanged);
    const Array array{first, "text", second, arrayOf({nested})};
    QVCollectionUtil::resetScanResultOfArray(array);
    EXPECT_EQ(first->scanResult(), QVScanResultNone);
    EXPECT_EQ(second->scanResult(), QVScanResultNone);
    EXPECT_EQ(nested->scanResult(), QVScanResultChanged);
}

TEST(QVCollectionUtil, ResettingARecordResetsItsOwnMarkAndLeavesItsValues) {
    const auto record = printer("1", "x", QVScanResultChanged);
    const Dictionary before = *record->innerDictionary();
    QVCollectionUtil::resetScanResultOfSystemInfo(*record);
    EXPECT_EQ(record->scanResult(), QVScanResultNone);
    EXPECT_EQ(*record->innerDictionary(), before);
}

TEST(QVCollectionUtil, AResetWaitsWhileAnotherThreadHoldsTheContainersLock) {
    const auto record = printer("1", "x", QVScanResultChanged);
    const auto tree = dictionaryOf({{"record", record}});
    std::atomic<bool> resetDone{false};
    std::thread resetter;
    {
        const ObjectLock lock(tree.get());
        resetter = std::thread([&] {
            QVCollectionUtil::resetScanResultOfDictionary(*tree);
            resetDone = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_FALSE(resetDone);
        EXPECT_EQ(record->scanResult(), QVScanResultChanged);
    }
    resetter.join();
    EXPECT_TRUE(resetDone);
    EXPECT_EQ(record->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, ARecordResetWaitsWhileAnotherThreadHoldsItsDictionarysLock) {
    const auto record = printer("1", "x", QVScanResultChanged);
    std::atomic<bool> resetDone{false};
    std::thread resetter;
    {
        const ObjectLock lock(record->innerDictionary().get());
        resetter = std::thread([&] {
            QVCollectionUtil::resetScanResultOfSystemInfo(*record);
            resetDone = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_FALSE(resetDone);
    }
    resetter.join();
    EXPECT_EQ(record->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, TwoThreadsResettingOneDictionaryNeverOverlap) {
    const auto tree = makeDictionary();
    std::vector<RecordRef> records;
    for (int index = 0; index < 32; ++index) {
        records.push_back(printer(std::to_string(index), "x", QVScanResultChanged));
        tree->set(std::to_string(index), records.back());
    }
    // One thread marks every record under the lock and checks that no reset got in between;
    // the other resets the same dictionary, which takes the same lock.
    std::atomic<bool> overlapSeen{false};
    std::thread marker([&] {
        for (int round = 0; round < 500; ++round) {
            const ObjectLock lock(tree.get());
            for (const RecordRef& record : records) record->setScanResult(QVScanResultAdded);
            std::this_thread::yield();
            for (const RecordRef& record : records) {
                if (record->scanResult() != QVScanResultAdded) overlapSeen = true;
            }
        }
    });
    std::thread resetter([&] {
        for (int round = 0; round < 500; ++round) QVCollectionUtil::resetScanResultOfDictionary(*tree);
    });
    marker.join();
    resetter.join();
    EXPECT_FALSE(overlapSeen);
    QVCollectionUtil::resetScanResultOfDictionary(*tree);
    for (const RecordRef& record : records) EXPECT_EQ(record->scanResult(), QVScanResultNone);
}

TEST(QVCollectionUtil, TwoThreadsCanResetTheSameDictionaryTogether) {
    const auto tree = makeDictionary();
    std::vector<RecordRef> records;
    for (int index = 0; index < 32; ++index) {
        records.push_back(printer(std::to_string(index), "x", QVScanResultRemoved));
        tree->set(std::to_string(index), records.back());
    }
    const auto resetMany = [&] {
        for (int round = 0; round < 500; ++round) QVCollectionUtil::resetScanResultOfDictionary(*tree);
    };
    std::thread first(resetMany);
    std::thread second(resetMany);
    first.join();
    second.join();
    for (const RecordRef& record : records) EXPECT_EQ(record->scanResult(), QVScanResultNone);
}

// ---- same type ----

TEST(QVCollectionUtil, ContainersAreOfTheSameTypeAsContainersOfTheirSort) {
    EXPECT_TRUE(QVCollectionUtil::isObject(Value::newArray(), arrayOf({1})));
    EXPECT_TRUE(QVCollectionUtil::isObject(Value::newDictionary(), dictionaryOf({{"a", 1}})));
    EXPECT_FALSE(QVCollectionUtil::isObject(Value::newArray(), Value::newDictionary()));
    EXPECT_FALSE(QVCollectionUtil::isObject(Value::newDictionary(), Value::newArray()));
    EXPECT_FALSE(QVCollectionUtil::isObject(Value::newArray(), printer("1")));
    EXPECT_FALSE(QVCollectionUtil::isObject(printer("1"), Value::newDictionary()));
}

TEST(QVCollectionUtil, RecordsAreOfTheSameTypeAsTheirKindAndItsSubkindsEitherWay) {
    const Value aPrinter = printer("1");
    const Value anotherPrinter = printer("2");
    const Value hardware = std::make_shared<QVHardware>();
    const Value plain = QVSystemInfo::systemInfo();
    const Value aCamera = camera("c");
    const Value address = ipInfo("10.0.0.1");
    EXPECT_TRUE(QVCollectionUtil::isObject(aPrinter, anotherPrinter));
    EXPECT_TRUE(QVCollectionUtil::isObject(aPrinter, hardware));
    EXPECT_TRUE(QVCollectionUtil::isObject(hardware, aPrinter));
    EXPECT_TRUE(QVCollectionUtil::isObject(plain, aPrinter));
    EXPECT_TRUE(QVCollectionUtil::isObject(address, plain));
    EXPECT_FALSE(QVCollectionUtil::isObject(aPrinter, aCamera));
    EXPECT_FALSE(QVCollectionUtil::isObject(aCamera, aPrinter));
    EXPECT_FALSE(QVCollectionUtil::isObject(address, hardware));
}

TEST(QVCollectionUtil, PlainValuesAreOfTheSameTypeByTheirSort) {
    EXPECT_TRUE(QVCollectionUtil::isObject("a", "b"));
    EXPECT_TRUE(QVCollectionUtil::isObject(1, 2.5));
    EXPECT_TRUE(QVCollectionUtil::isObject(std::uint64_t{1}, -1));
    EXPECT_TRUE(QVCollectionUtil::isObject(true, false));
    EXPECT_FALSE(QVCollectionUtil::isObject(true, 1));
    EXPECT_FALSE(QVCollectionUtil::isObject(1, true));
    EXPECT_FALSE(QVCollectionUtil::isObject("1", 1));
    EXPECT_FALSE(QVCollectionUtil::isObject(Value(), Value()));
    EXPECT_FALSE(QVCollectionUtil::isObject(Value(RecordRef()), Value(RecordRef())));
    EXPECT_FALSE(QVCollectionUtil::isObject(Value(ArrayRef()), Value::newArray()));
}

// ---- texts ----

TEST(QVCollectionUtil, EmptyComponentsAreRemovedInOrder) {
    EXPECT_EQ(QVCollectionUtil::arrayWithEmptyComponentsRemovedInArray({"", "usr", "", "local", " ", ""}),
              (std::vector<std::string>{"usr", "local", " "}));
    EXPECT_TRUE(QVCollectionUtil::arrayWithEmptyComponentsRemovedInArray({"", ""}).empty());
    EXPECT_TRUE(QVCollectionUtil::arrayWithEmptyComponentsRemovedInArray({}).empty());
}

}  // namespace
}  // namespace tov
