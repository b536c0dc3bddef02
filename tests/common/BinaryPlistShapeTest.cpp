#include "common/BinaryPlistShape.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <string>
#include <vector>

#include "support/HandBuiltArchive.h"

namespace tov {
namespace {

using testing::RawBinaryPlist;

constexpr BinaryPlistShape kGenerous{1000000, 100000000, 100000};
constexpr unsigned kArray = 0xA;
constexpr unsigned kDictionary = 0xD;

const std::string kOne = std::string("\x10\x01", 2);
const std::string kAbcd = "\x54" "abcd";

// Object i is an array holding object i + 1 twice; the last object is a string.
RawBinaryPlist doublingChain(unsigned levels) {
    RawBinaryPlist plist;
    for (unsigned i = 0; i < levels; ++i) plist.objects.push_back(plist.container(kArray, {i + 1, i + 1}));
    plist.objects.push_back(kAbcd);
    return plist;
}

// Object i is an array holding object i + 1; the last object is an integer.
RawBinaryPlist nestedChain(unsigned arrays) {
    RawBinaryPlist plist;
    plist.offsetWidth = 4;
    plist.referenceWidth = 4;
    for (unsigned i = 0; i < arrays; ++i) plist.objects.push_back(plist.container(kArray, {i + 1}));
    plist.objects.push_back(kOne);
    return plist;
}

RawBinaryPlist sharedString() {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kArray, {1, 1, 1}), kAbcd};
    return plist;
}

TEST(BinaryPlistShape, MeasuresEveryNodeOfWhatLibplistWrites) {
    plist_t dictionary = plist_new_dict();
    plist_dict_set_item(dictionary, "k", plist_new_string("v"));
    plist_t array = plist_new_array();
    plist_array_append_item(array, plist_new_uint(1));
    plist_array_append_item(array, plist_new_string("ab"));
    plist_array_append_item(array, dictionary);
    const std::string bytes = testing::binaryPlist(array);
    plist_free(array);

    const std::optional<BinaryPlistShape> shape = measureBinaryPlist(bytes, kGenerous);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->nodes, 6u);  // the array, 1, "ab", the dictionary, its key and value
    EXPECT_EQ(shape->payloadBytes, 4u);
    EXPECT_EQ(shape->depth, 3u);
}

TEST(BinaryPlistShape, SharedObjectCountsAtEveryReference) {
    const std::optional<BinaryPlistShape> shape = measureBinaryPlist(sharedString().bytes(), kGenerous);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->nodes, 4u);
    EXPECT_EQ(shape->payloadBytes, 12u);
    EXPECT_EQ(shape->depth, 2u);
}

TEST(BinaryPlistShape, DictionaryCountsItsKeysAndValues) {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kDictionary, {1, 2}), "\x51k", kOne};
    const std::optional<BinaryPlistShape> shape = measureBinaryPlist(plist.bytes(), kGenerous);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->nodes, 3u);
    EXPECT_EQ(shape->payloadBytes, 1u);
    EXPECT_EQ(shape->depth, 2u);
}

TEST(BinaryPlistShape, TwoByteStringCountsFourBytesACharacter) {
    RawBinaryPlist plist;
    plist.objects = {std::string("\x62\x00\x61\x00\x62", 5)};
    const std::optional<BinaryPlistShape> shape = measureBinaryPlist(plist.bytes(), kGenerous);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->payloadBytes, 8u);
}

TEST(BinaryPlistShape, ATwoByteStringHoldingTheZeroCharacterIsRefused) {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kDictionary, {1, 2}), std::string("\x62\x00\x61\x00\x00", 5), kOne};
    EXPECT_FALSE(measureBinaryPlist(plist.bytes(), kGenerous));
    // U+0100 and U+0061 hold zero bytes but no zero character.
    plist.objects[1] = std::string("\x62\x01\x00\x00\x61", 5);
    EXPECT_TRUE(measureBinaryPlist(plist.bytes(), kGenerous));
}

TEST(BinaryPlistShape, OffsetsAndReferencesOfThreeBytesAreRead) {
    RawBinaryPlist plist = sharedString();
    plist.offsetWidth = 3;
    plist.referenceWidth = 3;
    plist.objects[0] = plist.container(kArray, {1, 1, 1});
    const std::optional<BinaryPlistShape> shape = measureBinaryPlist(plist.bytes(), kGenerous);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->nodes, 4u);
}

TEST(BinaryPlistShape, LongLengthAfterTheMarkerIsRead) {
    RawBinaryPlist plist;
    plist.objects = {plist.container(kArray, std::vector<std::uint64_t>(20, 1)), kOne};
    const std::optional<BinaryPlistShape> shape = measureBinaryPlist(plist.bytes(), kGenerous);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->nodes, 21u);
}

