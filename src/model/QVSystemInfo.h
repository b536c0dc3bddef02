#pragma once

// The one record type of the inventory: a dictionary of JSON keys and values plus the
// scan-result mark of the latest comparison. Kinds derive from it (through QVHardware for
// pieces of hardware) and add typed views of keys, an identifier and an equality rule.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>

#include "model/Value.h"

namespace tov {

class QVSystemInfo {
public:
    static constexpr const char* kClassName = "QVSystemInfo";
    // The keys of the keyed coding.
    static constexpr const char* kValueDictionaryCoderKey = "value-dictionary";
    static constexpr const char* kScanResultCoderKey = "scan-result";

    QVSystemInfo();
    virtual ~QVSystemInfo() = default;
    QVSystemInfo(const QVSystemInfo&) = delete;
    QVSystemInfo& operator=(const QVSystemInfo&) = delete;

    static std::shared_ptr<QVSystemInfo> systemInfo();

    // The live dictionary, not a copy.
    const DictionaryRef& innerDictionary() const { return innerDictionary_; }
    // Takes the given dictionary as it is (callers hand over a fresh copy).
    void setInnerDict(DictionaryRef dictionary);

    std::int32_t scanResult() const { return scanResult_; }
    void setScanResult(std::int32_t scanResult) { scanResult_ = scanResult; }

    // Stores text under key: nothing becomes "", white space and line breaks are trimmed
    // from both ends, and Java-style \uXXXX escapes are decoded.
    void setStringValue(std::optional<std::string_view> value, std::string_view key);

    // The record's name; absent where the kind names it by a key that was never set.
    virtual std::optional<std::string> identifier() const { return std::string(); }
    // The base compares identity; kinds compare their listed properties.
    virtual bool isEqual(const QVSystemInfo& other) const { return this == &other; }
    // The number of entries, so equal records of a kind always hash alike.
    std::size_t hash() const { return innerDictionary_->size(); }
    std::string description() const;
    DictionaryRef proxyForJson() const { return innerDictionary_; }

    // A new record of the same kind with a one-level copy of the dictionary and the same
    // scan result (copyWithZone: and mutableCopyWithZone: are the same operation).
    virtual std::shared_ptr<QVSystemInfo> copy() const;
    std::shared_ptr<QVSystemInfo> mutableCopy() const { return copy(); }

    // Keyed coding: the dictionary under "value-dictionary", the mark under "scan-result".
    void encodeWithCoder(Dictionary& coder) const;
    void initWithCoder(const Dictionary& coder);

    virtual const char* className() const { return kClassName; }
    // True when this record is of the class named by type or of a class derived from it.
    virtual bool isKindOf(const std::type_info& type) const { return type == typeid(QVSystemInfo); }

protected:
    // A fresh record of this record's own kind, as its factory makes it.
    virtual std::shared_ptr<QVSystemInfo> makeEmpty() const;

    std::optional<std::string> stringForKey(std::string_view key) const;
    Value valueForKey(std::string_view key) const { return innerDictionary_->get(key); }
    void setValue(std::string_view key, Value value) { innerDictionary_->set(key, std::move(value)); }

    // Present and equal in both records: an absent string equals nothing.
    bool stringEquals(const QVSystemInfo& other, std::string_view key) const;
    // The other record is of this record's kind or of a kind derived from it.
    bool otherIsOfMyKind(const QVSystemInfo& other) const { return other.isKindOf(typeid(*this)); }

private:
    DictionaryRef innerDictionary_;
    std::int32_t scanResult_ = 0;
};

// Gives a kind its class name, kind test and copy; Base is QVSystemInfo or QVHardware.
template <class Self, class Base>
class QVRecordKind : public Base {
public:
    const char* className() const override { return Self::kClassName; }
    bool isKindOf(const std::type_info& type) const override {
        return type == typeid(Self) || Base::isKindOf(type);
    }

protected:
    std::shared_ptr<QVSystemInfo> makeEmpty() const override { return std::make_shared<Self>(); }
};

}  // namespace tov
