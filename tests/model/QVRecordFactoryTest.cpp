// What every kind shares: making it by class name, copying, coding, JSON read-back, and
// equality across kinds.

#include "model/QVRecordFactory.h"

#include <gtest/gtest.h>

#include <set>
#include <typeindex>
#include <typeinfo>

#include "RecordSamples.h"
#include "model/QVHardware.h"
#include "model/QVIOKitKeyboard.h"

namespace tov {
namespace {

// The dynamic type of a record (typeid of a dereferenced pointer is evaluated, which clang
// warns of).
std::type_index kindOf(const QVSystemInfo& record) { return typeid(record); }

using testing::compactJson;
using testing::filledRecordsOfEveryKind;

// The sixteen kinds, in the order of filledRecordsOfEveryKind.
const std::vector<std::string> kKindNames = {
    "QVIOKitCamera",
    "QVIOKitKeyboard",
    "QVIPInfo",
    "QVIOKitDisplay",
    "QVAppKitPrinter",
    "QVCoreFoundationOperatingSystem",
    "QVSysCtlTimeZone",
    "QVSysCtlCpu",
    "QVDiskUtilDisk",
    "QVIOKitBattery",
    "QVIOKitNetwork",
    "QVCoreAudioSound",
    "QVIOKitMemory",
    "QVIOKitPointingDevice",
    "QVSysCtlMemory",
    "QVIOKitDisk",
};

const std::set<std::string> kSystemFactKinds = {"QVIPInfo", "QVCoreFoundationOperatingSystem", "QVSysCtlTimeZone",
                                                "QVIOKitNetwork", "QVSysCtlMemory"};

// A keyboard of a kind derived from the keyboard's.
class DerivedKeyboard : public QVRecordKind<DerivedKeyboard, QVIOKitKeyboard> {
public:
    static constexpr const char* kClassName = "DerivedKeyboard";
};

RecordRef codedAndDecoded(const QVSystemInfo& record) {
    Dictionary archive;
    QVRecordFactory::encodeRecord(record, archive);
    return QVRecordFactory::decodeRecord(archive);
}

RecordRef codedThroughJsonText(const QVSystemInfo& record) {
    auto archive = std::make_shared<Dictionary>();
    QVRecordFactory::encodeRecord(record, *archive);
    const std::optional<Value> parsed = parseJson(writeJson(Value(archive), JsonStyle::Indented));
    if (!parsed || !parsed->dictionary()) return nullptr;
    return QVRecordFactory::decodeRecord(*parsed->dictionary());
}

TEST(QVRecordFactory, MakesAnEmptyRecordOfEveryKindByName) {
    for (const std::string& name : kKindNames) {
        SCOPED_TRACE(name);
        const RecordRef record = QVRecordFactory::recordOfClass(name);
        ASSERT_TRUE(record);
        EXPECT_EQ(record->className(), name);
        EXPECT_EQ(record->scanResult(), 0);
        EXPECT_EQ(record->isKindOf(typeid(QVHardware)), kSystemFactKinds.count(name) == 0);
        if (name != "QVDiskUtilDisk") {
            EXPECT_TRUE(record->innerDictionary()->empty());
        }
    }
    EXPECT_EQ(QVRecordFactory::recordOfClass("QVDiskUtilDisk")->innerDictionary()->size(), 3u);
}

TEST(QVRecordFactory, MakesTheTwoBaseClassesByName) {
    const RecordRef base = QVRecordFactory::recordOfClass("QVSystemInfo");
    ASSERT_TRUE(base);
    EXPECT_STREQ(base->className(), "QVSystemInfo");
    EXPECT_FALSE(base->isKindOf(typeid(QVHardware)));
    const RecordRef hardware = QVRecordFactory::recordOfClass("QVHardware");
    ASSERT_TRUE(hardware);
    EXPECT_STREQ(hardware->className(), "QVHardware");
    EXPECT_TRUE(hardware->isKindOf(typeid(QVHardware)));
}

TEST(QVRecordFactory, KnowsNoOtherName) {
    EXPECT_FALSE(QVRecordFactory::recordOfClass(""));
    EXPECT_FALSE(QVRecordFactory::recordOfClass("qviokitcamera"));
    EXPECT_FALSE(QVRecordFactory::recordOfClass("QVIOKitCameras"));
    EXPECT_FALSE(QVRecordFactory::recordOfClass("NSObject"));
}

TEST(QVRecordFactory, EveryKindsSampleHasItsOwnClassName) {
    std::vector<std::string> names;
    for (const RecordRef& record : filledRecordsOfEveryKind()) names.emplace_back(record->className());
    EXPECT_EQ(names, kKindNames);
}

TEST(RecordKinds, ACopyKeepsKindValuesAndScanResultAndIsIndependent) {
    for (const RecordRef& source : filledRecordsOfEveryKind()) {
        SCOPED_TRACE(source->className());
        const RecordRef copy = source->copy();
        EXPECT_EQ(kindOf(*copy), kindOf(*source));
        EXPECT_STREQ(copy->className(), source->className());
        EXPECT_EQ(*copy->innerDictionary(), *source->innerDictionary());
        EXPECT_EQ(copy->scanResult(), 2);
        EXPECT_TRUE(source->isEqual(*copy));
        EXPECT_TRUE(copy->isEqual(*source));
        EXPECT_EQ(copy->identifier(), source->identifier());
        EXPECT_EQ(copy->hash(), source->hash());

        const std::string before = compactJson(*source);
        copy->innerDictionary()->set("added", Value("only in the copy"));
        copy->setScanResult(3);
        EXPECT_EQ(compactJson(*source), before);
        EXPECT_EQ(source->scanResult(), 2);
    }
}

TEST(RecordKinds, CodingGivesBackTheKindDictionaryAndScanResult) {
    for (const RecordRef& source : filledRecordsOfEveryKind()) {
        SCOPED_TRACE(source->className());
        const RecordRef decoded = codedAndDecoded(*source);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(kindOf(*decoded), kindOf(*source));
        EXPECT_EQ(*decoded->innerDictionary(), *source->innerDictionary());
        EXPECT_EQ(decoded->scanResult(), 2);
        EXPECT_TRUE(source->isEqual(*decoded));
        EXPECT_NE(decoded->innerDictionary(), source->innerDictionary());
    }
}

TEST(RecordKinds, CodingThroughJsonTextGivesBackTheSameRecord) {
    for (const RecordRef& source : filledRecordsOfEveryKind()) {
        SCOPED_TRACE(source->className());
        const RecordRef decoded = codedThroughJsonText(*source);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(kindOf(*decoded), kindOf(*source));
        EXPECT_EQ(*decoded->innerDictionary(), *source->innerDictionary());
        EXPECT_EQ(decoded->scanResult(), 2);
        EXPECT_EQ(compactJson(*decoded), compactJson(*source));
        EXPECT_TRUE(source->isEqual(*decoded));
        EXPECT_TRUE(decoded->isEqual(*source));
        EXPECT_EQ(decoded->identifier(), source->identifier());
    }
}

TEST(RecordKinds, ANegativeScanResultSurvivesJsonText) {
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("Keyboard");
    keyboard->setScanResult(-7);
    const RecordRef decoded = codedThroughJsonText(*keyboard);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->scanResult(), -7);
}

TEST(RecordKinds, TheArchiveNamesTheClassBesideTheCodedKeys) {
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("Keyboard");
    keyboard->setScanResult(1);
    auto archive = std::make_shared<Dictionary>();
    QVRecordFactory::encodeRecord(*keyboard, *archive);
    EXPECT_EQ(writeJson(Value(archive), JsonStyle::Compact),
              R"({"$class":"QVIOKitKeyboard","value-dictionary":{"name":"Keyboard"},"scan-result":1})");
}

TEST(RecordKinds, AnArchiveWithoutAKnownClassOrDictionaryDecodesToNothing) {
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("Keyboard");
    Dictionary archive;
    QVRecordFactory::encodeRecord(*keyboard, archive);

    Dictionary withoutClass = archive;
    withoutClass.remove("$class");
    EXPECT_FALSE(QVRecordFactory::decodeRecord(withoutClass));
    Dictionary unknownClass = archive;
    unknownClass.set("$class", Value("QVToaster"));
    EXPECT_FALSE(QVRecordFactory::decodeRecord(unknownClass));
    Dictionary classNotText = archive;
    classNotText.set("$class", Value(5));
    EXPECT_FALSE(QVRecordFactory::decodeRecord(classNotText));
    Dictionary withoutValues = archive;
    withoutValues.remove("value-dictionary");
    EXPECT_FALSE(QVRecordFactory::decodeRecord(withoutValues));
    Dictionary valuesNotADictionary = archive;
    valuesNotADictionary.set("value-dictionary", Value("name"));
    EXPECT_FALSE(QVRecordFactory::decodeRecord(valuesNotADictionary));
    EXPECT_FALSE(QVRecordFactory::decodeRecord(Dictionary()));
}

TEST(RecordKinds, RecordsOfDifferentKindsAreUnequal) {
    const std::vector<RecordRef> records = filledRecordsOfEveryKind();
    for (const RecordRef& left : records) {
        for (const RecordRef& right : records) {
            if (left == right) continue;
            EXPECT_FALSE(left->isEqual(*right)) << left->className() << " vs " << right->className();
        }
    }
}

TEST(RecordKinds, KindsWithTheSameKeysAreStillUnequal) {
    const RecordRef printer = QVRecordFactory::recordOfClass("QVAppKitPrinter");
    const RecordRef sound = QVRecordFactory::recordOfClass("QVCoreAudioSound");
    for (const RecordRef& record : {printer, sound}) {
        record->setStringValue("Same", "name");
        record->setStringValue("Same", "driver");
        record->setStringValue("Same", "manufacturer");
    }
    EXPECT_TRUE(printer->isEqual(*printer->copy()));
    EXPECT_FALSE(printer->isEqual(*sound));
    EXPECT_FALSE(sound->isEqual(*printer));
}

TEST(RecordKinds, AKindEqualsRecordsOfAKindDerivedFromItButNotTheOtherWayRound) {
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("Keyboard");
    const auto derived = std::make_shared<DerivedKeyboard>();
    derived->setName("Keyboard");
    EXPECT_TRUE(keyboard->isEqual(*derived));
    EXPECT_FALSE(derived->isEqual(*keyboard));
    EXPECT_STREQ(derived->copy()->className(), "DerivedKeyboard");
}

TEST(RecordKinds, AKindIsNeverEqualToABaseRecordWithTheSameValues) {
    for (const RecordRef& record : filledRecordsOfEveryKind()) {
        if (std::string(record->className()) == "QVIPInfo") continue;  // its kind test runs the other way
        SCOPED_TRACE(record->className());
        const auto base = QVSystemInfo::systemInfo();
        base->setInnerDict(record->innerDictionary()->shallowCopy());
        const auto hardware = std::make_shared<QVHardware>();
        hardware->setInnerDict(record->innerDictionary()->shallowCopy());
        EXPECT_FALSE(record->isEqual(*base));
        EXPECT_FALSE(record->isEqual(*hardware));
        EXPECT_FALSE(base->isEqual(*record));
    }
}

TEST(RecordKinds, DeepCopyOfAValueKeepsEachRecordsKind) {
    for (const RecordRef& record : filledRecordsOfEveryKind()) {
        SCOPED_TRACE(record->className());
        const Value copy = Value(record).deepCopy();
        ASSERT_TRUE(copy.record());
        EXPECT_EQ(kindOf(*copy.record()), kindOf(*record));
        EXPECT_EQ(copy, Value(record));
    }
}

}  // namespace
}  // namespace tov
