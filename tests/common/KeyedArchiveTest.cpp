#include "common/KeyedArchive.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <random>
#include <string>

#include "support/HandBuiltArchive.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::HandBuiltArchive;
using testing::newClassDescription;
using testing::newDictionaryObject;
using testing::newStringObject;
using testing::newUid;

Dictionary allFiveSettings() {
    Dictionary settings;
    settings.set("previous-policy-hash", Value("0cc175b9c0f1b6a831c399e269772661"));
    settings.set("previous-report-hash", Value("92eb5ffee6ae2fec3ad71c777531578f"));
    settings.set("previous-full-scan-datetime", Value(1700000000.25));
    settings.set("localIp", Value("192.168.1.20"));
    settings.set("publicIp", Value("203.0.113.7"));
    return settings;
}

std::string encoded(const Dictionary& dictionary) {
    const std::optional<std::string> bytes = encodeKeyedArchive(dictionary);
    EXPECT_TRUE(bytes);
    return bytes.value_or("");
}

struct ParsedPlist {
    explicit ParsedPlist(const std::string& bytes) { plist_from_bin(bytes.data(), bytes.size(), &node); }
    ~ParsedPlist() { plist_free(node); }
    plist_t node = nullptr;
};

std::string stringOf(plist_t node) {
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return "<not a string>";
    char* text = nullptr;
    plist_get_string_val(node, &text);
    std::string copy(text);
    std::free(text);
    return copy;
}

std::uint64_t uidOf(plist_t node) {
    if (node == nullptr || plist_get_node_type(node) != PLIST_UID) return 999999;
    std::uint64_t value = 0;
    plist_get_uid_val(node, &value);
    return value;
}

// Object 1 is the given dictionary object, 2 and 3 the texts "k" and "v", 4 the class
// description of className.
void addOneEntryObjects(HandBuiltArchive& archive, plist_t dictionaryObject,
                        const std::string& className = "NSDictionary") {
    archive.add(dictionaryObject);
    archive.add(plist_new_string("k"));
    archive.add(plist_new_string("v"));
    archive.add(newClassDescription(className, {"NSObject"}));
}

std::string oneEntryArchiveWith(plist_t dictionaryObject) {
    HandBuiltArchive archive;
    addOneEntryObjects(archive, dictionaryObject);
    return archive.binary();
}

// The smallest sound archive: { "k": "v" } with the given class for the dictionary.
std::string oneEntryArchive(const std::string& className) {
    HandBuiltArchive archive;
    addOneEntryObjects(archive, newDictionaryObject({2}, {3}, 4), className);
    return archive.binary();
}

TEST(KeyedArchiveEncode, WritesTheLayoutOfNSKeyedArchiver) {
    Dictionary dictionary;
    dictionary.set("a", Value("x"));
    dictionary.set("b", Value(1.5));
    const ParsedPlist archive(encoded(dictionary));
    ASSERT_NE(archive.node, nullptr);
    EXPECT_EQ(stringOf(plist_dict_get_item(archive.node, "$archiver")), "NSKeyedArchiver");
    std::uint64_t version = 0;
    plist_get_uint_val(plist_dict_get_item(archive.node, "$version"), &version);
    EXPECT_EQ(version, 100000u);
    EXPECT_EQ(uidOf(plist_access_path(archive.node, 2, "$top", "root")), 1u);

    plist_t objects = plist_dict_get_item(archive.node, "$objects");
    ASSERT_EQ(plist_array_get_size(objects), 7u);
    EXPECT_EQ(stringOf(plist_array_get_item(objects, 0)), "$null");
    plist_t root = plist_array_get_item(objects, 1);
    EXPECT_EQ(uidOf(plist_access_path(root, 2, "NS.keys", 0)), 2u);
    EXPECT_EQ(uidOf(plist_access_path(root, 2, "NS.keys", 1)), 3u);
    EXPECT_EQ(uidOf(plist_access_path(root, 2, "NS.objects", 0)), 4u);
    EXPECT_EQ(uidOf(plist_access_path(root, 2, "NS.objects", 1)), 5u);
    EXPECT_EQ(uidOf(plist_dict_get_item(root, "$class")), 6u);
    EXPECT_EQ(stringOf(plist_array_get_item(objects, 2)), "a");
    EXPECT_EQ(stringOf(plist_array_get_item(objects, 3)), "b");
    EXPECT_EQ(stringOf(plist_array_get_item(objects, 4)), "x");
    double real = 0;
    plist_get_real_val(plist_array_get_item(objects, 5), &real);
    EXPECT_EQ(real, 1.5);
    plist_t description = plist_array_get_item(objects, 6);
    EXPECT_EQ(stringOf(plist_dict_get_item(description, "$classname")), "NSMutableDictionary");
    plist_t classes = plist_dict_get_item(description, "$classes");
    ASSERT_EQ(plist_array_get_size(classes), 3u);
    EXPECT_EQ(stringOf(plist_array_get_item(classes, 0)), "NSMutableDictionary");
    EXPECT_EQ(stringOf(plist_array_get_item(classes, 1)), "NSDictionary");
    EXPECT_EQ(stringOf(plist_array_get_item(classes, 2)), "NSObject");
}

