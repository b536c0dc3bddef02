#include "common/PropertyList.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "support/HandBuiltArchive.h"

namespace tov {
namespace {

using testing::RawBinaryPlist;

constexpr unsigned kArrayKind = 0xA;
constexpr std::uint64_t kDefaultDepth = PropertyListLimits{}.depth;

std::string xmlList(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           body + "\n</plist>\n";
}

// The binary list of node, which is freed.
std::string binaryOf(plist_t node) {
    std::string bytes = testing::binaryPlist(node);
    plist_free(node);
    return bytes;
}

// Containers on the deepest path of the tree, the top one included.
std::uint64_t containerDepth(const Value& value) {
    std::uint64_t deepest = 0;
    if (const ArrayRef array = value.array()) {
        for (const Value& element : *array) deepest = std::max(deepest, containerDepth(element));
        return deepest + 1;
    }
    if (const DictionaryRef dictionary = value.dictionary()) {
        for (const auto& [key, element] : *dictionary) deepest = std::max(deepest, containerDepth(element));
        return deepest + 1;
    }
    return 0;
}

// levels arrays, each holding the next; the innermost holds inner.
std::string nestedXml(std::uint64_t levels, const std::string& inner) {
    std::string body;
    for (std::uint64_t level = 0; level < levels; ++level) body += "<array>";
    body += inner;
    for (std::uint64_t level = 0; level < levels; ++level) body += "</array>";
    return xmlList(body);
}

std::string nestedBinary(std::uint64_t levels) {
    plist_t top = plist_new_array();
    plist_t innermost = top;
    for (std::uint64_t level = 1; level < levels; ++level) {
        plist_t next = plist_new_array();
        plist_array_append_item(innermost, next);
        innermost = next;
    }
    return binaryOf(top);
}

// Object i is an array holding object i + 1 twice; the last object is a short string.
std::string doublingBinary(unsigned levels) {
    RawBinaryPlist plist;
    for (unsigned level = 0; level < levels; ++level) {
        plist.objects.push_back(plist.container(kArrayKind, {level + 1, level + 1}));
    }
    plist.objects.push_back("\x54" "abcd");
    return plist.bytes();
}

plist_t sampleTree() {
    plist_t top = plist_new_dict();
    plist_dict_set_item(top, "name", plist_new_string("Intel Iris"));
    plist_dict_set_item(top, "count", plist_new_uint(static_cast<std::uint64_t>(-42)));
    plist_dict_set_item(top, "ratio", plist_new_real(0.25));
    plist_dict_set_item(top, "builtin", plist_new_bool(1));
    plist_dict_set_item(top, "bytes", plist_new_data("\x00\x10\xff", 3));
    plist_dict_set_item(top, "when", plist_new_date(0, 0));
    plist_t list = plist_new_array();
    plist_array_append_item(list, plist_new_uint(7));
    plist_array_append_item(list, plist_new_dict());
    plist_dict_set_item(top, "list", list);
    return top;
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

// --- binary lists ---

TEST(PropertyList, ABinaryListGivesTheSameTreeAsItsXml) {
    plist_t tree = sampleTree();
    const std::string xml = testing::xmlPlist(tree);
    const std::string binary = binaryOf(tree);
    ASSERT_EQ(binary.substr(0, 8), "bplist00");
    const std::optional<Value> fromXml = parsePropertyList(xml);
    const std::optional<Value> fromBinary = parsePropertyList(binary);
    ASSERT_TRUE(fromXml && fromBinary);
    EXPECT_EQ(*fromXml, *fromBinary);
    const DictionaryRef top = fromBinary->dictionary();
    ASSERT_TRUE(top);
    EXPECT_EQ(top->get("name"), Value("Intel Iris"));
    EXPECT_EQ(top->get("count").toInt64(), -42);
    EXPECT_DOUBLE_EQ(top->get("ratio").toDouble(), 0.25);
    EXPECT_EQ(top->get("builtin"), Value(true));
    EXPECT_EQ(top->get("bytes"), Value(makeArray({0, 0x10, 0xff})));
    EXPECT_EQ(top->get("when"), Value("2001-01-01T00:00:00Z"));
    EXPECT_EQ(top->get("list"), Value(makeArray({7, Value(makeDictionary())})));
}

TEST(PropertyList, ABinaryListKeepsDictionaryKeyOrder) {
    plist_t top = plist_new_dict();
    plist_dict_set_item(top, "zeta", plist_new_uint(1));
    plist_dict_set_item(top, "alpha", plist_new_uint(2));
    plist_dict_set_item(top, "mid", plist_new_uint(3));
    const std::optional<Value> tree = parsePropertyList(binaryOf(top));
    ASSERT_TRUE(tree && tree->isDictionary());
    const auto& entries = tree->dictionary()->entries();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].first, "zeta");
    EXPECT_EQ(entries[1].first, "alpha");
    EXPECT_EQ(entries[2].first, "mid");
}

TEST(PropertyList, BinaryStringsEndAtAZeroByte) {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kArrayKind, {1, 2}), std::string("\x53" "a\0b", 4),
                     std::string("\x62\x00x\x00\x00", 5)};
    const std::optional<Value> tree = parsePropertyList(plist.bytes());
    ASSERT_TRUE(tree);
    EXPECT_EQ(*tree, Value(makeArray({"a", "x"})));
}

