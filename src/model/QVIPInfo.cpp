#include "model/QVIPInfo.h"

#include <regex>

namespace tov {
namespace {

constexpr std::string_view kLocalIpKey = "localIp";
constexpr std::string_view kPublicIpKey = "publicIp";

constexpr const char* kIpv4Pattern =
    "^(([0-9]|[1-9][0-9]|1[0-9]{2}|2[0-4][0-9]|25[0-5])\\.){3}"
    "([0-9]|[1-9][0-9]|1[0-9]{2}|2[0-4][0-9]|25[0-5])$";

// Built once; nothing when the expression cannot be built.
const std::regex* ipv4Expression() {
    static const std::optional<std::regex> expression = []() -> std::optional<std::regex> {
        try {
            return std::regex(kIpv4Pattern);
        } catch (const std::regex_error&) {
            return std::nullopt;
        }
    }();
    return expression ? &*expression : nullptr;
}

}  // namespace

std::shared_ptr<QVIPInfo> QVIPInfo::ipInfo() { return std::make_shared<QVIPInfo>(); }

bool QVIPInfo::isValidIpAddress(std::optional<std::string_view> address) {
    if (!address || address->empty()) return false;
    const std::regex* expression = ipv4Expression();
    if (!expression) return false;
    try {
        return std::regex_search(address->begin(), address->end(), *expression);
    } catch (const std::regex_error&) {
        return false;
    }
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
