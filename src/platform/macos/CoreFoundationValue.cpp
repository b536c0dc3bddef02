#include "platform/macos/CoreFoundationValue.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <limits>
#include <utility>
#include <vector>

#include "common/PropertyList.h"

namespace tov {
namespace {

// Seconds from 1970-01-01 to 2001-01-01, CoreFoundation's reference date.
constexpr std::int64_t kReferenceDateSeconds = 978307200;
static_assert(sizeof(std::time_t) == sizeof(std::int64_t), "every Mac counts time in 64 bits");

using Entry = std::pair<std::string, CFTypeRef>;

// The text up to its first zero character, as the property-list reader takes strings and keys.
std::string textBeforeZero(std::string text) {
    const std::size_t zero = text.find('\0');
    if (zero != std::string::npos) text.resize(zero);
    return text;
}

// "yyyy-MM-ddTHH:mm:ssZ" of the date; absent when the date is beyond the calendar's reach.
// Whole seconds since the reference date are taken toward zero, as the property-list
// reader takes a list's date.
Value dateOf(CFDateRef date) {
    const std::int64_t sinceReference = clampedInteger<std::int64_t>(CFDateGetAbsoluteTime(date));
    if (sinceReference > std::numeric_limits<std::int64_t>::max() - kReferenceDateSeconds) return Value();
    const auto time = static_cast<std::time_t>(sinceReference + kReferenceDateSeconds);
    std::tm parts{};
    if (gmtime_r(&time, &parts) == nullptr) return Value();
    char text[64];
    if (std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts) == 0) return Value();
    return Value(text);
}

// A float as a double; any integer as a signed 64-bit number, as the property-list
// reader gives it (the registry's unsigned numbers above the signed range come negative).
// Absent when the number does not fit.
Value numberOf(CFNumberRef number) {
    if (CFNumberIsFloatType(number)) {
        double real = 0;
        if (!CFNumberGetValue(number, kCFNumberDoubleType, &real)) return Value();
        return Value(real);
    }
    SInt64 integer = 0;
    if (!CFNumberGetValue(number, kCFNumberSInt64Type, &integer)) return Value();
    return Value(static_cast<std::int64_t>(integer));
}

// Builds the tree of one object within the bounds of the property-list reader: nodes
// (keys included), nesting, the bytes of all strings and the bytes of all data objects.
class TreeBuilder {
public:
    explicit TreeBuilder(const PropertyListLimits& limits) : limits_(limits) {}

    // The object's tree; absent for a type outside the property-list types; nothing when
    // the tree passes a bound.
    std::optional<Value> valueOf(CFTypeRef object, std::uint64_t depth) {
        if (object == nullptr) return Value();
        if (depth > limits_.depth || !spendNodes(1)) return std::nullopt;
        const CFTypeID type = CFGetTypeID(object);
        if (type == CFDictionaryGetTypeID()) return dictionaryOf(static_cast<CFDictionaryRef>(object), depth);
        if (type == CFArrayGetTypeID()) return arrayOf(static_cast<CFArrayRef>(object), depth);
        if (type == CFStringGetTypeID()) return textOf(object);
        if (type == CFNumberGetTypeID()) return numberOf(static_cast<CFNumberRef>(object));
        if (type == CFBooleanGetTypeID()) return Value(CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0);
        if (type == CFDataGetTypeID()) return dataOf(static_cast<CFDataRef>(object));
        if (type == CFDateGetTypeID()) return dateOf(static_cast<CFDateRef>(object));
        return Value();
    }

private:
    bool spendNodes(std::uint64_t count) {
        if (count > limits_.nodes - nodes_) return false;
        nodes_ += count;
        return true;
    }

    static bool spend(std::uint64_t count, std::uint64_t limit, std::uint64_t& spent) {
        if (count > limit - spent) return false;
        spent += count;
        return true;
    }

    // The entries with string keys, in the order of their keys' UTF-8 text.
    static std::vector<Entry> sortedEntries(CFDictionaryRef dictionary, CFIndex count) {
        std::vector<const void*> keys(static_cast<std::size_t>(count));
        std::vector<const void*> values(static_cast<std::size_t>(count));
        CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
        std::vector<Entry> entries;
        entries.reserve(keys.size());
        for (std::size_t index = 0; index < keys.size(); ++index) {
            if (std::optional<std::string> key = stringOfCFString(keys[index])) {
                entries.emplace_back(textBeforeZero(std::move(*key)), values[index]);
            }
        }
        std::stable_sort(entries.begin(), entries.end(),
                         [](const Entry& left, const Entry& right) { return left.first < right.first; });
        return entries;
    }

