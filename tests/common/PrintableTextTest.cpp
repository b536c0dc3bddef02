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