TEST(PropertyList, BinaryDictionaryKeysWithAZeroCharacterAreRefused) {
    RawBinaryPlist byteKey;
    byteKey.objects = {byteKey.container(0xD, {1, 2}), std::string("\x55\x80>+\0P", 6), "\x51x"};
    EXPECT_FALSE(parsePropertyList(byteKey.bytes()));
    RawBinaryPlist wideKey;
    wideKey.objects = {wideKey.container(0xD, {1, 2}), std::string("\x62\x00k\x00\x00", 5), "\x51x"};
    EXPECT_FALSE(parsePropertyList(wideKey.bytes()));
    // The same string as a value is read up to its zero.
    RawBinaryPlist asValue;
    asValue.objects = {asValue.container(0xD, {2, 1}), std::string("\x55\x80>+\0P", 6), "\x51k"};
    const std::optional<Value> tree = parsePropertyList(asValue.bytes());
    ASSERT_TRUE(tree && tree->isDictionary());
    EXPECT_TRUE(tree->dictionary()->get("k").isString());
}

// --- root types ---

TEST(PropertyList, AnyRootTypeIsGivenAsItIsForTheCallerToCheck) {
    EXPECT_EQ(parsePropertyList(xmlList("<string>lone</string>")), Value("lone"));
    EXPECT_EQ(parsePropertyList(xmlList("<integer>5</integer>")), Value(5));
    EXPECT_EQ(parsePropertyList(xmlList("<false/>")), Value(false));
    EXPECT_EQ(parsePropertyList(binaryOf(plist_new_string("lone"))), Value("lone"));
    EXPECT_EQ(parsePropertyList(binaryOf(plist_new_uint(9))), Value(9));
    const std::optional<Value> dictionary = parsePropertyList(xmlList("<dict/>"));
    ASSERT_TRUE(dictionary);
    EXPECT_TRUE(dictionary->isDictionary());
    const std::optional<Value> array = parsePropertyList(binaryOf(plist_new_array()));
    ASSERT_TRUE(array);
    EXPECT_TRUE(array->isArray());
}

TEST(PropertyList, DocumentsThatAreNoPropertyListAreRefused) {
    EXPECT_FALSE(parsePropertyList("<html><body><p>hello</p></body></html>"));
    EXPECT_FALSE(parsePropertyList(xmlList("<table/>")));
    EXPECT_FALSE(parsePropertyList("{\"json\": true}"));
    EXPECT_FALSE(parsePropertyList("plain text from a tool that failed\n"));
    EXPECT_FALSE(parsePropertyList(std::string("\x00\x00\x00\x00", 4)));
}

// --- truncation ---

