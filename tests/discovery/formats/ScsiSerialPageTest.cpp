#include "discovery/formats/ScsiSerialPage.h"

#include <gtest/gtest.h>

#include <string>

namespace tov {
namespace {

std::string page(unsigned char code, unsigned lengthHigh, unsigned lengthLow, const std::string& body) {
    std::string bytes{'\0', static_cast<char>(code), static_cast<char>(lengthHigh), static_cast<char>(lengthLow)};
    return bytes + body;
}

TEST(ScsiSerialPage, GivesTheSerialBytesTheHeaderCounts) {
    const auto parsed = parseScsiSerialPage(page(0x80, 0, 12, "  WD-WX12AB3"));
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->serial, "  WD-WX12AB3");
}

TEST(ScsiSerialPage, BytesAfterTheCountedLengthAreNotPartOfTheSerial) {
    EXPECT_EQ(parseScsiSerialPage(page(0x80, 0, 4, "ABCDEFGH"))->serial, "ABCD");
}

TEST(ScsiSerialPage, TheLengthIsSixteenBitsBigEndian) {
    const std::string body(0x104, 'S');
    EXPECT_EQ(parseScsiSerialPage(page(0x80, 1, 4, body))->serial.size(), 0x104u);
}

TEST(ScsiSerialPage, ShortPagesLyingLengthsAndOtherPagesAreNone) {
    EXPECT_FALSE(parseScsiSerialPage(""));
    EXPECT_FALSE(parseScsiSerialPage(std::string("\0\x80\0", 3)));
    EXPECT_FALSE(parseScsiSerialPage(page(0x80, 0, 20, "S3Z9NB0K")));
    EXPECT_FALSE(parseScsiSerialPage(page(0x80, 0xff, 0xff, "S3Z9NB0K")));
    EXPECT_FALSE(parseScsiSerialPage(page(0x83, 0, 8, "S3Z9NB0K")));
    EXPECT_EQ(parseScsiSerialPage(page(0x80, 0, 0, ""))->serial, "");
}

}  // namespace
}  // namespace tov
