#include "common/DisplayWidth.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(DisplayWidth, AsciiCountsOneColumnPerByte) {
    EXPECT_EQ(displayWidth(""), 0u);
    EXPECT_EQ(displayWidth("disk0s1"), 7u);
}

TEST(DisplayWidth, MultiByteCharactersCountOnce) {
    EXPECT_EQ(displayWidth("Café Müller"), 11u);
    EXPECT_EQ(displayWidth("Mia’s"), 5u);
    EXPECT_EQ(displayWidth("…"), 1u);
}

TEST(DisplayWidth, WideCharactersCountTwiceAndCombiningMarksNone) {
    EXPECT_EQ(displayWidth("東京"), 4u);
    EXPECT_EQ(displayWidth("ＡＢ"), 4u);
    EXPECT_EQ(displayWidth("e\xCC\x81"), 1u);  // e and a combining acute accent
}

TEST(DisplayWidth, IllFormedBytesCountOneColumnEach) {
    EXPECT_EQ(displayWidth("a\xFF"
                           "b"),
              3u);
    // A cut three-byte sequence shows as one replacement character.
    EXPECT_EQ(displayWidth("\xE6\x9D"), 1u);
}

TEST(CutToDisplayWidth, TextThatFitsIsKept) {
    EXPECT_EQ(cutToDisplayWidth("network", 7), "network");
    EXPECT_EQ(cutToDisplayWidth("東京", 4), "東京");
}

TEST(CutToDisplayWidth, LongerTextEndsInAnEllipsisWithinTheWidth) {
    EXPECT_EQ(cutToDisplayWidth("Wireless Network Adapter", 9), "Wireless…");
    EXPECT_EQ(displayWidth(cutToDisplayWidth("Wireless Network Adapter", 9)), 9u);
}

TEST(CutToDisplayWidth, NeverSplitsACharacter) {
    EXPECT_EQ(cutToDisplayWidth("Müller Straße", 3), "Mü…");
    // A wide character that would pass the width is left out whole.
    EXPECT_EQ(cutToDisplayWidth("東京タワー", 4), "東…");
    // A combining mark stays with the character it marks.
    EXPECT_EQ(cutToDisplayWidth("ae\xCC\x81xy", 3), "ae\xCC\x81…");
}

TEST(CutToDisplayWidth, ZeroAndOneColumns) {
    EXPECT_EQ(cutToDisplayWidth("abc", 0), "");
    EXPECT_EQ(cutToDisplayWidth("abc", 1), "…");
    EXPECT_EQ(cutToDisplayWidth("", 0), "");
}

}  // namespace
}  // namespace tov
