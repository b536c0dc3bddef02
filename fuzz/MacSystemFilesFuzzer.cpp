// Hands arbitrary bytes to the operating-system discoverers of a small fixed Mac as its
// system version file, the output of "bless --info" and the output of "csrutil status".
// The input is split at the first two "\n--part--\n" marks into these three. Whatever the
// bytes, the section must hold texts only, its keys in their fixed order (a leading part
// of the order, "serialNumber" only after all others), the boot volume must be one of the
// machine's visible volumes or "/", and the protection status must follow csrutil's text.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/QVSLogger.h"
#include "discovery/SystemFacts.h"
#include "discovery/SystemSource.h"
#include "discovery/macos/QVCoreFoundationDiscoverer.h"
#include "discovery/macos/QVOSSystemInfoDiscoverer.h"

namespace {

constexpr std::string_view kMark = "\n--part--\n";
constexpr const char* kSystemVersionPath = "/System/Library/CoreServices/SystemVersion.plist";
constexpr const char* kPreferencesPath = "/Users/anna/Library/Preferences/.GlobalPreferences.plist";
constexpr const char* kSerialNumber = "C02XG0FDH7JY";

const std::vector<std::string> kKeys{"osName",          "systemManufacturer", "osManufacturer", "domain",
                                     "osVersion",       "systemType",         "systemName",     "username",
                                     "bootDevice",      "systemDirectory",    "userLocale",     "systemModel",
                                     "systemIntegrityProtectionStatus", "serialNumber"};

tov::Value dictionaryOf(std::initializer_list<std::pair<const char*, tov::Value>> entries) {
    tov::DictionaryRef dictionary = tov::makeDictionary();
    for (const auto& [key, value] : entries) dictionary->set(key, value);
    return tov::Value(dictionary);
}

// "/Volumes" holds a hidden folder and "Other" (each a volume of its own) and "Macintosh
// HD", a link to "/". The blessed folder is on the root volume when its path starts with
// "/System/", on "Other" when it starts with "/Other/", and on no known volume otherwise.
class FixedMac : public tov::SystemSource {
public:
    FixedMac(std::string_view systemVersion, std::string_view blessInfo, std::string_view csrutilStatus)
        : systemVersion_(systemVersion), blessInfo_(blessInfo), csrutilStatus_(csrutilStatus) {}

    std::string platform() const override { return kMacOSPlatform; }
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override {
        if (argv == std::vector<std::string>{"/usr/sbin/bless", "--info"}) return blessInfo_;
        if (argv == std::vector<std::string>{"/usr/bin/csrutil", "status"}) return csrutilStatus_;
        return std::nullopt;
    }
    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override {
        std::optional<std::string> bytes;
        if (path == kSystemVersionPath) bytes = systemVersion_;
        if (path == kPreferencesPath) {
            bytes = "<plist version=\"1.0\"><dict><key>AppleLocale</key><string>de_CH</string></dict></plist>";
        }
        if (bytes && bytes->size() > maximumBytes) return std::nullopt;
        return bytes;
    }
    std::optional<std::vector<std::string>> listFolder(const std::string& path) override {
        if (path == "/Volumes") return std::vector<std::string>{".hidden", "Macintosh HD", "Other"};
        if (path == "/Volumes/Macintosh HD") return std::vector<std::string>{"System", "Users", "Volumes"};
        if (path == "/Volumes/Other" || path == "/Volumes/.hidden") return std::vector<std::string>{};
        return std::nullopt;
    }
    std::optional<std::string> readLink(const std::string& path) override {
        if (path == "/Volumes/Macintosh HD") return "/";
        return std::nullopt;
    }
    tov::PathKind pathKind(const std::string& path) override {
        if (path == "/Volumes/Macintosh HD") return tov::PathKind::Link;
        if (path == "/Volumes/Other" || path == "/Volumes/.hidden") return tov::PathKind::Folder;
        if (path == "/usr/bin/csrutil" || path == kSystemVersionPath || path == kPreferencesPath) {
            return tov::PathKind::File;
        }
        return tov::PathKind::None;
    }
    tov::Value fact(const std::string& name, const std::string& key) override {
        namespace facts = tov::facts;
        if (name == facts::kMacConsoleUser) {
            return dictionaryOf({{"user", tov::Value("anna")}, {"processUser", tov::Value("root")}});
        }
        if (name == facts::kHostAndLocale) {
            return dictionaryOf({{"localizedName", tov::Value("Anna's Mac")}, {"localeIdentifier", tov::Value("en_US")}});
        }
        if (name == facts::kDirectoryUser && key == "anna") {
            const tov::Value names(tov::makeArray({tov::Value("CN=anna,DC=corp,DC=example,DC=com")}));
            return dictionaryOf({{"metaRecordName", names}});
        }
        if (name == facts::kSysctl && key == "hw.machine") return tov::Value("x86_64");
        if (name == facts::kSysctl && key == "hw.model") return tov::Value("MacBookPro16,1");
        if (name == facts::kVolumeIdentifier) return volumeIdentifier(key);
        if (name == facts::kRegistry && key == "IOPlatformExpertDevice") {
            const tov::Value properties = dictionaryOf({{"IOPlatformSerialNumber", tov::Value(kSerialNumber)}});
            return tov::Value(tov::makeArray({dictionaryOf({{"properties", properties}})}));
        }
        return tov::Value();
    }

private:
    static tov::Value volumeIdentifier(const std::string& path) {
        const bool onRoot = path == "/Volumes/Macintosh HD" || path == "/Volumes/.hidden" || path.rfind("/System/", 0) == 0;
        const bool onOther = path == "/Volumes/Other" || path.rfind("/Other/", 0) == 0;
        if (!onRoot && !onOther) return tov::Value();
        return dictionaryOf({{"identifier", tov::Value(onRoot ? "root" : "other")}});
    }

