#include "discovery/PrintableText.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(PrintableText, KeepsValidUtf8AndTrims) {
    EXPECT_EQ(printableText("  Zürich “Büro” \n"), "Zürich “Büro”");
}

TEST(PrintableText, ReplacesInvalidSequencesWithTheReplacementCharacter) {
    EXPECT_EQ(printableText("a\xff" "b"), "a\xEF\xBF\xBD" "b");
    EXPECT_EQ(printableText("cut \xE2\x82"), "cut \xEF\xBF\xBD");
}

TEST(PrintableText, RemovesControlCharacters) {
    EXPECT_EQ(printableText(std::string("tab\there\x1b[31m\x7f") + '\0' + "end"), "tabhere[31mend");
    EXPECT_EQ(printableText("line\r\nbreak"), "linebreak");
}

TEST(PrintableText, EmptyStaysEmpty) { EXPECT_EQ(printableText(""), ""); }

}  // namespace
}  // namespace tov
