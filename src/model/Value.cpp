#include "model/Value.h"

#include "model/QVSystemInfo.h"

namespace tov {

Value::Value(ArrayRef value) : data_(std::move(value)) {}
Value::Value(DictionaryRef value) : data_(std::move(value)) {}
Value::Value(RecordRef value) : data_(std::move(value)) {}

Value Value::newArray() { return Value(makeArray()); }
Value Value::newDictionary() { return Value(makeDictionary()); }

bool Value::isNumber() const {
    switch (type()) {
    case Type::Bool:
    case Type::Int:
    case Type::UInt:
    case Type::Double:
        return true;
    default:
        return false;
    }
}

bool Value::toBool() const {
    switch (type()) {
    case Type::Bool:
        return std::get<bool>(data_);
    case Type::Int:
        return std::get<std::int64_t>(data_) != 0;
    case Type::UInt:
        return std::get<std::uint64_t>(data_) != 0;
    case Type::Double:
        return std::get<double>(data_) != 0.0;
    default:
        return false;
    }
}

std::int64_t Value::toInt64() const {
    switch (type()) {
    case Type::Bool:
        return std::get<bool>(data_) ? 1 : 0;
    case Type::Int:
        return std::get<std::int64_t>(data_);
    case Type::UInt:
        return static_cast<std::int64_t>(std::get<std::uint64_t>(data_));
    case Type::Double:
        return clampedInteger<std::int64_t>(std::get<double>(data_));
    default:
        return 0;
    }
}

std::uint64_t Value::toUInt64() const {
    switch (type()) {
    case Type::Bool:
        return std::get<bool>(data_) ? 1 : 0;
    case Type::Int:
        return static_cast<std::uint64_t>(std::get<std::int64_t>(data_));
    case Type::UInt:
        return std::get<std::uint64_t>(data_);
    case Type::Double:
        return clampedInteger<std::uint64_t>(std::get<double>(data_));
    default:
        return 0;
    }
}

double Value::toDouble() const {
    switch (type()) {
    case Type::Bool:
        return std::get<bool>(data_) ? 1.0 : 0.0;
    case Type::Int:
        return static_cast<double>(std::get<std::int64_t>(data_));
    case Type::UInt:
        return static_cast<double>(std::get<std::uint64_t>(data_));
    case Type::Double:
        return std::get<double>(data_);
    default:
        return 0.0;
    }
}

ArrayRef Value::array() const {
    const auto* held = std::get_if<ArrayRef>(&data_);
    return held ? *held : nullptr;
}

DictionaryRef Value::dictionary() const {
    const auto* held = std::get_if<DictionaryRef>(&data_);
    return held ? *held : nullptr;
}

RecordRef Value::record() const {
    const auto* held = std::get_if<RecordRef>(&data_);
    return held ? *held : nullptr;
}

Value Value::deepCopy() const {
    switch (type()) {
    case Type::Array:
        return array() ? Value(deepCopyArray(*array())) : *this;
    case Type::Dictionary:
        return dictionary() ? Value(dictionary()->deepCopy()) : *this;
    case Type::Record: {
        if (!record()) return *this;
        RecordRef copy = record()->copy();
        copy->setInnerDict(record()->innerDictionary()->deepCopy());
        return Value(copy);
    }
    default:
        return *this;
    }
}

namespace {

template <class Ref>
bool sameContents(const Ref& left, const Ref& right) {
    if (left == right) return true;
    if (!left || !right) return false;
    return *left == *right;
}

bool isIntegerOrDouble(Value::Type type) {
    return type == Value::Type::Int || type == Value::Type::UInt || type == Value::Type::Double;
}

// An integer and a double are the same number when the double is that whole number.
bool integerEqualsDouble(const Value& integer, double number) {
    if (!std::isfinite(number) || std::trunc(number) != number) return false;
    if (integer.type() == Value::Type::Int) {
        if (number < -0x1p63 || number >= 0x1p63) return false;
        return static_cast<std::int64_t>(number) == integer.toInt64();
    }
    if (number < 0.0 || number >= 0x1p64) return false;
    return static_cast<std::uint64_t>(number) == integer.toUInt64();
}

// Numbers of different representations compare by value: the JSON reader gives unsigned
// integers for every non-negative integer, whatever type was written.
bool sameNumber(const Value& left, const Value& right) {
    if (left.type() == Value::Type::Double) return integerEqualsDouble(right, left.toDouble());
    if (right.type() == Value::Type::Double) return integerEqualsDouble(left, right.toDouble());
    const Value& signedOne = left.type() == Value::Type::Int ? left : right;
    const Value& unsignedOne = left.type() == Value::Type::Int ? right : left;
    return signedOne.toInt64() >= 0 && static_cast<std::uint64_t>(signedOne.toInt64()) == unsignedOne.toUInt64();
}

}  // namespace

bool Value::operator==(const Value& other) const {
    if (type() != other.type()) {
        return isIntegerOrDouble(type()) && isIntegerOrDouble(other.type()) && sameNumber(*this, other);
    }
    switch (type()) {
    case Type::Array:
        return sameContents(array(), other.array());
    case Type::Dictionary:
        return sameContents(dictionary(), other.dictionary());
    case Type::Record: {
        const RecordRef left = record();
        const RecordRef right = other.record();
        if (left == right) return true;
        if (!left || !right) return false;
        return left->className() == right->className() &&
               left->scanResult() == right->scanResult() &&
               *left->innerDictionary() == *right->innerDictionary();
    }
    default:
        return data_ == other.data_;
    }
}

bool Dictionary::contains(std::string_view key) const { return index_.find(key) != index_.end(); }

Value Dictionary::get(std::string_view key) const {
    const Value* value = find(key);
    return value ? *value : Value();
}

const Value* Dictionary::find(std::string_view key) const {
    const auto found = index_.find(key);
    return found == index_.end() ? nullptr : &entries_[found->second].second;
}

Value* Dictionary::find(std::string_view key) {
    const auto found = index_.find(key);
    return found == index_.end() ? nullptr : &entries_[found->second].second;
}

void Dictionary::set(std::string_view key, const Value& value) {
    if (Value* existing = find(key)) {
        *existing = value;
        return;
    }
    index_.emplace(std::string(key), entries_.size());
    entries_.emplace_back(std::string(key), value);
}

void Dictionary::set(std::string_view key, Value&& value) {
    if (Value* existing = find(key)) {
        *existing = std::move(value);
        return;
    }
    index_.emplace(std::string(key), entries_.size());
    entries_.emplace_back(std::string(key), std::move(value));
}

bool Dictionary::remove(std::string_view key) {
    const auto found = index_.find(key);
    if (found == index_.end()) return false;
    const std::size_t position = found->second;
    index_.erase(found);
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
    for (std::size_t i = position; i < entries_.size(); ++i) index_[entries_[i].first] = i;
    return true;
}

void Dictionary::clear() {
    entries_.clear();
    index_.clear();
}

DictionaryRef Dictionary::shallowCopy() const { return std::make_shared<Dictionary>(*this); }

DictionaryRef Dictionary::deepCopy() const {
    auto copy = makeDictionary();
    for (const auto& [key, value] : entries_) copy->set(key, value.deepCopy());
    return copy;
}

bool Dictionary::operator==(const Dictionary& other) const {
    if (size() != other.size()) return false;
    for (const auto& [key, value] : entries_) {
        const Value* theirs = other.find(key);
        if (!theirs || !(*theirs == value)) return false;
    }
    return true;
}

ArrayRef makeArray(Array values) { return std::make_shared<Array>(std::move(values)); }

DictionaryRef makeDictionary() { return std::make_shared<Dictionary>(); }

ArrayRef deepCopyArray(const Array& array) {
    auto copy = makeArray();
    copy->reserve(array.size());
    for (const Value& value : array) copy->push_back(value.deepCopy());
    return copy;
}

}  // namespace tov
