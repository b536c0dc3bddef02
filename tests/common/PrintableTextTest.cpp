#include "common/PrintableText.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(PrintableText, TrimsAndKeepsOrdinaryText) {
    EXPECT_EQ(printableText("  Raspberry Pi 4 Model B Rev 1.4 \n"), "Raspberry Pi 4 Model B Rev 1.4");
    EXPECT_EQ(printableText("Zürich ✓"), "Zürich ✓");
}

TEST(PrintableText, DropsControlCharactersAndATrailingNul) {
    EXPECT_EQ(printableText(std::string("Board\x01\x1b[31m X\0", 14)), "Board[31m X");
}

TEST(PrintableText, DropsTabsAndLineEndsInsideTheText) {
    EXPECT_EQ(printableText("tab\there\x7f"), "tabhere");
    EXPECT_EQ(printableText("line\r\nbreak"), "linebreak");
}

TEST(PrintableText, DropsSeparatorsAndBidirectionalControls) {
    EXPECT_EQ(printableText("Free\xE2\x80\xAEgnp.exe"), "Freegnp.exe");       // U+202E right-to-left override
    EXPECT_EQ(printableText("a\xE2\x81\xA6" "b\xE2\x81\xA9" "c\xE2\x80\x8F"), "abc");  // isolates and the RLM mark
    EXPECT_EQ(printableText("one\xE2\x80\xA8two\xE2\x80\xA9"), "onetwo");          // line and paragraph separators
    EXPECT_EQ(printableText("Caf\xC3\xA9 \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D"), "Caf\xC3\xA9 \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D");
}

TEST(PrintableText, ReplacesInvalidUtf8) {
    EXPECT_EQ(printableText("Bad\xff\xfeName"), "Bad\xEF\xBF\xBD\xEF\xBF\xBDName");
    EXPECT_EQ(printableText("cut \xE2\x82"), "cut \xEF\xBF\xBD");
}

TEST(PrintableText, EmptyStaysEmpty) {
    EXPECT_EQ(printableText(""), "");
    EXPECT_EQ(printableText(std::string("\0\0", 2)), "");
}

}  // namespace
}  // namespace tov