TEST(KeyedArchiveEncode, IsABinaryPropertyList) {
    EXPECT_EQ(encoded(allFiveSettings()).substr(0, 8), "bplist00");
}

TEST(KeyedArchiveRoundTrip, AllFiveSettingsComeBack) {
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(encoded(allFiveSettings()));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(**decoded, allFiveSettings());
    EXPECT_EQ((*decoded)->get("previous-full-scan-datetime").type(), Value::Type::Double);
}

TEST(KeyedArchiveRoundTrip, EmptyDictionaryDecodesAsEmpty) {
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(encoded(Dictionary()));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE((*decoded)->empty());
}

TEST(KeyedArchiveRoundTrip, NumbersKeepTheirKindAndValue) {
    Dictionary numbers;
    numbers.set("negative", Value(-5));
    numbers.set("smallest", Value(std::numeric_limits<std::int64_t>::min()));
    numbers.set("largest signed", Value(std::numeric_limits<std::int64_t>::max()));
    numbers.set("largest unsigned", Value(std::numeric_limits<std::uint64_t>::max()));
    numbers.set("just above signed", Value(std::uint64_t{1} << 63));
    numbers.set("tenth", Value(0.1));
    numbers.set("half", Value(0.5));
    numbers.set("huge", Value(1e300));
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(encoded(numbers));
    ASSERT_TRUE(decoded);
    const Dictionary& back = **decoded;
    EXPECT_EQ(back.get("negative").toInt64(), -5);
    EXPECT_EQ(back.get("negative").type(), Value::Type::Int);
    EXPECT_EQ(back.get("smallest").toInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(back.get("largest signed").toInt64(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(back.get("largest unsigned").type(), Value::Type::UInt);
    EXPECT_EQ(back.get("largest unsigned").toUInt64(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(back.get("just above signed").toUInt64(), std::uint64_t{1} << 63);
    EXPECT_EQ(back.get("tenth").toDouble(), 0.1);
    EXPECT_EQ(back.get("half").toDouble(), 0.5);
    EXPECT_EQ(back.get("huge").toDouble(), 1e300);
}

TEST(KeyedArchiveRoundTrip, UnicodeTextComesBack) {
    Dictionary dictionary;
    dictionary.set("clé", Value("Zürich – 東京 😀"));
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(encoded(dictionary));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(**decoded, dictionary);
}

TEST(KeyedArchiveEncode, LeavesOutValuesThatAreNeitherStringsNorNumbers) {
    Dictionary dictionary;
    dictionary.set("flag", Value(true));
    dictionary.set("list", Value::newArray());
    dictionary.set("nested", Value::newDictionary());
    dictionary.set("nothing", Value());
    dictionary.set("kept", Value("yes"));
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(encoded(dictionary));
    ASSERT_TRUE(decoded);
    ASSERT_EQ((*decoded)->size(), 1u);
    EXPECT_EQ((*decoded)->get("kept"), Value("yes"));
}

TEST(KeyedArchiveEncode, RefusesTextThatCannotBeAPropertyListString) {
    Dictionary withNul;
    withNul.set("k", Value(std::string("a\0b", 3)));
    EXPECT_FALSE(encodeKeyedArchive(withNul));
    Dictionary keyWithNul;
    keyWithNul.set(std::string("k\0", 2), Value("v"));
    EXPECT_FALSE(encodeKeyedArchive(keyWithNul));
    Dictionary notUtf8;
    notUtf8.set("k", Value(std::string("\xff\xfe")));
    EXPECT_FALSE(encodeKeyedArchive(notUtf8));
    Dictionary emptyText;
    emptyText.set("", Value(""));
    EXPECT_TRUE(encodeKeyedArchive(emptyText));
}

TEST(KeyedArchiveDecode, ReadsStringObjectsAndIntegersAsMacOSWritesThem) {
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(testing::macStyleSettingsArchive());
    ASSERT_TRUE(decoded);
    const Dictionary& settings = **decoded;
    ASSERT_EQ(settings.size(), 3u);
    EXPECT_EQ(settings.get("previous-report-hash"), Value("92eb5ffee6ae2fec3ad71c777531578f"));
    EXPECT_EQ(settings.get("localIp"), Value("10.0.0.5"));
    EXPECT_EQ(settings.get("previous-full-scan-datetime").type(), Value::Type::Int);
    EXPECT_EQ(settings.get("previous-full-scan-datetime").toDouble(), 1700000000.0);
}

TEST(KeyedArchiveDecode, AcceptsBothDictionaryClassesAndNothingElse) {
    EXPECT_TRUE(decodeKeyedArchive(oneEntryArchive("NSDictionary")));
    EXPECT_TRUE(decodeKeyedArchive(oneEntryArchive("NSMutableDictionary")));
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchive("NSArray")));
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchive("NSMutableDictionaryX")));
}

TEST(KeyedArchiveDecode, SharedObjectsAreReadAtEveryReference) {
    HandBuiltArchive archive;
    archive.add(newDictionaryObject({2, 3}, {3, 3}, 4));
    archive.add(plist_new_string("localIp"));
    archive.add(plist_new_string("publicIp"));  // also both values
    archive.add(newClassDescription("NSMutableDictionary", {"NSDictionary", "NSObject"}));
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(archive.binary());
    ASSERT_TRUE(decoded);
    EXPECT_EQ((*decoded)->get("localIp"), Value("publicIp"));
    EXPECT_EQ((*decoded)->get("publicIp"), Value("publicIp"));
}

TEST(KeyedArchiveDecode, SkipsValuesThatAreNeitherStringsNorNumbers) {
    HandBuiltArchive archive;
    archive.add(newDictionaryObject({2, 3, 4, 5, 6, 7}, {8, 9, 10, 11, 13, 14}, 15));
    for (const char* key : {"flag", "data", "date", "list", "unknown", "kept"}) archive.add(plist_new_string(key));
    archive.add(plist_new_bool(1));  // 8
    archive.add(plist_new_data("abc", 3));  // 9
    plist_t date = plist_new_dict();
    plist_dict_set_item(date, "NS.time", plist_new_real(700000000.0));
    plist_dict_set_item(date, "$class", newUid(12));
    archive.add(date);  // 10
    plist_t list = plist_new_dict();
    plist_dict_set_item(list, "NS.objects", testing::newUidArray({14}));
    plist_dict_set_item(list, "$class", newUid(12));
    archive.add(list);  // 11
    archive.add(newClassDescription("NSDate", {"NSObject"}));  // 12
    archive.add(newStringObject("not a string class", 12));  // 13
    archive.add(plist_new_string("value"));  // 14
    archive.add(newClassDescription("NSDictionary", {"NSObject"}));  // 15
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(archive.binary());
    ASSERT_TRUE(decoded);
    ASSERT_EQ((*decoded)->size(), 1u);
    EXPECT_EQ((*decoded)->get("kept"), Value("value"));
}

TEST(KeyedArchiveDecode, SkipsEntriesWithoutAStringKeyAndNilReferences) {
    HandBuiltArchive archive;
    archive.add(newDictionaryObject({2, 0, 3, 4}, {5, 5, 0, 5}, 6));
    archive.add(plist_new_uint(7));         // 2: a number as key
    archive.add(plist_new_string("nil"));   // 3
    archive.add(plist_new_string("kept"));  // 4
    archive.add(plist_new_string("value"));  // 5
    archive.add(newClassDescription("NSDictionary", {"NSObject"}));
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(archive.binary());
    ASSERT_TRUE(decoded);
    ASSERT_EQ((*decoded)->size(), 1u);
    EXPECT_EQ((*decoded)->get("kept"), Value("value"));
}

TEST(KeyedArchiveDecode, NoInputOrRandomBytesAreUndecodable) {
    EXPECT_FALSE(decodeKeyedArchive(""));
    EXPECT_FALSE(decodeKeyedArchive("bplist00"));
    std::mt19937 random(20240601);
    for (int round = 0; round < 200; ++round) {
        std::string bytes(random() % 300, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        if (round % 2 == 0 && bytes.size() >= 8) bytes.replace(0, 8, "bplist00");
        EXPECT_FALSE(decodeKeyedArchive(bytes)) << "round " << round;
    }
}

TEST(KeyedArchiveDecode, EveryTruncationIsUndecodable) {
    const std::string whole = encoded(allFiveSettings());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(decodeKeyedArchive(whole.substr(0, length))) << "length " << length;
    }
}

TEST(KeyedArchiveDecode, PropertyListsThatAreNotBinaryKeyedArchivesAreUndecodable) {
    plist_t plain = plist_new_dict();
    plist_dict_set_item(plain, "previous-report-hash", plist_new_string("abc"));
    EXPECT_FALSE(decodeKeyedArchive(testing::binaryPlist(plain)));
    plist_free(plain);

    HandBuiltArchive archive;
    addOneEntryObjects(archive, newDictionaryObject({2}, {3}, 4));
    plist_t top = archive.newArchive();
    ASSERT_TRUE(decodeKeyedArchive(testing::binaryPlist(top)));
    EXPECT_FALSE(decodeKeyedArchive(testing::xmlPlist(top)));
    plist_free(top);
}

// The sound one-entry archive with one of its top-level entries replaced or, for no
// value, removed.
std::string withTopEntry(const char* key, plist_t value) {
    HandBuiltArchive archive;
    addOneEntryObjects(archive, newDictionaryObject({2}, {3}, 4));
    plist_t top = archive.newArchive();
    if (value == nullptr) {
        plist_dict_remove_item(top, key);
    } else {
        plist_dict_set_item(top, key, value);
    }
    std::string bytes = testing::binaryPlist(top);
    plist_free(top);
    return bytes;
}

TEST(KeyedArchiveDecode, ArchiveFramingMustBeThatOfNSKeyedArchiver) {
    EXPECT_TRUE(decodeKeyedArchive(withTopEntry("$version", plist_new_uint(100000))));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$archiver", plist_new_string("NSArchiver"))));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$archiver", nullptr)));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$version", plist_new_uint(99999))));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$version", plist_new_string("100000"))));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$top", nullptr)));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$objects", nullptr)));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$objects", plist_new_dict())));
    plist_t rootAsNumber = plist_new_dict();
    plist_dict_set_item(rootAsNumber, "root", plist_new_uint(1));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$top", rootAsNumber)));
    plist_t rootAsNull = plist_new_dict();
    plist_dict_set_item(rootAsNull, "root", newUid(0));
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$top", rootAsNull)));
}

