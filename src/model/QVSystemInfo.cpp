#include "model/QVSystemInfo.h"

#include "common/TextUtils.h"
#include "model/Json.h"

namespace tov {

QVSystemInfo::QVSystemInfo() : innerDictionary_(makeDictionary()) {}

std::shared_ptr<QVSystemInfo> QVSystemInfo::systemInfo() { return std::make_shared<QVSystemInfo>(); }

void QVSystemInfo::setInnerDict(DictionaryRef dictionary) {
    innerDictionary_ = dictionary ? std::move(dictionary) : makeDictionary();
}

void QVSystemInfo::setStringValue(std::optional<std::string_view> value, std::string_view key) {
    if (!value) {
        setValue(key, Value(""));
        return;
    }
    setValue(key, Value(decodeJavaEscapes(trimWhitespaceAndNewlines(*value))));
}

std::string QVSystemInfo::description() const {
    return writeJson(Value(innerDictionary_), JsonStyle::Compact);
}

std::shared_ptr<QVSystemInfo> QVSystemInfo::copy() const {
    auto copy = makeEmpty();
    copy->setInnerDict(innerDictionary_->shallowCopy());
    copy->setScanResult(scanResult_);
    return copy;
}

void QVSystemInfo::encodeWithCoder(Dictionary& coder) const {
    coder.set(kValueDictionaryCoderKey, Value(innerDictionary_->deepCopy()));
    coder.set(kScanResultCoderKey, Value(static_cast<std::int64_t>(scanResult_)));
}

void QVSystemInfo::initWithCoder(const Dictionary& coder) {
    const DictionaryRef decoded = coder.get(kValueDictionaryCoderKey).dictionary();
    innerDictionary_ = decoded ? decoded->deepCopy() : makeDictionary();
    scanResult_ = static_cast<std::int32_t>(coder.get(kScanResultCoderKey).toInt64());
}

std::shared_ptr<QVSystemInfo> QVSystemInfo::makeEmpty() const { return std::make_shared<QVSystemInfo>(); }

std::optional<std::string> QVSystemInfo::stringForKey(std::string_view key) const {
    const Value* value = innerDictionary_->find(key);
    if (!value || !value->string()) return std::nullopt;
    return *value->string();
}

bool QVSystemInfo::stringEquals(const QVSystemInfo& other, std::string_view key) const {
    const std::optional<std::string> mine = stringForKey(key);
    const std::optional<std::string> theirs = other.stringForKey(key);
    return mine && theirs && *mine == *theirs;
}

}  // namespace tov
