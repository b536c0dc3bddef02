#include "model/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "model/Json.h"
#include "model/QVSystemInfo.h"

namespace tov {
namespace {

TEST(Value, ScalarsKeepTheirType) {
    EXPECT_EQ(Value().type(), Value::Type::Absent);
    EXPECT_EQ(Value(true).type(), Value::Type::Bool);
    EXPECT_EQ(Value(-3).type(), Value::Type::Int);
    EXPECT_EQ(Value(3u).type(), Value::Type::UInt);
    EXPECT_EQ(Value(std::uint64_t{18446744073709551615u}).toUInt64(), 18446744073709551615u);
    EXPECT_EQ(Value(2.5).type(), Value::Type::Double);
    EXPECT_EQ(Value("text").type(), Value::Type::String);
}

TEST(Value, NumbersConvertBetweenTypesAndOtherValuesReadAsZero) {
    EXPECT_EQ(Value(7u).toInt64(), 7);
    EXPECT_EQ(Value(-7).toDouble(), -7.0);
    EXPECT_EQ(Value(87.9).toInt64(), 87);
    EXPECT_TRUE(Value(1).toBool());
    EXPECT_EQ(Value(true).toUInt64(), 1u);
    EXPECT_EQ(Value("12").toInt64(), 0);
    EXPECT_EQ(Value().toDouble(), 0.0);
    EXPECT_EQ(Value(-1.0).toUInt64(), 0u);
}

TEST(Value, NumbersOfDifferentRepresentationsCompareByValue) {
    EXPECT_EQ(Value(std::int64_t{5}), Value(std::uint64_t{5}));
    EXPECT_EQ(Value(std::uint64_t{5}), Value(std::int64_t{5}));
    EXPECT_EQ(Value(5.0), Value(5));
    EXPECT_EQ(Value(5u), Value(5.0));
    EXPECT_EQ(Value(-3), Value(-3.0));
    EXPECT_NE(Value(5.5), Value(5));
    EXPECT_NE(Value(-1), Value(std::uint64_t{18446744073709551615u}));
    EXPECT_NE(Value(-1.0), Value(0u));
    EXPECT_NE(Value(18446744073709551616.0), Value(std::uint64_t{18446744073709551615u}));
    EXPECT_NE(Value(9223372036854775808.0), Value(std::int64_t{9223372036854775807}));
}

TEST(Value, BooleansEqualOnlyBooleans) {
    EXPECT_NE(Value(true), Value(1));
    EXPECT_NE(Value(false), Value(0u));
    EXPECT_NE(Value(0), Value("0"));
    EXPECT_NE(Value(0), Value());
}

TEST(Value, AReadBackDictionaryEqualsTheWrittenOne) {
    Value written = Value::newDictionary();
    written.dictionary()->set("width", Value(std::int64_t{1920}));
    written.dictionary()->set("ratio", Value(1.0));
    const auto readBack = parseJson(writeJson(written, JsonStyle::Compact));
    ASSERT_TRUE(readBack);
    EXPECT_EQ(readBack->dictionary()->get("width").type(), Value::Type::UInt);
    EXPECT_EQ(*readBack, written);
}

TEST(Value, ContainersAreSharedBetweenHolders) {
    Value first = Value::newDictionary();
    Value second = first;
    second.dictionary()->set("key", Value("value"));
    EXPECT_EQ(*first.dictionary()->get("key").string(), "value");

    Value list = Value::newArray();
    Value alias = list;
    alias.array()->push_back(Value(1));
    EXPECT_EQ(list.array()->size(), 1u);
}

TEST(Value, DeepCopyIsIndependentAllTheWayDown) {
    Value root = Value::newDictionary();
    Value inner = Value::newArray();
    inner.array()->push_back(Value("a"));
    root.dictionary()->set("list", inner);
    auto record = std::make_shared<QVSystemInfo>();
    record->setStringValue("name", "name");
    record->setScanResult(2);
    root.dictionary()->set("record", Value(record));

    Value copy = root.deepCopy();
    EXPECT_EQ(copy, root);
    copy.dictionary()->get("list").array()->push_back(Value("b"));
    copy.dictionary()->get("record").record()->innerDictionary()->set("name", Value("changed"));

    EXPECT_EQ(inner.array()->size(), 1u);
    EXPECT_EQ(*record->innerDictionary()->get("name").string(), "name");
    EXPECT_EQ(copy.dictionary()->get("record").record()->scanResult(), 2);
    EXPECT_NE(copy.dictionary()->get("record").record(), record);
}

TEST(Dictionary, KeepsInsertionOrderAndReplacesInPlace) {
    Dictionary dictionary;
    dictionary.set("zeta", Value(1));
    dictionary.set("alpha", Value(2));
    dictionary.set("mid", Value(3));
    dictionary.set("zeta", Value(4));
    std::vector<std::string> keys;
    for (const auto& [key, value] : dictionary) keys.push_back(key);
    EXPECT_EQ(keys, (std::vector<std::string>{"zeta", "alpha", "mid"}));
    EXPECT_EQ(dictionary.get("zeta").toInt64(), 4);
}

TEST(Dictionary, RemovingAKeyKeepsTheOthersFindable) {
    Dictionary dictionary;
    dictionary.set("a", Value(1));
    dictionary.set("b", Value(2));
    dictionary.set("c", Value(3));
    EXPECT_TRUE(dictionary.remove("a"));
    EXPECT_FALSE(dictionary.remove("a"));
    EXPECT_EQ(dictionary.get("b").toInt64(), 2);
    EXPECT_EQ(dictionary.get("c").toInt64(), 3);
    EXPECT_TRUE(dictionary.get("a").isAbsent());
    EXPECT_EQ(dictionary.size(), 2u);
}

TEST(Json, IndentedOutputKeepsKeyOrderOneMemberPerLine) {
    Value root = Value::newDictionary();
    root.dictionary()->set("b", Value(1));
    root.dictionary()->set("a", Value("x"));
    EXPECT_EQ(writeJson(root, JsonStyle::Indented), "{\n  \"b\": 1,\n  \"a\": \"x\"\n}");
    EXPECT_EQ(writeJson(root, JsonStyle::Compact), "{\"b\":1,\"a\":\"x\"}");
}

TEST(Json, RecordsAreWrittenAsTheirDictionary) {
    auto record = std::make_shared<QVSystemInfo>();
    record->setStringValue("Keyboard", "name");
    record->setScanResult(1);
    EXPECT_EQ(writeJson(Value(record), JsonStyle::Compact), "{\"name\":\"Keyboard\"}");
}

TEST(Json, InvalidUtf8IsReplacedRatherThanFailingTheReport) {
    const std::string text = writeJson(Value(std::string("bad\xff")), JsonStyle::Compact);
    EXPECT_EQ(text, "\"bad\xef\xbf\xbd\"");
}

TEST(Json, ParsesEveryKindOfValue) {
    const auto parsed = parseJson(R"({"s":"t","i":-2,"u":3,"d":1.5,"b":true,"n":null,"a":[1,{}]})");
    ASSERT_TRUE(parsed);
    const DictionaryRef root = parsed->dictionary();
    ASSERT_TRUE(root);
    EXPECT_EQ(*root->get("s").string(), "t");
    EXPECT_EQ(root->get("i").type(), Value::Type::Int);
    EXPECT_EQ(root->get("u").type(), Value::Type::UInt);
    EXPECT_EQ(root->get("d").toDouble(), 1.5);
    EXPECT_TRUE(root->get("b").toBool());
    EXPECT_TRUE(root->get("n").isAbsent());
    EXPECT_TRUE(root->contains("n"));
    EXPECT_EQ(root->get("a").array()->size(), 2u);
    EXPECT_TRUE(root->get("a").array()->at(1).isDictionary());
}

TEST(Json, RoundTripKeepsOrderAndValues) {
    const std::string text = R"({"z":[1,2,{"k":"v"}],"a":{"nested":false},"m":"é"})";
    const auto parsed = parseJson(text);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(writeJson(*parsed, JsonStyle::Compact), text);
}

std::string nestedArrays(int depth) { return std::string(depth, '[') + std::string(depth, ']'); }

TEST(Json, ParsingAcceptsThirtyTwoLevelsAndRefusesThirtyThree) {
    EXPECT_TRUE(parseJson(nestedArrays(32)));
    std::string error;
    EXPECT_FALSE(parseJson(nestedArrays(33), &error));
    EXPECT_NE(error.find("nested too deeply"), std::string::npos);
}

TEST(Json, MalformedTextAndTrailingGarbageAreRefused) {
    std::string error;
    EXPECT_FALSE(parseJson("{\"a\":", &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(parseJson("{} {}"));
    EXPECT_FALSE(parseJson(""));
    EXPECT_FALSE(parseJson("[1,]"));
}

TEST(Json, ARootArrayIsKeptAsAnArray) {
    const auto parsed = parseJson("[1]");
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(parsed->isArray());
}

}  // namespace
}  // namespace tov

namespace tov {
namespace {

TEST(Value, OutOfRangeDoublesClampWhenReadAsIntegers) {
    EXPECT_EQ(Value(1e30).toInt64(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Value(-1e30).toInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value(1e30).toUInt64(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(Value(std::nan("")).toInt64(), 0);
}

}  // namespace
}  // namespace tov
