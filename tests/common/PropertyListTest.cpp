#include "common/PropertyList.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(PropertyList, EmptyTruncatedOrDeepListsAreRefused) {
    EXPECT_FALSE(parsePropertyList(""));
    EXPECT_FALSE(parsePropertyList(xmlList("<dict><key>a</key><string>x")));
    std::string deep;
    for (int level = 0; level < 5000; ++level) deep += "<array>";
    for (int level = 0; level < 5000; ++level) deep += "</array>";
    EXPECT_FALSE(parsePropertyList(xmlList(deep)));
}

TEST(PropertyList, AnXmlStringHoldingANulCharacterIsReadUpToIt) {
    const std::optional<Value> tree =
        parsePropertyList(xmlList(std::string("<array><string>a\0b</string></array>", 36)));
    ASSERT_TRUE(tree && tree->isArray());
    EXPECT_EQ(tree->array()->at(0), Value("a"));
}

TEST(PropertyList, ABinaryListWithAStringHoldingANulCharacterIsRefused) {
    // A dictionary { "a\0b" (UTF-16): 1 }, the offsets of its three objects, and the
    // trailer: offsets and references one byte wide, three objects, the top object 0,
    // the offset table at byte 20.
    std::string bytes = std::string("bplist00") + std::string("\xd1\x01\x02", 3) +
                        std::string("\x63\0a\0\0\0b", 7) + std::string("\x10\x01", 2) + "\x08\x0b\x12";
    bytes += std::string(6, '\0') + "\x01\x01";
    for (const char last : {'\x03', '\x00', '\x14'}) bytes += std::string(7, '\0') + last;
    EXPECT_FALSE(parsePropertyList(bytes));
    bytes[15] = 'c';  // the same list with the key "acb" is read
    const std::optional<Value> tree = parsePropertyList(bytes);
    ASSERT_TRUE(tree && tree->isDictionary());
    EXPECT_EQ(tree->dictionary()->get("acb").toInt64(), 1);
}

}  // namespace
}  // namespace tov
