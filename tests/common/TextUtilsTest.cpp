#include "common/TextUtils.h"

#include <gtest/gtest.h>

#include <locale>
#include <optional>
#include <stdexcept>
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

TEST(TextUtilsLeadingDecimal, ReadsTheNumberAtTheStartAndCountsItsCharacters) {
    const std::optional<LeadingDecimal> share = leadingDecimal("12.5%");
    ASSERT_TRUE(share);
    EXPECT_EQ(share->value, 12.5);
    EXPECT_EQ(share->length, 4u);
    const std::optional<LeadingDecimal> whole = leadingDecimal("2095.076");
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->value, 2095.076);
    EXPECT_EQ(whole->length, 8u);
    EXPECT_EQ(leadingDecimal("-0.25")->value, -0.25);
    EXPECT_EQ(leadingDecimal(".5 MB")->value, 0.5);
    EXPECT_EQ(leadingDecimal("1e3x")->value, 1000.0);
}

TEST(TextUtilsLeadingDecimal, WantsTheNumberRightAtTheStart) {
    EXPECT_FALSE(leadingDecimal(""));
    EXPECT_FALSE(leadingDecimal(" 1.5"));
    EXPECT_FALSE(leadingDecimal("+1.5"));
    EXPECT_FALSE(leadingDecimal("MHz 1.5"));
    EXPECT_FALSE(leadingDecimal("%"));
}

// The point is the decimal separator whatever locale the process runs in.
TEST(TextUtilsLeadingDecimal, IgnoresTheGlobalLocale) {
    const std::locale saved = std::locale::global(std::locale::classic());
    try {
        std::locale::global(std::locale("de_DE.UTF-8"));
    } catch (const std::runtime_error&) {
        std::locale::global(saved);
        GTEST_SKIP() << "no de_DE.UTF-8 locale on this machine";
    }
    const std::optional<LeadingDecimal> number = leadingDecimal("1.5");
    std::locale::global(saved);
    ASSERT_TRUE(number);
    EXPECT_EQ(number->value, 1.5);
    EXPECT_EQ(number->length, 3u);
}

}  // namespace
}  // namespace tov
