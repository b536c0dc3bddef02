#include "model/QVIPInfo.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>

namespace tov {
namespace {

constexpr std::string_view kLocalIpKey = "localIp";
constexpr std::string_view kPublicIpKey = "publicIp";

// ICU's regular expressions, as the platform's: without options, "$" matches at the end
// of the text and also before a line terminator that ends it.
constexpr const char* kIpv4Pattern =
    "^(([0-9]|[1-9][0-9]|1[0-9]{2}|2[0-4][0-9]|25[0-5])\\.){3}"
    "([0-9]|[1-9][0-9]|1[0-9]{2}|2[0-4][0-9]|25[0-5])$";

// Built once and shared (a compiled pattern is immutable); null when it cannot be built.
const icu::RegexPattern* ipv4Expression() {
    static const std::unique_ptr<icu::RegexPattern> expression = []() -> std::unique_ptr<icu::RegexPattern> {
        UErrorCode status = U_ZERO_ERROR;
        UParseError parseError{};
        std::unique_ptr<icu::RegexPattern> pattern(
            icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(kIpv4Pattern), 0, parseError, status));
        if (U_FAILURE(status)) return nullptr;
        return pattern;
    }();
    return expression.get();
}

}  // namespace

std::shared_ptr<QVIPInfo> QVIPInfo::ipInfo() { return std::make_shared<QVIPInfo>(); }

bool QVIPInfo::isValidIpAddress(std::optional<std::string_view> address) {
    if (!address || address->empty()) return false;
    const icu::RegexPattern* expression = ipv4Expression();
    if (!expression) return false;
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(
        icu::StringPiece(address->data(), static_cast<std::int32_t>(std::min<std::size_t>(address->size(), INT32_MAX))));
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::RegexMatcher> matcher(expression->matcher(text, status));
    if (U_FAILURE(status) || !matcher) return false;
    const bool found = matcher->find(status);
    return U_SUCCESS(status) && found;
}

std::optional<std::string> QVIPInfo::localIp() const { return stringForKey(kLocalIpKey); }
void QVIPInfo::setLocalIp(std::optional<std::string_view> address) { setAddress(address, kLocalIpKey); }

std::optional<std::string> QVIPInfo::publicIp() const { return stringForKey(kPublicIpKey); }
void QVIPInfo::setPublicIp(std::optional<std::string_view> address) { setAddress(address, kPublicIpKey); }

bool QVIPInfo::isEqual(const QVSystemInfo& other) const {
    if (this == &other) return true;
    if (!isKindOf(typeid(other))) return false;
    return stringEquals(other, kLocalIpKey) && stringEquals(other, kPublicIpKey);
}

void QVIPInfo::setAddress(std::optional<std::string_view> address, std::string_view key) {
    setStringValue(isValidIpAddress(address) ? *address : std::string_view(), key);
}

}  // namespace tov
