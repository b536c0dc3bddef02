#include "common/TextUtils.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace tov {
namespace {

using Pieces = std::vector<std::string_view>;

TEST(TextUtilsSplitAt, KeepsEmptyPiecesBetweenAndAroundSeparators) {
    EXPECT_EQ(splitAt("a::b", ':'), (Pieces{"a", "", "b"}));
    EXPECT_EQ(splitAt(":a:", ':'), (Pieces{"", "a", ""}));
    EXPECT_EQ(splitAt("", ':'), (Pieces{""}));
    EXPECT_EQ(splitAt("line one\nline two\n", '\n'), (Pieces{"line one", "line two", ""}));
}

TEST(TextUtilsHasSuffix, ComparesTheEndExactly) {
    EXPECT_TRUE(hasSuffix("256 KB", "KB"));
    EXPECT_TRUE(hasSuffix("KB", "KB"));
    EXPECT_TRUE(hasSuffix("anything", ""));
    EXPECT_FALSE(hasSuffix("B", "KB"));
    EXPECT_FALSE(hasSuffix("256 kb", "KB"));
}

}  // namespace
}  // namespace tov
