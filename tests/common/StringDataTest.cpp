#include "common/StringData.h"

#include <gtest/gtest.h>

#include <string>

namespace tov {
namespace {

std::string_view bytes(const char* text, std::size_t length) {
    return std::string_view(text, length);
}

TEST(StringData, TextEndsAtTheFirstZeroByte) {
    EXPECT_FALSE(isValidStringData(bytes("\x00\x41", 2)));
    EXPECT_TRUE(isValidStringData(bytes("\x41\x00\xFF", 3)));
}

TEST(StringData, NoBytesAreNotText) {
    EXPECT_FALSE(isValidStringData(""));
    EXPECT_FALSE(isValidStringData(bytes("\x00", 1)));
}

TEST(StringData, InvalidUtf8IsNotText) {
    EXPECT_FALSE(isValidStringData("\xFF"));
    EXPECT_FALSE(isValidStringData("abc\xC3"));           // sequence cut short
    EXPECT_FALSE(isValidStringData("\xC0\xAF"));          // overlong form
    EXPECT_FALSE(isValidStringData("\xED\xA0\x80"));      // surrogate
    EXPECT_FALSE(isValidStringData("\xF4\x90\x80\x80"));  // beyond U+10FFFF
    EXPECT_FALSE(isValidStringData("ok\x80ok"));          // stray continuation byte
}

TEST(StringData, ValidUtf8IsText) {
    EXPECT_TRUE(isValidStringData("\xC3\xA9"));  // é
    EXPECT_TRUE(isValidStringData("A"));
    EXPECT_TRUE(isValidStringData("{\"key\": \"\xE2\x82\xAC \xF0\x9F\x98\x80\"}"));
}

TEST(StringData, LargeTextIsChecked) {
    std::string text(1 << 20, 'a');
    EXPECT_TRUE(isValidStringData(text));
    text.back() = '\xFE';
    EXPECT_FALSE(isValidStringData(text));
}

}  // namespace
}  // namespace tov