TEST(PropertyList, TruncatedXmlIsRefused) {
    const std::string whole = xmlList("<dict><key>items</key><array><string>one</string><integer>2</integer></array></dict>");
    ASSERT_TRUE(parsePropertyList(whole));
    const std::size_t bodyEnd = whole.rfind("</dict>");
    for (std::size_t length = 1; length < bodyEnd; ++length) {
        EXPECT_FALSE(parsePropertyList(whole.substr(0, length))) << length;
    }
}

TEST(PropertyList, TruncatedBinaryIsRefused) {
    const std::string whole = binaryOf(sampleTree());
    ASSERT_TRUE(parsePropertyList(whole));
    for (std::size_t length = 1; length < whole.size(); ++length) {
        EXPECT_FALSE(parsePropertyList(whole.substr(0, length))) << length;
    }
}

TEST(PropertyList, BinaryWithItsTrailerDamagedIsRefused) {
    std::string damaged = binaryOf(sampleTree());
    damaged[damaged.size() - 9] = '\x7f';  // the top object far past the object count
    EXPECT_FALSE(parsePropertyList(damaged));
}

// --- nesting ---

TEST(PropertyList, XmlNestedToTheDepthLimitIsReadAndOneDeeperIsRefused) {
    const std::optional<Value> atLimit = parsePropertyList(nestedXml(kDefaultDepth, "<integer>1</integer>"));
    ASSERT_TRUE(atLimit);
    EXPECT_EQ(containerDepth(*atLimit), kDefaultDepth);
    EXPECT_FALSE(parsePropertyList(nestedXml(kDefaultDepth + 1, "<integer>1</integer>")));
}

TEST(PropertyList, AnEmptyContainerAtTheBottomCountsAsALevel) {
    const std::optional<Value> atLimit = parsePropertyList(nestedXml(kDefaultDepth - 1, "<array/>"));
    ASSERT_TRUE(atLimit);
    EXPECT_EQ(containerDepth(*atLimit), kDefaultDepth);
    EXPECT_FALSE(parsePropertyList(nestedXml(kDefaultDepth, "<array/>")));
    EXPECT_FALSE(parsePropertyList(nestedXml(kDefaultDepth, "<dict />")));
}

TEST(PropertyList, BinaryNestedToTheDepthLimitIsReadAndOneDeeperIsRefused) {
    const std::optional<Value> atLimit = parsePropertyList(nestedBinary(kDefaultDepth));
    ASSERT_TRUE(atLimit);
    EXPECT_EQ(containerDepth(*atLimit), kDefaultDepth);
    EXPECT_FALSE(parsePropertyList(nestedBinary(kDefaultDepth + 1)));
}

TEST(PropertyList, ASmallerDepthLimitIsHonouredInBothForms) {
    PropertyListLimits limits;
    limits.depth = 8;
    EXPECT_TRUE(parsePropertyList(nestedXml(8, ""), limits));
    EXPECT_FALSE(parsePropertyList(nestedXml(9, ""), limits));
    EXPECT_TRUE(parsePropertyList(nestedBinary(8), limits));
    EXPECT_FALSE(parsePropertyList(nestedBinary(9), limits));
}

TEST(PropertyList, VeryDeepNestingIsRefusedInBothForms) {
    EXPECT_FALSE(parsePropertyList(nestedXml(100000, "")));
    RawBinaryPlist chain;
    chain.offsetWidth = 4;
    chain.referenceWidth = 4;
    for (unsigned level = 0; level < 100000; ++level) chain.objects.push_back(chain.container(kArrayKind, {level + 1}));
    chain.objects.push_back(std::string("\x10\x01", 2));
    EXPECT_FALSE(parsePropertyList(chain.bytes()));
}

TEST(PropertyList, ClosingTagsInsideCommentsDoNotHideNesting) {
    // The parser skips comments, so these tags open and close nothing: the arrays nest
    // 250 deep although the tags, comments included, never stand more than two open.
    std::string body;
    for (std::uint64_t level = 0; level < kDefaultDepth + 50; ++level) body += "<array><!-- </array> -->";
    for (std::uint64_t level = 0; level < kDefaultDepth + 50; ++level) body += "<!-- <array> --></array>";
    EXPECT_FALSE(parsePropertyList(xmlList(body)));
}