    std::optional<Value> dictionaryOf(CFDictionaryRef dictionary, std::uint64_t depth) {
        const CFIndex count = CFDictionaryGetCount(dictionary);
        if (count < 0 || !spendNodes(static_cast<std::uint64_t>(count))) return std::nullopt;
        DictionaryRef result = makeDictionary();
        if (count == 0) return Value(result);
        for (const Entry& entry : sortedEntries(dictionary, count)) {
            if (!spend(entry.first.size(), limits_.bytes, textBytes_)) return std::nullopt;
            std::optional<Value> value = valueOf(entry.second, depth + 1);
            if (!value) return std::nullopt;
            if (!value->isAbsent()) result->set(entry.first, std::move(*value));
        }
        return Value(result);
    }

    std::optional<Value> arrayOf(CFArrayRef array, std::uint64_t depth) {
        const CFIndex count = CFArrayGetCount(array);
        if (count < 0 || static_cast<std::uint64_t>(count) > limits_.nodes - nodes_) return std::nullopt;
        ArrayRef result = makeArray();
        result->reserve(static_cast<std::size_t>(count));
        for (CFIndex index = 0; index < count; ++index) {
            std::optional<Value> value = valueOf(CFArrayGetValueAtIndex(array, index), depth + 1);
            if (!value) return std::nullopt;
            if (!value->isAbsent()) result->push_back(std::move(*value));
        }
        return Value(result);
    }

    std::optional<Value> textOf(CFTypeRef string) {
        std::optional<std::string> text = stringOfCFString(string);
        if (!text) return Value();
        if (!spend(text->size(), limits_.bytes, textBytes_)) return std::nullopt;
        return Value(textBeforeZero(std::move(*text)));
    }

    std::optional<Value> dataOf(CFDataRef data) {
        const CFIndex length = CFDataGetLength(data);
        if (length < 0 || !spend(static_cast<std::uint64_t>(length), limits_.dataBytes, dataBytes_)) {
            return std::nullopt;
        }
        const UInt8* bytes = CFDataGetBytePtr(data);
        ArrayRef array = makeArray();
        if (bytes == nullptr) return Value(array);
        array->reserve(static_cast<std::size_t>(length));
        for (CFIndex index = 0; index < length; ++index) {
            array->emplace_back(static_cast<std::uint64_t>(bytes[index]));
        }
        return Value(array);
    }

    PropertyListLimits limits_;
    std::uint64_t nodes_ = 0;
    std::uint64_t textBytes_ = 0;
    std::uint64_t dataBytes_ = 0;
};

}  // namespace

Value valueOfCFType(CFTypeRef object) {
    TreeBuilder builder{PropertyListLimits{}};
    std::optional<Value> tree = builder.valueOf(object, 1);
    if (!tree) return Value();
    return std::move(*tree);
}

std::optional<std::string> stringOfCFString(CFTypeRef object) {
    if (object == nullptr || CFGetTypeID(object) != CFStringGetTypeID()) return std::nullopt;
    const auto string = static_cast<CFStringRef>(object);
    const CFIndex length = CFStringGetLength(string);
    const CFRange whole = CFRangeMake(0, length);
    // Measured first; a lossByte of 0 makes a character UTF-8 cannot hold end the conversion early.
    CFIndex byteCount = 0;
    if (CFStringGetBytes(string, whole, kCFStringEncodingUTF8, 0, false, nullptr, 0, &byteCount) != length ||
        byteCount < 0) {
        return std::nullopt;
    }
    std::string text(static_cast<std::size_t>(byteCount), '\0');
    CFIndex written = 0;
    if (CFStringGetBytes(string, whole, kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(text.data()),
                         byteCount, &written) != length ||
        written != byteCount) {
        return std::nullopt;
    }
    return text;
}

OwnedCFReference<CFStringRef> cfStringOfText(const std::string& text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<CFIndex>::max())) return {};
    return OwnedCFReference<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault,
                                                                 reinterpret_cast<const UInt8*>(text.data()),
                                                                 static_cast<CFIndex>(text.size()),
                                                                 kCFStringEncodingUTF8, false));
}

}  // namespace tov
