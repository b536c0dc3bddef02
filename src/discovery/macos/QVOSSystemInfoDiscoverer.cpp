#include "discovery/macos/QVOSSystemInfoDiscoverer.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "common/PropertyList.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/SystemFacts.h"
#include "discovery/macos/BlessInfo.h"
#include "discovery/macos/DirectoryDomainName.h"
#include "discovery/macos/FollowedPath.h"
#include "discovery/macos/MacSystemVersion.h"
#include "discovery/macos/QVIOKitHardwareInfoDiscoverer.h"
#include "discovery/macos/QuerySysCTL.h"

namespace tov {
namespace {

constexpr const char* kLoginWindowUser = "loginwindow";
constexpr const char* kBlessPath = "/usr/sbin/bless";
constexpr const char* kCsrutilPath = "/usr/bin/csrutil";
constexpr const char* kVolumesFolder = "/Volumes";
constexpr const char* kNoBootVolume = "/";
constexpr const char* kEnabledMark = ": enabled";
constexpr const char* kAppleLocaleKey = "AppleLocale";
// A user's global preferences are a few kilobytes; far larger is no preferences file.
constexpr std::uint64_t kMaximumPreferencesBytes = 8 * 1024 * 1024;

std::optional<std::string> textIn(const DictionaryRef& dictionary, const char* key) {
    const Value value = dictionary ? dictionary->get(key) : Value();
    if (!value.string()) return std::nullopt;
    return *value.string();
}

std::optional<std::string> factText(SystemSource& source, const char* name, const std::string& key, const char* field) {
    return textIn(source.fact(name, key).dictionary(), field);
}

// The text that identifies the volume holding path; nothing when it cannot be read.
std::optional<std::string> volumeIdentifier(SystemSource& source, const std::string& path) {
    return factText(source, facts::kVolumeIdentifier, path, "identifier");
}

std::optional<std::string> currentLocaleIdentifier(SystemSource& source) {
    return factText(source, facts::kHostAndLocale, "", "localeIdentifier");
}

// The copyright from the character after its first blank: "1983-2025 Apple Inc." gives
// "Apple Inc."; a text without a blank is kept whole.
std::string manufacturerOfCopyright(const std::string& copyright) {
    const std::size_t blank = copyright.find(' ');
    return blank == std::string::npos ? copyright : copyright.substr(blank + 1);
}

// "ProductVersion (ProductBuildVersion)"; nothing when either is missing.
std::optional<std::string> osVersionOf(const DictionaryRef& version) {
    const std::optional<std::string> number = systemVersionText(version, "ProductVersion");
    const std::optional<std::string> build = systemVersionText(version, "ProductBuildVersion");
    if (!number || !build) return std::nullopt;
    return *number + " (" + *build + ")";
}

std::string missingVersionReason(const DictionaryRef& version, const char* key) {
    if (!version) return std::string(kSystemVersionPath) + " cannot be read as a dictionary.";
    return std::string(kSystemVersionPath) + " has no text under \"" + key + "\".";
}

// Stores the value, or logs why the section ends at key.
bool store(Dictionary& section, const char* key, const std::optional<std::string>& value, const std::string& reason) {
    if (!value) {
        QVSLogger::warning("The operatingSystems section ends before \"%s\": %s", key, reason.c_str());
        return false;
    }
    section.set(key, Value(*value));
    return true;
}

std::optional<std::string> appleLocaleOf(const std::optional<std::string>& preferences) {
    const std::optional<Value> list = preferences ? parsePropertyList(*preferences) : std::nullopt;
    return list ? textIn(list->dictionary(), kAppleLocaleKey) : std::nullopt;
}

std::string preferencesPathOf(const std::string& username) {
    return "/Users/" + username + "/Library/Preferences/.GlobalPreferences.plist";
}

}  // namespace

QVOSSystemInfoDiscoverer::QVOSSystemInfoDiscoverer(std::shared_ptr<SystemSource> source) : source_(std::move(source)) {}

DictionaryRef QVOSSystemInfoDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    discoverOS(*source_, *section);
    return section;
}

bool QVOSSystemInfoDiscoverer::discoverOS(SystemSource& source, Dictionary& section) {
    const std::string consoleUser = currentHumanUsername(source);
    if (!discoverRelease(source, section, consoleUser) || !discoverMachine(source, section, consoleUser)) return false;
    discoverSerialNumber(source, section);
    return true;
}

// osName to osVersion: the system version file and the console user's domain.
bool QVOSSystemInfoDiscoverer::discoverRelease(SystemSource& source, Dictionary& section,
                                               const std::string& consoleUser) {
    const DictionaryRef version = readSystemVersion(source);
    if (!store(section, kOsNameKey, systemVersionText(version, "ProductName"),
               missingVersionReason(version, "ProductName"))) {
        return false;
    }
    const std::optional<std::string> copyright = systemVersionText(version, "ProductCopyright");
    if (!store(section, kSystemManufacturerKey, copyright ? std::optional(manufacturerOfCopyright(*copyright)) : std::nullopt,
               missingVersionReason(version, "ProductCopyright"))) {
        return false;
    }
    section.set(kOsManufacturerKey, section.get(kSystemManufacturerKey));
    section.set(kDomainKey, Value(discoverDomainWithUsername(source, consoleUser)));
    return store(section, kOsVersionKey, osVersionOf(version),
                 missingVersionReason(version, systemVersionText(version, "ProductVersion") ? "ProductBuildVersion"
                                                                                           : "ProductVersion"));
}