TEST(KeyedArchiveDecode, ReferenceOutsideTheObjectsIsUndecodable) {
    EXPECT_FALSE(decodeKeyedArchive(withTopEntry("$top", [] {
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", newUid(99));
        return top;
    }())));
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchiveWith(newDictionaryObject({99}, {3}, 4))));
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchiveWith(newDictionaryObject({2}, {99}, 4))));
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchiveWith(newDictionaryObject({2}, {3}, 99))));
}

TEST(KeyedArchiveDecode, ReferenceOutsideTheObjectsInsideASkippedValueIsUndecodable) {
    HandBuiltArchive archive;
    archive.add(newDictionaryObject({2}, {3}, 4));
    archive.add(plist_new_string("k"));
    archive.add(newStringObject("v", 99));
    archive.add(newClassDescription("NSDictionary", {"NSObject"}));
    EXPECT_FALSE(decodeKeyedArchive(archive.binary()));
}

TEST(KeyedArchiveDecode, ReferenceCyclesAreUndecodable) {
    HandBuiltArchive valueIsTheDictionary;
    valueIsTheDictionary.add(newDictionaryObject({2}, {1}, 3));
    valueIsTheDictionary.add(plist_new_string("k"));
    valueIsTheDictionary.add(newClassDescription("NSDictionary", {"NSObject"}));
    EXPECT_FALSE(decodeKeyedArchive(valueIsTheDictionary.binary()));

    HandBuiltArchive classOfItself;
    classOfItself.add(newDictionaryObject({2}, {3}, 4));
    classOfItself.add(plist_new_string("k"));
    classOfItself.add(newStringObject("v", 3));
    classOfItself.add(newClassDescription("NSDictionary", {"NSObject"}));
    EXPECT_FALSE(decodeKeyedArchive(classOfItself.binary()));

    HandBuiltArchive eachOther;
    eachOther.add(newDictionaryObject({2}, {3}, 5));
    eachOther.add(plist_new_string("k"));
    eachOther.add(newStringObject("v", 4));
    eachOther.add(newStringObject("w", 3));
    eachOther.add(newClassDescription("NSDictionary", {"NSObject"}));
    EXPECT_FALSE(decodeKeyedArchive(eachOther.binary()));
}