TEST(PropertyList, ClosingTagsInsideCdataOrTheDoctypeDoNotHideNesting) {
    std::string body;
    for (std::uint64_t level = 0; level < kDefaultDepth + 50; ++level) {
        body += "<array><string><![CDATA[</array>]]></string>";
    }
    for (std::uint64_t level = 0; level < kDefaultDepth + 50; ++level) {
        body += "<string><![CDATA[<array>]]></string></array>";
    }
    EXPECT_FALSE(parsePropertyList(xmlList(body)));

    const std::string doctype = "<?xml version=\"1.0\"?>\n<!DOCTYPE plist [ <!ENTITY e \"</array></array>\"> ]>\n"
                                "<plist><array><array/></array></plist>";
    const std::optional<Value> tree = parsePropertyList(doctype);
    ASSERT_TRUE(tree);
    EXPECT_EQ(containerDepth(*tree), 2U);
}

TEST(PropertyList, ClosingTagsInsideQuotesDoNotHideNesting) {
    std::string body;
    for (std::uint64_t level = 0; level < kDefaultDepth + 50; ++level) body += "<array hidden=\"</array>\">";
    for (std::uint64_t level = 0; level < kDefaultDepth + 50; ++level) body += "<?pi \"<array>\" ?></array>";
    EXPECT_FALSE(parsePropertyList(xmlList(body)));
}

TEST(PropertyList, NestingHiddenFromTheShapeCannotReachTheStack) {
    std::string body;
    for (int level = 0; level < 100000; ++level) body += "<array><!--</array>-->";
    for (int level = 0; level < 100000; ++level) body += "<!--<array>--></array>";
    EXPECT_FALSE(parsePropertyList(xmlList(body)));
}

TEST(PropertyList, CommentsProcessingInstructionsAndCdataAreReadAsTheParserReadsThem) {
    const std::optional<Value> tree = parsePropertyList(xmlList(
        "<!-- a comment with <array> inside --><array><?pi <dict> ?><string><![CDATA[<b>bold</b>]]></string>"
        "<!-- </array> --><integer>4</integer></array>"));
    ASSERT_TRUE(tree);
    EXPECT_EQ(*tree, Value(makeArray({"<b>bold</b>", 4})));
}

TEST(PropertyList, UnterminatedSpecialSectionsAreRefused) {
    EXPECT_FALSE(parsePropertyList(xmlList("<array><!-- never closed </array>")));
    EXPECT_FALSE(parsePropertyList(xmlList("<array><string><![CDATA[never closed</string></array>")));
    EXPECT_FALSE(parsePropertyList("<?xml version=\"1.0\" <plist><array/></plist>"));
}

// --- sizes ---

TEST(PropertyList, TheNodeLimitIsHonouredInBothForms) {
    PropertyListLimits limits;
    limits.nodes = 3;
    EXPECT_TRUE(parsePropertyList(xmlList("<array><integer>1</integer><integer>2</integer></array>"), limits));
    EXPECT_FALSE(parsePropertyList(xmlList("<array><integer>1</integer><integer>2</integer><integer>3</integer></array>"),
                                   limits));
    plist_t three = plist_new_array();
    plist_array_append_item(three, plist_new_uint(1));
    plist_array_append_item(three, plist_new_uint(2));
    plist_array_append_item(three, plist_new_uint(3));
    EXPECT_FALSE(parsePropertyList(binaryOf(three), limits));
}

TEST(PropertyList, TheByteLimitIsHonoured) {
    const std::string list = xmlList("<string>a</string>");
    PropertyListLimits limits;
    limits.bytes = list.size();
    EXPECT_TRUE(parsePropertyList(list, limits));
    limits.bytes = list.size() - 1;
    EXPECT_FALSE(parsePropertyList(list, limits));
}

