#include "model/QVSystemInfo.h"

#include <gtest/gtest.h>

#include "RecordSamples.h"
#include "model/QVHardware.h"
#include "model/QVIOKitKeyboard.h"

namespace tov {
namespace {

using testing::compactJson;

std::optional<std::string> storedString(const QVSystemInfo& record, std::string_view key) {
    const Value value = record.innerDictionary()->get(key);
    if (!value.string()) return std::nullopt;
    return *value.string();
}

TEST(QVSystemInfo, ANewRecordIsEmptyWithScanResultZero) {
    const auto record = QVSystemInfo::systemInfo();
    EXPECT_TRUE(record->innerDictionary()->empty());
    EXPECT_EQ(record->scanResult(), 0);
    EXPECT_EQ(record->identifier(), std::string());
    EXPECT_STREQ(record->className(), "QVSystemInfo");
}

TEST(QVSystemInfo, AnAbsentValueStoresTheEmptyStringAndShowsInJson) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue(std::nullopt, "name");
    EXPECT_EQ(storedString(*record, "name"), "");
    EXPECT_EQ(compactJson(*record), R"({"name":""})");
}

TEST(QVSystemInfo, LeadingBlanksAndATrailingLineBreakAreTrimmed) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue("  Keyboard\n", "name");
    EXPECT_EQ(storedString(*record, "name"), "Keyboard");
}

TEST(QVSystemInfo, TextOfBlanksOnlyIsStoredEmpty) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue("     ", "name");
    EXPECT_EQ(storedString(*record, "name"), "");
}

TEST(QVSystemInfo, TrimmingCoversTabsCarriageReturnsAndUnicodeSpaces) {
    const auto record = QVSystemInfo::systemInfo();
    // tab, no-break space, line separator; inner blanks stay
    record->setStringValue("\t\xC2\xA0Magic  Mouse\r\n\xE2\x80\xA8", "name");
    EXPECT_EQ(storedString(*record, "name"), "Magic  Mouse");
}

TEST(QVSystemInfo, AJavaEscapeIsDecodedToItsCharacter) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue("Caf\\u00e9", "name");
    EXPECT_EQ(storedString(*record, "name"), "Caf\xC3\xA9");
    record->setStringValue("\\u00E9t\\u00e9", "name");
    EXPECT_EQ(storedString(*record, "name"), "\xC3\xA9t\xC3\xA9");
}

TEST(QVSystemInfo, EscapedSurrogatePairsCombineIntoOneCharacter) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue("smile \\ud83d\\ude00", "name");
    EXPECT_EQ(storedString(*record, "name"), "smile \xF0\x9F\x98\x80");  // U+1F600
}

TEST(QVSystemInfo, TextThatIsNoEscapeIsKeptAsItIs) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue("C:\\users\\uZZZ \\n", "name");
    EXPECT_EQ(storedString(*record, "name"), "C:\\users\\uZZZ \\n");
}

TEST(QVSystemInfo, StoringAgainReplacesTheValueInPlace) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue("first", "a");
    record->setStringValue("other", "b");
    record->setStringValue("second", "a");
    EXPECT_EQ(compactJson(*record), R"({"a":"second","b":"other"})");
}

TEST(QVSystemInfo, BaseRecordsWithEqualDictionariesAreUnequalButHashAlike) {
    const auto first = QVSystemInfo::systemInfo();
    const auto second = QVSystemInfo::systemInfo();
    first->setStringValue("x", "name");
    second->setStringValue("x", "name");
    EXPECT_FALSE(first->isEqual(*second));
    EXPECT_TRUE(first->isEqual(*first));
    EXPECT_EQ(first->hash(), second->hash());
}

TEST(QVSystemInfo, TheHashIsTheNumberOfEntries) {
    const auto first = QVIOKitKeyboard::ioKitKeyboard();
    const auto second = QVIOKitKeyboard::ioKitKeyboard();
    first->setName("one");
    second->setName("two");
    EXPECT_EQ(first->hash(), second->hash());
    second->setStringValue("extra", "other");
    EXPECT_NE(first->hash(), second->hash());
}

TEST(QVSystemInfo, TheScanResultIsNeverWrittenToJson) {
    const auto record = QVSystemInfo::systemInfo();
    record->setStringValue("x", "name");
    record->setScanResult(3);
    EXPECT_EQ(compactJson(*record), R"({"name":"x"})");
    EXPECT_EQ(record->description(), R"({"name":"x"})");
}

TEST(QVSystemInfo, SetInnerDictTakesTheDictionaryItself) {
    const auto record = QVSystemInfo::systemInfo();
    const DictionaryRef dictionary = makeDictionary();
    record->setInnerDict(dictionary);
    dictionary->set("name", Value("later"));
    EXPECT_EQ(record->innerDictionary(), dictionary);
    EXPECT_EQ(storedString(*record, "name"), "later");
}

TEST(QVSystemInfo, ACopyKeepsKindDictionaryAndScanResultAndIsIndependent) {
    const auto source = QVIOKitKeyboard::ioKitKeyboard();
    source->setName("Keyboard");
    source->setScanResult(1);
    const RecordRef copy = source->copy();
    ASSERT_NE(std::dynamic_pointer_cast<QVIOKitKeyboard>(copy), nullptr);
    EXPECT_STREQ(copy->className(), "QVIOKitKeyboard");
    EXPECT_TRUE(source->isEqual(*copy));
    EXPECT_TRUE(copy->isEqual(*source));
    EXPECT_EQ(copy->scanResult(), 1);
    EXPECT_NE(copy->innerDictionary(), source->innerDictionary());

    copy->setStringValue("Other", "name");
    copy->setStringValue("added", "extra");
    EXPECT_EQ(*source->identifier(), "Keyboard");
    EXPECT_FALSE(source->innerDictionary()->contains("extra"));
    EXPECT_STREQ(source->mutableCopy()->className(), source->className());
}

TEST(QVSystemInfo, ACopyOfABaseOrHardwareRecordKeepsItsClass) {
    const auto hardware = std::make_shared<QVHardware>();
    hardware->setStringValue("x", "name");
    EXPECT_STREQ(hardware->copy()->className(), "QVHardware");
    EXPECT_TRUE(hardware->copy()->isKindOf(typeid(QVSystemInfo)));
    EXPECT_STREQ(QVSystemInfo::systemInfo()->copy()->className(), "QVSystemInfo");
    EXPECT_FALSE(QVSystemInfo::systemInfo()->isKindOf(typeid(QVHardware)));
}

TEST(QVSystemInfo, CodingAndDecodingGivesTheSameDictionaryAndScanResult) {
    const auto source = QVSystemInfo::systemInfo();
    source->setStringValue("Keyboard", "name");
    source->innerDictionary()->set("count", Value(std::int64_t{-4}));
    source->setScanResult(2);
    Dictionary coder;
    source->encodeWithCoder(coder);
    EXPECT_TRUE(coder.get("value-dictionary").isDictionary());
    EXPECT_EQ(coder.get("scan-result").toInt64(), 2);

    const auto decoded = QVSystemInfo::systemInfo();
    decoded->setStringValue("dropped", "old");
    decoded->initWithCoder(coder);
    EXPECT_EQ(*decoded->innerDictionary(), *source->innerDictionary());
    EXPECT_EQ(decoded->scanResult(), 2);
    EXPECT_FALSE(decoded->innerDictionary()->contains("old"));

    // The decoded dictionary is its own.
    decoded->setStringValue("changed", "name");
    EXPECT_EQ(storedString(*source, "name"), "Keyboard");
}

}  // namespace
}  // namespace tov