// systemType to systemIntegrityProtectionStatus.
bool QVOSSystemInfoDiscoverer::discoverMachine(SystemSource& source, Dictionary& section,
                                               const std::string& consoleUser) {
    if (!store(section, kSystemTypeKey, QuerySysCTL(source, "hw.machine"),
               "the kernel parameter hw.machine cannot be read.")) {
        return false;
    }
    if (!store(section, kSystemNameKey, factText(source, facts::kHostAndLocale, "", "localizedName"),
               "the host has no localized name.")) {
        return false;
    }
    section.set(kUsernameKey, Value(consoleUser));
    const auto [bootDevice, systemDirectory] = discoverBootDevice(source);
    section.set(kBootDeviceKey, Value(bootDevice));
    section.set(kSystemDirectoryKey, Value(systemDirectory));
    if (!store(section, kUserLocaleKey, localeOfUserWithUsername(source, consoleUser),
               consoleUser.empty() ? std::string("the current locale has no identifier.")
                                   : "no locale for \"" + consoleUser + "\" (" + preferencesPathOf(consoleUser) +
                                         " has no \"AppleLocale\" text, or the current locale has no identifier).")) {
        return false;
    }
    if (!store(section, kSystemModelKey, QuerySysCTL(source, "hw.model"),
               "the kernel parameter hw.model cannot be read.")) {
        return false;
    }
    section.set(kSystemIntegrityProtectionStatusKey, Value(systemIntegrityProtectionStatus(source)));
    return true;
}

// The registry discoverer reads the same source; it is made for this call and ends with it.
void QVOSSystemInfoDiscoverer::discoverSerialNumber(SystemSource& source, Dictionary& section) {
    const std::shared_ptr<SystemSource> borrowed(std::shared_ptr<SystemSource>(), &source);
    const ArrayRef serialNumbers = QVIOKitHardwareInfoDiscoverer(borrowed).discoverSerialNumbers();
    if (!serialNumbers || serialNumbers->empty()) return;
    const DictionaryRef first = serialNumbers->front().dictionary();
    if (const std::optional<std::string> serialNumber = textIn(first, QVIOKitHardwareInfoDiscoverer::kSerialNumberKey)) {
        section.set(kSerialNumberKey, Value(*serialNumber));
    }
}

std::pair<std::string, std::string> QVOSSystemInfoDiscoverer::discoverBootDevice(SystemSource& source) {
    const std::pair<std::string, std::string> none{kNoBootVolume, kNoBootVolume};
    const std::optional<std::string> blessed = blessedSystemFolder(source.runTool({kBlessPath, "--info"}).value_or(""));
    if (!blessed) return none;
    // A volume whose identifier cannot be read matches no other.
    const std::optional<std::string> blessedVolume = volumeIdentifier(source, *blessed);
    const std::optional<std::vector<std::string>> entries = source.listFolder(kVolumesFolder);
    if (!blessedVolume || !entries) return none;
    for (const std::string& name : *entries) {
        if (hasPrefix(name, ".")) continue;
        const std::string path = std::string(kVolumesFolder) + "/" + name;
        if (!pathIsFolderFollowingLinks(source, path)) continue;
        if (volumeIdentifier(source, path) == blessedVolume) return {path, path + *blessed};
    }
    return none;
}

std::string QVOSSystemInfoDiscoverer::discoverDomainWithUsername(SystemSource& source, const std::string& username) {
    // Nobody at the console: no record has an empty name.
    if (username.empty()) return "";
    const DictionaryRef record = source.fact(facts::kDirectoryUser, username).dictionary();
    const ArrayRef names = record ? record->get("metaRecordName").array() : nullptr;
    if (!names || names->empty() || !names->front().string()) return "";
    return domainFromDistinguishedName(*names->front().string());
}

std::string QVOSSystemInfoDiscoverer::currentHumanUsername(SystemSource& source) {
    const DictionaryRef users = source.fact(facts::kMacConsoleUser).dictionary();
    const std::string consoleUser = textIn(users, "user").value_or("");
    if (consoleUser.empty()) return textIn(users, "processUser").value_or("");
    if (consoleUser == kLoginWindowUser) return "";
    return consoleUser;
}

std::optional<std::string> QVOSSystemInfoDiscoverer::localeOfUserWithUsername(SystemSource& source,
                                                                               const std::string& username) {
    const std::optional<std::string> fallback = currentLocaleIdentifier(source);
    if (username.empty()) return fallback;
    const std::string path = preferencesPathOf(username);
    if (!pathExistsFollowingLinks(source, path)) return fallback;
    return appleLocaleOf(source.readFile(path, kMaximumPreferencesBytes));
}

std::string QVOSSystemInfoDiscoverer::systemIntegrityProtectionStatus(SystemSource& source) {
    if (!pathExistsFollowingLinks(source, kCsrutilPath)) return "N/A";
    const std::optional<std::string> output = source.runTool({kCsrutilPath, "status"});
    return output && output->find(kEnabledMark) != std::string::npos ? "enabled" : "disabled";
}

}  // namespace tov
