#include "platform/macos/CoreFoundationValue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/PropertyList.h"
#include "model/Json.h"

namespace tov {
namespace {

using Owned = OwnedCFReference<CFTypeRef>;

Owned text(const std::string& bytes) {
    const OwnedCFReference<CFStringRef> string = cfStringOfText(bytes);
    return Owned(string ? CFRetain(string.get()) : nullptr);
}

Owned int32Number(SInt32 value) { return Owned(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &value)); }
Owned int64Number(SInt64 value) { return Owned(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value)); }
Owned realNumber(double value) { return Owned(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &value)); }

Owned array(const std::vector<CFTypeRef>& elements) {
    return Owned(CFArrayCreate(kCFAllocatorDefault, const_cast<const void**>(elements.data()),
                               static_cast<CFIndex>(elements.size()), &kCFTypeArrayCallBacks));
}

Owned dictionary(const std::vector<CFTypeRef>& keys, const std::vector<CFTypeRef>& values) {
    return Owned(CFDictionaryCreate(kCFAllocatorDefault, const_cast<const void**>(keys.data()),
                                    const_cast<const void**>(values.data()), static_cast<CFIndex>(keys.size()),
                                    &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

Owned data(const std::vector<UInt8>& bytes) {
    return Owned(CFDataCreate(kCFAllocatorDefault, bytes.data(), static_cast<CFIndex>(bytes.size())));
}

Owned date(CFAbsoluteTime sinceReferenceDate) { return Owned(CFDateCreate(kCFAllocatorDefault, sinceReferenceDate)); }

// The tree the property-list reader gives for the object written as a property list.
std::optional<Value> readBack(CFTypeRef object, CFPropertyListFormat format) {
    const OwnedCFReference<CFDataRef> bytes(CFPropertyListCreateData(kCFAllocatorDefault, object, format, 0, nullptr));
    if (!bytes) return std::nullopt;
    const std::string_view view(reinterpret_cast<const char*>(CFDataGetBytePtr(bytes.get())),
                                static_cast<std::size_t>(CFDataGetLength(bytes.get())));
    return parsePropertyList(view);
}

TEST(CoreFoundationValue, EveryPropertyListTypeGetsItsShape) {
    const Owned name = text("Mia\xE2\x80\x99s MacBook Air");
    const Owned count = int32Number(-5);
    const Owned large = int64Number(INT64_MAX);
    const Owned real = realNumber(1.5);
    const Owned bytes = data({0, 60, 255});
    const Owned when = date(0);
    const Owned list = array({name.get(), count.get()});
    const Owned keys[] = {text("name"), text("count"), text("large"), text("real"), text("yes"), text("bytes"),
                          text("when"), text("list")};
    const Owned tree = dictionary(
        {keys[0].get(), keys[1].get(), keys[2].get(), keys[3].get(), keys[4].get(), keys[5].get(), keys[6].get(),
         keys[7].get()},
        {name.get(), count.get(), large.get(), real.get(), kCFBooleanTrue, bytes.get(), when.get(), list.get()});

    const Value value = valueOfCFType(tree.get());

    ASSERT_TRUE(value.isDictionary());
    const DictionaryRef result = value.dictionary();
    EXPECT_EQ(result->get("name"), Value("Mia\xE2\x80\x99s MacBook Air"));
    EXPECT_EQ(result->get("count").type(), Value::Type::Int);
    EXPECT_EQ(result->get("count").toInt64(), -5);
    EXPECT_EQ(result->get("large").toInt64(), INT64_MAX);
    EXPECT_EQ(result->get("real").type(), Value::Type::Double);
    EXPECT_EQ(result->get("real").toDouble(), 1.5);
    EXPECT_TRUE(result->get("yes").isBool());
    EXPECT_TRUE(result->get("yes").toBool());
    EXPECT_EQ(writeJson(result->get("bytes"), JsonStyle::Compact), "[0,60,255]");
    EXPECT_EQ(result->get("when"), Value("2001-01-01T00:00:00Z"));
    EXPECT_EQ(writeJson(result->get("list"), JsonStyle::Compact), "[\"Mia\xE2\x80\x99s MacBook Air\",-5]");
}

TEST(CoreFoundationValue, EntriesFollowTheirKeysText) {
    const Owned keys[] = {text("b"), text("a"), text("c")};
    const Owned values[] = {int32Number(2), int32Number(1), int32Number(3)};
    const Owned tree = dictionary({keys[0].get(), keys[1].get(), keys[2].get()},
                                  {values[0].get(), values[1].get(), values[2].get()});
    EXPECT_EQ(writeJson(valueOfCFType(tree.get()), JsonStyle::Compact), "{\"a\":1,\"b\":2,\"c\":3}");
}

TEST(CoreFoundationValue, TheTreeEqualsThePropertyListReadersTreeOfTheSameObject) {
    const Owned serial = text("C02XK0ABJG5J");
    const Owned negative = int64Number(-2);
    const Owned address = data({0x3c, 0xa6, 0xf6, 0x0e, 0x21, 0x7d});
    const Owned when = date(646221600.75);
    const Owned inner = dictionary({text("Product Name").get()}, {serial.get()});
    const Owned keys[] = {text("USB Serial Number"), text("IOLinkSpeed"), text("IOMACAddress"), text("Date"),
                          text("Device Characteristics"), text("Removable")};
    const Owned tree = dictionary(
        {keys[0].get(), keys[1].get(), keys[2].get(), keys[3].get(), keys[4].get(), keys[5].get()},
        {serial.get(), negative.get(), address.get(), when.get(), inner.get(), kCFBooleanFalse});

    const Value live = valueOfCFType(tree.get());
    for (const CFPropertyListFormat format : {kCFPropertyListXMLFormat_v1_0, kCFPropertyListBinaryFormat_v1_0}) {
        const std::optional<Value> recorded = readBack(tree.get(), format);
        ASSERT_TRUE(recorded.has_value());
        EXPECT_EQ(live, *recorded) << writeJson(live, JsonStyle::Compact) << "\n"
                                   << writeJson(*recorded, JsonStyle::Compact);
    }
}

TEST(CoreFoundationValue, ATextEndsAtItsFirstZeroCharacterInTheTree) {
    const std::string withZero("ab\0c", 4);
    const Owned string = text(withZero);
    ASSERT_TRUE(string);
    EXPECT_EQ(stringOfCFString(string.get()), withZero);
    EXPECT_EQ(valueOfCFType(string.get()), Value("ab"));
}

TEST(CoreFoundationValue, TextsGoBothWaysAndBytesThatAreNoUtf8MakeNoString) {
    const std::string volume = "Sauvegarde \xC3\xA9t\xC3\xA9 \xF0\x9F\x93\xA6";
    const OwnedCFReference<CFStringRef> string = cfStringOfText(volume);
    ASSERT_TRUE(string);
    EXPECT_EQ(stringOfCFString(string.get()), volume);
    EXPECT_EQ(stringOfCFString(cfStringOfText("").get()), "");
    EXPECT_EQ(cfStringOfText("\xFF\xFE").get(), nullptr);
    EXPECT_EQ(cfStringOfText("\xC3").get(), nullptr);
}

TEST(CoreFoundationValue, ObjectsOutsideThePropertyListTypesAreLeftOut) {
    const Owned member = text("member");
    const std::vector<CFTypeRef> members{member.get()};
    const Owned set(CFSetCreate(kCFAllocatorDefault, const_cast<const void**>(members.data()), 1, &kCFTypeSetCallBacks));
    const Owned kept = text("kept");
    const Owned numberKey = int32Number(7);
    const Owned tree = dictionary({numberKey.get(), kept.get(), text("set").get()}, {kept.get(), kept.get(), set.get()});
    const Owned list = array({set.get(), kept.get()});

    EXPECT_TRUE(valueOfCFType(nullptr).isAbsent());
    EXPECT_TRUE(valueOfCFType(set.get()).isAbsent());
    EXPECT_EQ(writeJson(valueOfCFType(tree.get()), JsonStyle::Compact), "{\"kept\":\"kept\"}");
    EXPECT_EQ(writeJson(valueOfCFType(list.get()), JsonStyle::Compact), "[\"kept\"]");
    EXPECT_FALSE(stringOfCFString(numberKey.get()).has_value());
    EXPECT_FALSE(stringOfCFString(nullptr).has_value());
}

TEST(CoreFoundationValue, DatesAreUtcTextsOnBothSidesOfTheReferenceDate) {
    EXPECT_EQ(valueOfCFType(date(-978307200).get()), Value("1970-01-01T00:00:00Z"));
    EXPECT_EQ(valueOfCFType(date(646221600.75).get()), Value("2021-06-24T10:00:00Z"));
}

// Arrays nested depth levels deep, the innermost empty.
Owned nestedArrays(int depth) {
    Owned current = array({});
    for (int level = 1; level < depth; ++level) current = array({current.get()});
    return current;
}

TEST(CoreFoundationValue, NestingIsBoundedAsThePropertyListReaderBoundsIt) {
    const int deepest = static_cast<int>(PropertyListLimits{}.depth);
    EXPECT_TRUE(valueOfCFType(nestedArrays(deepest).get()).isArray());
    EXPECT_TRUE(valueOfCFType(nestedArrays(deepest + 1).get()).isAbsent());
}

TEST(CoreFoundationValue, DataBeyondTheBudgetMakesNoTree) {
    const Owned big = data(std::vector<UInt8>(PropertyListLimits{}.dataBytes + 1, 7));
    EXPECT_TRUE(valueOfCFType(big.get()).isAbsent());
    const Owned fits = data(std::vector<UInt8>(16, 7));
    ASSERT_TRUE(valueOfCFType(fits.get()).isArray());
    EXPECT_EQ(valueOfCFType(fits.get()).array()->size(), 16U);
}

}  // namespace
}  // namespace tov
