#include "common/CompactJsonInputBuffer.h"

#include <gtest/gtest.h>

#include <istream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

namespace tov {
namespace {

constexpr int kDepth = 32;

std::string compacted(const std::string& text, int maximumDepth = kDepth) {
    std::stringbuf source(text);
    CompactJsonInputBuffer buffer(source, maximumDepth);
    std::istream input(&buffer);
    return std::string(std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>());
}

std::string nested(int levels, const std::string& inside) {
    return std::string(static_cast<std::size_t>(levels), '[') + inside + std::string(static_cast<std::size_t>(levels), ']');
}

TEST(CompactJsonInputBuffer, TopLevelMembersAndTheirValuesStayAsTheyAre) {
    EXPECT_EQ(compacted(R"({"a":{},"b":[],"c":"{} [ ]","d":1})"), R"({"a":{},"b":[],"c":"{} [ ]","d":1})");
    EXPECT_EQ(compacted("{}"), "{}");
    EXPECT_EQ(compacted("[]"), "[]");
}

TEST(CompactJsonInputBuffer, EmptyContainersBelowTheTopLevelMembersBecomeZero) {
    EXPECT_EQ(compacted(R"({"a":[{},1,[ ]]})"), R"({"a":[ 0 ,1, 0 ]})");
    EXPECT_EQ(compacted(R"({"a":{"b":{}}})"), R"({"a":{"b": 0 }})");
    EXPECT_EQ(compacted("[{},[]]"), "[ 0 ]");
}

TEST(CompactJsonInputBuffer, ARunOfEmptyContainersInAnArrayBecomesOneZero) {
    EXPECT_EQ(compacted(R"({"a":[{},{}, {} ,[],{}],"b":2})"), R"({"a":[ 0 ],"b":2})");
    EXPECT_EQ(compacted(R"({"a":[{},{},[1]]})"), R"({"a":[ 0 ,[1]]})");
}

TEST(CompactJsonInputBuffer, BlankRunsOutsideStringsBecomeOneBlank) {
    EXPECT_EQ(compacted("{ \n\t \"a\"  :\r\n 1 }"), "{ \"a\" : 1 }");
    EXPECT_EQ(compacted("\"  two  \""), "\"  two  \"");
}

TEST(CompactJsonInputBuffer, EscapedQuotesDoNotEndAString) {
    EXPECT_EQ(compacted(R"({"a":["\"{}", "\\", {}]})"), R"({"a":["\"{}", "\\",  0 ]})");
}

TEST(CompactJsonInputBuffer, ContainersBeyondTheDepthLimitAreKept) {
    EXPECT_EQ(compacted(nested(3, ""), 2), nested(3, ""));
    EXPECT_EQ(compacted(nested(3, ""), 3), "[[ 0 ]]");
}

// Whatever the input, the parser accepts the compacted text exactly when it accepts the
// original.
TEST(CompactJsonInputBuffer, ValidityIsKept) {
    const char* documents[] = {
        "[{}.5]", "[{}e5]", "[{}-1]", "[{}5]", "[[{}.5]]", "[{},]", "[{},,{}]", "[,{}]", "[{} {}]", "[{},{}",
        "[{},", "[{", "{\"a\" {}}", "{\"a\":[{}.5]}", "{{}:1}", "{\"a\":[{},{}]}", "{\"a\":{\"b\":{},{}}}",
        "[[ ] , [ ] ]", "[{ }, [\n]]", "[{]", "[[}]", "[\"{}\",{}]", "[\"\\\"\",{}]", "{\"a\":[{}],}", "[{}]x",
        "[{}] ", " [ ] ", "[{},{}]]", "[0{}]", "[true{}]", "[{}true]", "[{},{},1,{},[]]", "",
        "[{}, 9[]]", "[9{}]", "[-{}]", "{\"a\":[-[]]}", "[1e{}]", "[1.{}]", "[{}9]",
    };
    for (const char* document : documents) {
        EXPECT_EQ(nlohmann::json::accept(compacted(document)), nlohmann::json::accept(document))
            << document << " became " << compacted(document);
    }
}

}  // namespace
}  // namespace tov
