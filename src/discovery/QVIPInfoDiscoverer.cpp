#include "discovery/QVIPInfoDiscoverer.h"

#include <cstdio>
#include <map>
#include <utility>

#include "common/QVSLogger.h"
#include "common/QVSSettings.h"
#include "common/TextUtils.h"
#include "discovery/PublicIpRule.h"
#include "discovery/SystemFacts.h"

namespace tov {
namespace {

constexpr const char* kIPv4Family = "inet";

// The text under key of an entry, or nothing.
std::optional<std::string> entryText(const Value& entry, std::string_view key) {
    const DictionaryRef dictionary = entry.dictionary();
    if (!dictionary) return std::nullopt;
    const Value* value = dictionary->find(key);
    if (!value || !value->isString()) return std::nullopt;
    return *value->string();
}

bool startsWithOneOf(const std::string& name, const std::vector<std::string>& prefixes) {
    for (const std::string& prefix : prefixes) {
        if (hasPrefix(name, prefix)) return true;
    }
    return false;
}

// Interface name → IPv4 address of the interfaces with one of the prefixes; a later
// entry of a name replaces an earlier one. Names are ordered by plain byte comparison.
std::map<std::string, std::string> ipv4AddressesByName(const Value& interfaces,
                                                       const std::vector<std::string>& prefixes) {
    std::map<std::string, std::string> addresses;
    for (const Value& entry : *interfaces.array()) {
        const std::optional<std::string> name = entryText(entry, "name");
        const std::optional<std::string> family = entryText(entry, "family");
        const std::optional<std::string> address = entryText(entry, "address");
        if (!name || !address || family != kIPv4Family || !startsWithOneOf(*name, prefixes)) continue;
        addresses[*name] = *address;
    }
    return addresses;
}

// The numeric text of an HTML comment's start: what stands between "!--" and the next "-".
std::optional<std::string_view> commentNumberText(std::string_view contents) {
    const std::size_t opening = contents.find("!--");
    if (opening == std::string_view::npos) return std::nullopt;
    std::string_view afterOpening = contents.substr(opening + 3);
    // The piece after the first "!--" ends where the next "!--" begins.
    afterOpening = afterOpening.substr(0, afterOpening.find("!--"));
    if (afterOpening.empty()) return std::nullopt;
    const std::size_t dash = afterOpening.find('-');
    if (dash == std::string_view::npos) return std::nullopt;
    const std::string_view number = afterOpening.substr(0, dash);
    if (number.empty()) return std::nullopt;
    return number;
}

std::string dottedQuad(std::uint64_t number) {
    char text[32];
    std::snprintf(text, sizeof text, "%lu.%lu.%lu.%lu", static_cast<unsigned long>(number & 255),
                  static_cast<unsigned long>((number >> 8) & 255), static_cast<unsigned long>((number >> 16) & 255),
                  static_cast<unsigned long>((number >> 24) & 255));
    return text;
}

}  // namespace

QVIPInfoDiscoverer::QVIPInfoDiscoverer(std::shared_ptr<SystemSource> source, Options options)
    : source_(std::move(source)), options_(std::move(options)) {}

DictionaryRef QVIPInfoDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    if (const std::shared_ptr<QVIPInfo> record = discoverIP()) section->set(kNetworkKey, Value(record));
    return section;
}

std::shared_ptr<QVIPInfo> QVIPInfoDiscoverer::discoverIP() {
    QVSSettings* settings = options_.persistAddresses ? &QVSSettings::defaultSettings() : nullptr;
    const std::optional<std::string> savedLocal = settings ? settings->localIP() : std::nullopt;
    const std::optional<std::string> savedPublic = settings ? settings->publicIP() : std::nullopt;
    const std::shared_ptr<QVIPInfo> record = QVIPInfo::ipInfo();

    const std::string current = localIP(*source_, options_.interfacePrefixes);
    const bool found = !current.empty();
    if (found) {
        record->setLocalIp(current);
    } else {
        record->setLocalIp(savedLocal);
    }

    if (needsPublicIpDiscovery(current, savedLocal)) {
        QVSLogger::information("Will determine public IP address...");
        const std::string publicAddress = publicIP(*source_, options_.publicIpUrl);
        if (!publicAddress.empty()) {
            record->setPublicIp(publicAddress);
            QVSLogger::information("New Public IP address = [%s]", publicAddress.c_str());
        } else {
            record->setPublicIp(savedPublic);
            QVSLogger::information("New Public IP address is empty, use the saved Public IP address = [%s]",
                                   savedPublic.value_or("").c_str());
            if (!found) return record;
        }
    } else {
        record->setPublicIp(savedPublic);
        if (!found) return record;
    }

    if (settings) {
        settings->setLocalIP(record->localIp());
        settings->setPublicIP(record->publicIp());
        settings->synchronize();
    }
    return record;
}

std::string QVIPInfoDiscoverer::localIP(SystemSource& source, const std::vector<std::string>& interfacePrefixes) {
    const Value interfaces = source.fact(facts::kInterfaces);
    if (!interfaces.isArray()) {
        QVSLogger::debug("No network interfaces are known; there is no local IP address.");
        return "";
    }
    const std::map<std::string, std::string> addresses = ipv4AddressesByName(interfaces, interfacePrefixes);
    return addresses.empty() ? "" : addresses.begin()->second;
}

std::string QVIPInfoDiscoverer::publicIP(SystemSource& source, const std::string& url) {
    if (url.empty()) return "";
    const DictionaryRef page = source.fact(facts::kPublicIpPage, url).dictionary();
    if (!page) return "";
    const std::int64_t errorCode = page->get("errorCode").toInt64();
    if (errorCode != 0) {
        QVSLogger::debug("Could not get Public IP, error code = [%ld]", static_cast<long>(errorCode));
        return "";
    }
    const Value body = page->get("body");
    return ipAddressFromHtmlContents(body.isString() ? *body.string() : "").value_or("");
}

std::optional<std::string> QVIPInfoDiscoverer::ipAddressFromHtmlContents(std::string_view contents) {
    if (contents.empty()) return std::nullopt;
    const std::optional<std::string_view> number = commentNumberText(contents);
    if (!number) return std::nullopt;
    return dottedQuad(static_cast<std::uint64_t>(leadingIntegerValue(*number)));
}

}  // namespace tov
