#pragma once

// The inventory's value tree: scalars, and containers held by shared reference so that a
// change made through one holder is seen by every other (the difference engine marks the
// very records of both trees). Dictionaries keep their insertion order, so one inventory
// always gives the same bytes.

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace tov {

class QVSystemInfo;
class Value;
class Dictionary;

using Array = std::vector<Value>;
using ArrayRef = std::shared_ptr<Array>;
using DictionaryRef = std::shared_ptr<Dictionary>;
using RecordRef = std::shared_ptr<QVSystemInfo>;

class Value {
public:
    enum class Type { Absent, Bool, Int, UInt, Double, String, Array, Dictionary, Record };

    Value() = default;
    Value(bool value) : data_(value) {}
    template <class T, std::enable_if_t<std::is_integral_v<T> && std::is_signed_v<T>, int> = 0>
    Value(T value) : data_(static_cast<std::int64_t>(value)) {}
    template <class T, std::enable_if_t<std::is_integral_v<T> && std::is_unsigned_v<T> &&
                                            !std::is_same_v<T, bool>, int> = 0>
    Value(T value) : data_(static_cast<std::uint64_t>(value)) {}
    Value(double value) : data_(value) {}
    Value(std::string value) : data_(std::move(value)) {}
    Value(std::string_view value) : data_(std::string(value)) {}
    Value(const char* value) : data_(std::string(value)) {}
    Value(ArrayRef value);
    Value(DictionaryRef value);
    template <class R, std::enable_if_t<std::is_base_of_v<QVSystemInfo, R>, int> = 0>
    Value(std::shared_ptr<R> record) : Value(RecordRef(std::move(record))) {}
    Value(RecordRef value);

    // A new, empty container held by a fresh reference.
    static Value newArray();
    static Value newDictionary();

    Type type() const { return static_cast<Type>(data_.index()); }
    bool isAbsent() const { return type() == Type::Absent; }
    bool isBool() const { return type() == Type::Bool; }
    bool isString() const { return type() == Type::String; }
    bool isNumber() const;  // bool, signed, unsigned or double
    bool isArray() const { return type() == Type::Array; }
    bool isDictionary() const { return type() == Type::Dictionary; }
    bool isRecord() const { return type() == Type::Record; }

    // Numeric views convert between the number types (booleans count as 0 and 1);
    // anything that is not a number reads as 0.
    bool toBool() const;
    std::int64_t toInt64() const;
    std::uint64_t toUInt64() const;
    double toDouble() const;

    // The string, or nullptr for any other type.
    const std::string* string() const { return std::get_if<std::string>(&data_); }
    // The shared container or record, or null for any other type.
    ArrayRef array() const;
    DictionaryRef dictionary() const;
    RecordRef record() const;

    // An independent tree: containers and records are copied all the way down.
    Value deepCopy() const;

    // Structural equality of the data (records by their dictionaries and scan result),
    // for tests and change checks; the record kinds' own equality is isEqual. Signed,
    // unsigned and floating numbers compare by value; booleans equal only booleans.
    bool operator==(const Value& other) const;

private:
    std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, ArrayRef,
                 DictionaryRef, RecordRef>
        data_;
};

// A string-keyed dictionary that remembers the order in which keys were first inserted.
class Dictionary {
public:
    using Entry = std::pair<std::string, Value>;

    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    bool contains(std::string_view key) const;

    // The value under key, or an absent value.
    Value get(std::string_view key) const;
    // The stored value, or nullptr.
    const Value* find(std::string_view key) const;
    Value* find(std::string_view key);

    // Replaces the value of an existing key in place (keeping its position), or appends.
    void set(std::string_view key, const Value& value);
    void set(std::string_view key, Value&& value);
    // Removes the key; answers whether it was there.
    bool remove(std::string_view key);
    void clear();

    const std::vector<Entry>& entries() const { return entries_; }
    std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
    std::vector<Entry>::const_iterator end() const { return entries_.end(); }

    // A new dictionary holding the same values (one level: containers stay shared).
    DictionaryRef shallowCopy() const;
    DictionaryRef deepCopy() const;

    bool operator==(const Dictionary& other) const;

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>{}(text);
        }
    };
    std::vector<Entry> entries_;
    std::unordered_map<std::string, std::size_t, Hash, std::equal_to<>> index_;
};

// A floating-point number as an integer type, truncated toward zero and clamped to the
// type's range (NaN gives 0), so that a hostile number cannot make the conversion undefined.
template <class Integer>
Integer clampedInteger(double number) {
    if (std::isnan(number)) return 0;
    if (number <= static_cast<double>(std::numeric_limits<Integer>::min())) {
        return std::numeric_limits<Integer>::min();
    }
    if (number >= static_cast<double>(std::numeric_limits<Integer>::max())) {
        return std::numeric_limits<Integer>::max();
    }
    return static_cast<Integer>(number);
}

ArrayRef makeArray(Array values = {});
DictionaryRef makeDictionary();
ArrayRef deepCopyArray(const Array& array);

}  // namespace tov
