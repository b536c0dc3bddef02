#include "common/PropertyList.h"

#include <gtest/gtest.h>

#include <string>

#include "support/HandBuiltArchive.h"

namespace tov {
namespace {

std::string xmlList(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           body + "\n</plist>\n";
}

TEST(PropertyList, XmlDictionaryKeepsKeyOrderAndKinds) {
    const std::optional<Value> tree = parsePropertyList(xmlList(
        "<dict><key>b</key><string>text</string><key>a</key><integer>-3</integer>"
        "<key>c</key><true/><key>d</key><real>1.5</real><key>e</key><data>ABy zCYUV</data>"
        "<key>f</key><date>2020-01-02T03:04:05Z</date><key>g</key><array><integer>7</integer></array></dict>"));
    ASSERT_TRUE(tree && tree->isDictionary());
    const DictionaryRef top = tree->dictionary();
    ASSERT_EQ(top->size(), 7U);
    EXPECT_EQ(top->entries()[0].first, "b");
    EXPECT_EQ(top->get("b"), Value("text"));
    EXPECT_EQ(top->get("a").toInt64(), -3);
    EXPECT_EQ(top->get("c"), Value(true));
    EXPECT_DOUBLE_EQ(top->get("d").toDouble(), 1.5);
    const ArrayRef data = top->get("e").array();
    ASSERT_TRUE(data);
    ASSERT_EQ(data->size(), 6U);
    EXPECT_EQ((*data)[0].toUInt64(), 0x00U);
    EXPECT_EQ((*data)[1].toUInt64(), 0x1cU);
    EXPECT_EQ((*data)[5].toUInt64(), 0x15U);
    EXPECT_EQ(top->get("f"), Value("2020-01-02T03:04:05Z"));
    EXPECT_EQ(top->get("g").array()->at(0).toInt64(), 7);
}

TEST(PropertyList, ATextHoldingAZeroByteEndsAtIt) {
    const char xml[] = "<plist version=\"1.0\"><dict><key>k</key><string>2\0\0" "3H420</string></dict></plist>";
    const std::optional<Value> fromXml = parsePropertyList(std::string(xml, sizeof xml - 1));
    ASSERT_TRUE(fromXml && fromXml->isDictionary());
    EXPECT_EQ(fromXml->dictionary()->get("k"), Value("2"));
    // bplist00, the ASCII string "a\0b" at offset 8, a one-entry offset table at 12 and
    // the trailer: offsets and references of one byte, one object, top object 0.
    const char binary[] = "bplist00" "\x53" "a\0b" "\x08"
                          "\0\0\0\0\0\0" "\x01\x01" "\0\0\0\0\0\0\0\x01" "\0\0\0\0\0\0\0\0" "\0\0\0\0\0\0\0\x0c";
    const std::optional<Value> fromBinary = parsePropertyList(std::string(binary, sizeof binary - 1));
    ASSERT_TRUE(fromBinary);
    EXPECT_EQ(*fromBinary, Value("a"));
}

TEST(PropertyList, ABinaryKeyHoldingTheZeroCharacterIsRefused) {
    testing::RawBinaryPlist plist;
    plist.objects = {plist.container(0xD, {1, 2}), std::string("\x62\x00\x61\x00\x00", 5), "\x51v"};
    EXPECT_EQ(parsePropertyList(plist.bytes()), std::nullopt);
    plist.objects[1] = std::string("\x62\x00\x61\x00\x62", 5);
    const std::optional<Value> tree = parsePropertyList(plist.bytes());
    ASSERT_TRUE(tree && tree->isDictionary());
    EXPECT_EQ(tree->dictionary()->get("ab"), Value("v"));
}

TEST(PropertyList, EmptyTruncatedOrDeepListsAreRefused) {
    EXPECT_FALSE(parsePropertyList(""));
    EXPECT_FALSE(parsePropertyList(xmlList("<dict><key>a</key><string>x")));
    std::string deep;
    for (int level = 0; level < 5000; ++level) deep += "<array>";
    for (int level = 0; level < 5000; ++level) deep += "</array>";
    EXPECT_FALSE(parsePropertyList(xmlList(deep)));
}

}  // namespace
}  // namespace tov