TEST(PropertyList, DataObjectsTogetherStayWithinTheirBudget) {
    // Two data objects of 6 bytes each.
    const std::string list = xmlList("<array><data>AAECAwQF</data><data>BgcICQoL</data></array>");
    PropertyListLimits limits;
    limits.dataBytes = 12;
    const std::optional<Value> tree = parsePropertyList(list, limits);
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->array()->at(1), Value(makeArray({6, 7, 8, 9, 10, 11})));
    limits.dataBytes = 11;
    EXPECT_FALSE(parsePropertyList(list, limits));
    limits.dataBytes = 0;
    EXPECT_TRUE(parsePropertyList(xmlList("<data></data>"), limits));
}

TEST(PropertyList, BinaryDataObjectsStayWithinTheirBudget) {
    plist_t top = plist_new_dict();
    plist_dict_set_item(top, "edid", plist_new_data("0123456789", 10));
    const std::string bytes = binaryOf(top);
    PropertyListLimits limits;
    limits.dataBytes = 10;
    EXPECT_TRUE(parsePropertyList(bytes, limits));
    limits.dataBytes = 9;
    EXPECT_FALSE(parsePropertyList(bytes, limits));
}

TEST(PropertyList, ASharedDataObjectCountsAtEveryReference) {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kArrayKind, {1, 1, 1}), "\x44" "abcd"};
    PropertyListLimits limits;
    limits.dataBytes = 12;
    const std::optional<Value> tree = parsePropertyList(plist.bytes(), limits);
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->array()->size(), 3U);
    limits.dataBytes = 11;
    EXPECT_FALSE(parsePropertyList(plist.bytes(), limits));
}

// --- integers ---

TEST(PropertyList, NegativeIntegersAreSigned) {
    const std::optional<Value> tree = parsePropertyList(
        xmlList("<array><integer>-1</integer><integer>-9223372036854775808</integer><integer>0</integer></array>"));
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->array()->at(0).toInt64(), -1);
    EXPECT_EQ(tree->array()->at(1).toInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(tree->array()->at(2), Value(0));
    EXPECT_EQ(parsePropertyList(binaryOf(plist_new_uint(static_cast<std::uint64_t>(-7)))), Value(-7));
}

TEST(PropertyList, IntegersAboveTheSignedRangeKeepTheirBitsForTheUnsignedView) {
    // The reader cannot tell these from negative numbers; the unsigned view gives them back.
    const std::optional<Value> tree = parsePropertyList(xmlList("<integer>18446744073709551615</integer>"));
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->toUInt64(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(parsePropertyList(xmlList("<integer>9223372036854775807</integer>"))->toInt64(),
              std::numeric_limits<std::int64_t>::max());
}

// --- shared binary objects ---

TEST(PropertyList, SharedObjectsCountAtEveryReference) {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kArrayKind, {1, 1, 1}), "\x54" "abcd"};
    PropertyListLimits limits;
    limits.nodes = 4;
    const std::optional<Value> tree = parsePropertyList(plist.bytes(), limits);
    ASSERT_TRUE(tree);
    EXPECT_EQ(*tree, Value(makeArray({"abcd", "abcd", "abcd"})));
    limits.nodes = 3;
    EXPECT_FALSE(parsePropertyList(plist.bytes(), limits));
}

TEST(PropertyList, ObjectsSharedManyTimesAreRefusedBeforeTheyAreUnfolded) {
    // Twenty levels unfold into two million nodes, beyond the default limit of a million.
    EXPECT_FALSE(parsePropertyList(doublingBinary(20)));
    // Sixty levels would be 2^61 nodes from a few hundred bytes: unfolding them could never
    // finish, so only the shape check can have refused them.
    EXPECT_FALSE(parsePropertyList(doublingBinary(60)));
    // Within the limit the same sharing is unfolded.
    const std::optional<Value> small = parsePropertyList(doublingBinary(4));
    ASSERT_TRUE(small);
    EXPECT_EQ(containerDepth(*small), 4U);
}

TEST(PropertyList, AnObjectInsideItselfIsRefused) {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kArrayKind, {0})};
    EXPECT_FALSE(parsePropertyList(plist.bytes()));
}

}  // namespace
}  // namespace tov
