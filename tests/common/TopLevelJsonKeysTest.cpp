#include "common/TopLevelJsonKeys.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "model/Json.h"

namespace tov {
namespace {

TopLevelJsonKeys keysOf(const std::string& text) {
    std::istringstream input(text);
    return readTopLevelJsonKeys(input, {"a", "b"});
}

std::string nested(int levels) {
    return std::string(static_cast<std::size_t>(levels), '[') + std::string(static_cast<std::size_t>(levels), ']');
}

TEST(TopLevelJsonKeys, KeepsOnlyTheWantedKeysOfTheTopLevelObject) {
    const TopLevelJsonKeys keys = keysOf(R"({"x": {"a": 1}, "b": "text", "c": [{"b": 2}], "a": 7})");
    ASSERT_TRUE(keys.parsed);
    EXPECT_EQ(keys.root, JsonRootKind::Object);
    EXPECT_EQ(keys.values.size(), 2u);
    EXPECT_EQ(keys.values.get("a").toInt64(), 7);
    EXPECT_EQ(*keys.values.get("b").string(), "text");
}

TEST(TopLevelJsonKeys, ValuesKeepTheirKinds) {
    const TopLevelJsonKeys keys = keysOf(R"({"a": 18446744073709551615, "b": 1.5})");
    EXPECT_EQ(keys.values.get("a").type(), Value::Type::UInt);
    EXPECT_EQ(keys.values.get("b").type(), Value::Type::Double);
    EXPECT_EQ(keysOf(R"({"a": -3, "b": true})").values.get("a").type(), Value::Type::Int);
    EXPECT_EQ(keysOf(R"({"a": -3, "b": true})").values.get("b").type(), Value::Type::Bool);
    EXPECT_EQ(keysOf(R"({"a": null})").values.get("a").type(), Value::Type::Absent);
    EXPECT_TRUE(keysOf(R"({"a": null})").values.contains("a"));
}

TEST(TopLevelJsonKeys, ContainersAreGivenEmptyAndOfTheirKind) {
    const TopLevelJsonKeys keys = keysOf(R"({"a": [1, 2], "b": {"c": 3}})");
    ASSERT_TRUE(keys.values.get("a").isArray());
    EXPECT_TRUE(keys.values.get("a").array()->empty());
    ASSERT_TRUE(keys.values.get("b").isDictionary());
    EXPECT_TRUE(keys.values.get("b").dictionary()->empty());
}

TEST(TopLevelJsonKeys, ARepeatedKeyKeepsItsLastValue) {
    EXPECT_EQ(keysOf(R"({"a": 1, "a": [], "a": 3})").values.get("a").toInt64(), 3);
}

TEST(TopLevelJsonKeys, TellsTheKindOfTheRoot) {
    EXPECT_EQ(keysOf(R"([{"a": 1}])").root, JsonRootKind::Array);
    EXPECT_TRUE(keysOf(R"([{"a": 1}])").values.empty());
    EXPECT_EQ(keysOf("12").root, JsonRootKind::Scalar);
    EXPECT_TRUE(keysOf("12").parsed);
}

TEST(TopLevelJsonKeys, AnythingButOneWholeDocumentIsNotParsedAndKeepsNothing) {
    for (const char* text : {"", R"({"a": 1)", R"({"a": 1} {})", R"({"a": "\xff"})", R"({"a": 1, /* */ "b": 2})",
                             R"({"a": 1, "b": 1e999})"}) {
        const TopLevelJsonKeys keys = keysOf(text);
        EXPECT_FALSE(keys.parsed) << text;
        EXPECT_FALSE(keys.error.empty()) << text;
        EXPECT_TRUE(keys.values.empty()) << text;
    }
}

TEST(TopLevelJsonKeys, NestingIsLimitedAsForEveryJsonDocument) {
    EXPECT_TRUE(keysOf(R"({"a": 1, "c": )" + nested(kMaximumJsonDepth - 1) + "}").parsed);
    const TopLevelJsonKeys tooDeep = keysOf(R"({"a": 1, "c": )" + nested(kMaximumJsonDepth) + "}");
    EXPECT_FALSE(tooDeep.parsed);
    EXPECT_NE(tooDeep.error.find("nested too deeply"), std::string::npos);
    EXPECT_EQ(parseJson(nested(kMaximumJsonDepth + 1)).has_value(), keysOf(nested(kMaximumJsonDepth + 1)).parsed);
    EXPECT_EQ(parseJson(nested(kMaximumJsonDepth)).has_value(), keysOf(nested(kMaximumJsonDepth)).parsed);
}

TEST(TopLevelJsonKeys, FillerOfEmptyContainersAndBlanksIsSkipped) {
    std::string text = R"({"pad": [)";
    for (int index = 0; index < 200000; ++index) text += "{},[], ";
    text += "{}], \"gap\": \"" + std::string(1000, ' ') + "\", \"a\": 5}";
    const TopLevelJsonKeys keys = keysOf(text);
    ASSERT_TRUE(keys.parsed) << keys.error;
    EXPECT_EQ(keys.values.get("a").toInt64(), 5);
}

}  // namespace
}  // namespace tov