TEST(KeyedArchiveDecode, KeyAndValueListsMustBeReferencesOfEqualLength) {
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchiveWith(newDictionaryObject({2, 2}, {3}, 4))));

    plist_t inlineKey = newDictionaryObject({}, {3}, 4);
    plist_array_append_item(plist_dict_get_item(inlineKey, "NS.keys"), plist_new_string("k"));
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchiveWith(inlineKey)));

    plist_t noValues = newDictionaryObject({2}, {3}, 4);
    plist_dict_remove_item(noValues, "NS.objects");
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchiveWith(noValues)));

    plist_t valuesNotAList = newDictionaryObject({2}, {3}, 4);
    plist_dict_set_item(valuesNotAList, "NS.objects", newUid(3));
    EXPECT_FALSE(decodeKeyedArchive(oneEntryArchiveWith(valuesNotAList)));
}

TEST(KeyedArchiveDecode, ArchiveOverTheSizeLimitIsNotDecoded) {
    Dictionary justBelow;
    justBelow.set("k", Value(std::string(kMaximumKeyedArchiveBytes - 400, 'x')));
    const std::string below = encoded(justBelow);
    ASSERT_LE(below.size(), kMaximumKeyedArchiveBytes);
    EXPECT_TRUE(decodeKeyedArchive(below));
    Dictionary above;
    above.set("k", Value(std::string(kMaximumKeyedArchiveBytes, 'x')));
    EXPECT_FALSE(decodeKeyedArchive(encoded(above)));
}