    std::string systemVersion_;
    std::string blessInfo_;
    std::string csrutilStatus_;
};

void require(bool condition) {
    if (!condition) std::abort();
}

void checkKeyOrder(const tov::Dictionary& section, bool complete) {
    std::size_t index = 0;
    for (const auto& [key, value] : section) {
        require(index < kKeys.size() && key == kKeys[index]);
        require(value.isString());
        ++index;
    }
    require(complete == (index >= kKeys.size() - 1));
    if (section.contains("serialNumber")) require(section.get("serialNumber") == tov::Value(kSerialNumber));
}

void checkBootVolume(const tov::Dictionary& section, std::string_view blessInfo) {
    if (!section.contains("systemDirectory")) return;
    const std::string device = *section.get("bootDevice").string();
    const std::string directory = *section.get("systemDirectory").string();
    if (device == "/") {
        require(directory == "/");
        return;
    }
    require(device == "/Volumes/Macintosh HD" || device == "/Volumes/Other");
    require(directory.rfind(device, 0) == 0);
    const std::string blessed = directory.substr(device.size());
    require(blessed.rfind(device == "/Volumes/Other" ? "/Other/" : "/System/", 0) == 0);
    require(blessInfo.find("Blessed System Folder is") != std::string_view::npos);
    require(blessInfo.find(blessed) != std::string_view::npos);
}

void checkValues(const tov::Dictionary& section, std::string_view csrutilStatus) {
    if (section.contains("osManufacturer")) require(section.get("osManufacturer") == section.get("systemManufacturer"));
    if (section.contains("osVersion")) {
        const std::string version = *section.get("osVersion").string();
        require(version.size() >= 3 && version.back() == ')' && version.find(" (") != std::string::npos);
    }
    if (section.contains("domain")) require(section.get("domain") == tov::Value("corp.example"));
    if (section.contains("userLocale")) require(section.get("userLocale") == tov::Value("de_CH"));
    if (section.contains("systemIntegrityProtectionStatus")) {
        const bool enabled = csrutilStatus.find(": enabled") != std::string_view::npos;
        require(section.get("systemIntegrityProtectionStatus") == tov::Value(enabled ? "enabled" : "disabled"));
    }
}

std::string_view takePart(std::string_view& rest) {
    const std::size_t mark = rest.find(kMark);
    const std::string_view part = rest.substr(0, mark);
    rest = mark == std::string_view::npos ? std::string_view() : rest.substr(mark + kMark.size());
    return part;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tov::QVSLogger::setMinimumLogLevel("CRITICAL");
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    const std::string_view systemVersion = takePart(rest);
    const std::string_view blessInfo = takePart(rest);
    const std::string_view csrutilStatus = rest;
    auto mac = std::make_shared<FixedMac>(systemVersion, blessInfo, csrutilStatus);

    tov::Dictionary section;
    const bool complete = tov::QVOSSystemInfoDiscoverer::discoverOS(*mac, section);
    checkKeyOrder(section, complete);
    checkBootVolume(section, blessInfo);
    checkValues(section, csrutilStatus);

    const tov::ArrayRef systems = tov::QVCoreFoundationDiscoverer(mac).discoverOperatingSystem();
    require(systems->size() == 1 && (*systems)[0].isRecord());
    return 0;
}