TEST(BinaryPlistShape, SharingThatDoublesAtEachLevelIsMeasuredUpToTheLimit) {
    const std::optional<BinaryPlistShape> small = measureBinaryPlist(doublingChain(10).bytes(), kGenerous);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->nodes, 2047u);
    EXPECT_EQ(small->payloadBytes, 1024u * 4);
    EXPECT_EQ(small->depth, 11u);
    // Sixty levels unfold into 2^61 nodes from a few hundred bytes.
    EXPECT_FALSE(measureBinaryPlist(doublingChain(60).bytes(), {65536, 1 << 22, 64}));
}

TEST(BinaryPlistShape, EachLimitIsEnforced) {
    const std::string bytes = sharedString().bytes();
    EXPECT_TRUE(measureBinaryPlist(bytes, {4, 12, 2}));
    EXPECT_FALSE(measureBinaryPlist(bytes, {3, 12, 2}));
    EXPECT_FALSE(measureBinaryPlist(bytes, {4, 11, 2}));
    EXPECT_FALSE(measureBinaryPlist(bytes, {4, 12, 1}));
}

TEST(BinaryPlistShape, NestingDeeperThanTheLimitIsRefused) {
    EXPECT_TRUE(measureBinaryPlist(nestedChain(63).bytes(), {1000, 1000, 64}));
    EXPECT_FALSE(measureBinaryPlist(nestedChain(64).bytes(), {1000, 1000, 64}));
}

TEST(BinaryPlistShape, VeryDeepNestingIsRefusedWithoutRecursion) {
    EXPECT_FALSE(measureBinaryPlist(nestedChain(200000).bytes(), {1000000, 1000, 64}));
}

TEST(BinaryPlistShape, ObjectInsideItselfIsRefused) {
    RawBinaryPlist itself;
    itself.objects = {itself.container(kArray, {0})};
    EXPECT_FALSE(measureBinaryPlist(itself.bytes(), kGenerous));

    RawBinaryPlist eachOther;
    eachOther.objects = {eachOther.container(kArray, {1}), eachOther.container(kArray, {0})};
    EXPECT_FALSE(measureBinaryPlist(eachOther.bytes(), kGenerous));
}

// A valid list with one byte of the table or trailer replaced.
std::string withByte(std::string bytes, std::size_t fromEnd, char value) {
    bytes[bytes.size() - fromEnd] = value;
    return bytes;
}

TEST(BinaryPlistShape, MalformedTablesAreRefused) {
    const std::string valid = sharedString().bytes();  // two objects, two-byte offsets
    ASSERT_TRUE(measureBinaryPlist(valid, kGenerous));
    EXPECT_FALSE(measureBinaryPlist("", kGenerous));
    EXPECT_FALSE(measureBinaryPlist("bplist00", kGenerous));
    EXPECT_FALSE(measureBinaryPlist("bplist01" + valid.substr(8), kGenerous));
    EXPECT_FALSE(measureBinaryPlist(valid.substr(1), kGenerous));
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 26, 9), kGenerous));         // offset width 9
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 25, 0), kGenerous));         // reference width 0
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 17, 0), kGenerous));         // no objects
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 9, 2), kGenerous));          // top object 2 of 2
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 1, 5), kGenerous));          // table inside the header
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 1, '\x7f'), kGenerous));     // table past the trailer
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 33, 0), kGenerous));         // an object at offset 0
    EXPECT_FALSE(measureBinaryPlist(withByte(valid, 33, '\x30'), kGenerous));    // an object past the table
}

TEST(BinaryPlistShape, MalformedObjectsAreRefused) {
    RawBinaryPlist outOfRange;
    outOfRange.objects = {outOfRange.container(kArray, {1, 2}), kOne};
    EXPECT_FALSE(measureBinaryPlist(outOfRange.bytes(), kGenerous));

    RawBinaryPlist tooLong;
    tooLong.objects = {std::string("\xA5\x00\x01", 3), kOne};  // five references, one present
    EXPECT_FALSE(measureBinaryPlist(tooLong.bytes(), kGenerous));

    RawBinaryPlist badLength;
    badLength.objects = {"\xAF\x51" "a"};  // a length that is not an integer
    EXPECT_FALSE(measureBinaryPlist(badLength.bytes(), kGenerous));

    RawBinaryPlist wideLength;
    wideLength.objects = {std::string("\x5F\x14", 2) + std::string(16, '\0')};  // a 16-byte length
    EXPECT_FALSE(measureBinaryPlist(wideLength.bytes(), kGenerous));

    RawBinaryPlist stringPastTheTable;
    stringPastTheTable.objects = {"\x5E" "abc"};
    EXPECT_FALSE(measureBinaryPlist(stringPastTheTable.bytes(), kGenerous));
}

}  // namespace
}  // namespace tov