// The fuzzer's seeds are archives written by the encoder and by hand, and all decode.
TEST(KeyedArchiveDecode, FuzzSeedsAreTheEncodersArchives) {
    const std::filesystem::path project = std::filesystem::path(TOV_TEST_FIXTURES).parent_path().parent_path();
    const std::string seeds = (project / "fuzz/corpus/SettingsReaderFuzzer/").string();
    EXPECT_EQ(testing::readFile(seeds + "all-five-settings.bin"), encoded(allFiveSettings()));
    EXPECT_EQ(testing::readFile(seeds + "empty-dictionary.bin"), encoded(Dictionary()));
    EXPECT_EQ(testing::readFile(seeds + "string-objects-and-integer.bin"), testing::macStyleSettingsArchive());
    const std::optional<DictionaryRef> numbers = decodeKeyedArchive(testing::readFile(seeds + "numbers-and-unicode.bin"));
    ASSERT_TRUE(numbers);
    EXPECT_EQ((*numbers)->get("negative"), Value(-5));
    EXPECT_EQ((*numbers)->get("unsigned"), Value(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ((*numbers)->get("real"), Value(0.1));
    EXPECT_EQ((*numbers)->get("text"), Value("Zürich – 東京"));
}

TEST(KeyedArchiveDecode, ArchiveThatUnfoldsExponentiallyIsRefusedQuickly) {
    // A few hundred bytes: the archive's framing, and in "$objects" a chain of sixty arrays
    // each holding the next one twice, which a tree reader would copy 2^60 times.
    testing::RawBinaryPlist plist;
    plist.objects = {
        plist.container(0xD, {1, 2, 3, 4, 5, 6, 7, 8}),
        "\x58$version",
        "\x59$archiver",
        "\x54$top",
        "\x58$objects",
        std::string("\x12\x00\x01\x86\xA0", 5),  // 100000
        "\x5F\x10\x0FNSKeyedArchiver",
        plist.container(0xD, {9, 10}),
        plist.container(0xA, {11}),
        "\x54root",
        "\x80\x01",
    };
    constexpr unsigned kLevels = 60;
    for (std::uint64_t i = 11; i < 11 + kLevels; ++i) plist.objects.push_back(plist.container(0xA, {i + 1, i + 1}));
    plist.objects.push_back("\x51x");
    const std::string bytes = plist.bytes();
    ASSERT_LT(bytes.size(), 1000u);
    const auto started = std::chrono::steady_clock::now();
    EXPECT_FALSE(decodeKeyedArchive(bytes));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(1));
}

}  // namespace
}  // namespace tov
