#include "discovery/linux/LinuxDirectoryDomain.h"

#include <optional>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/formats/IniFile.h"

namespace tov {
namespace {

constexpr const char* kSssdConfigPath = "/etc/sssd/sssd.conf";
constexpr const char* kSambaConfigPath = "/etc/samba/smb.conf";
constexpr std::uint64_t kConfigReadLimit = 1024 * 1024;
constexpr std::string_view kSssdDomainSectionPrefix = "domain/";

std::optional<IniFile> readIniFile(SystemSource& source, const char* path) {
    const std::optional<std::string> text = source.readFile(path, kConfigReadLimit);
    if (!text) {
        QVSLogger::debug("%s cannot be read (missing, unreadable or too large).", path);
        return std::nullopt;
    }
    return IniFile::parse(*text);
}

std::string firstListItem(std::string_view list) {
    return trimWhitespaceAndNewlines(list.substr(0, list.find(',')));
}

// "domains =" of [sssd], else the first [domain/NAME] section.
std::string sssdDomain(const IniFile& config) {
    if (std::optional<std::string> domains = config.value("sssd", "domains")) {
        std::string first = firstListItem(*domains);
        if (!first.empty()) return first;
    }
    for (const std::string& section : config.sections()) {
        if (hasPrefix(asciiLowercase(section), kSssdDomainSectionPrefix)) {
            return trimWhitespaceAndNewlines(std::string_view(section).substr(kSssdDomainSectionPrefix.size()));
        }
    }
    return "";
}

std::string winbindRealm(const IniFile& config) { return config.value("global", "realm").value_or(""); }

std::string joinedDomain(SystemSource& source) {
    if (std::optional<IniFile> sssd = readIniFile(source, kSssdConfigPath)) {
        std::string domain = sssdDomain(*sssd);
        if (!domain.empty()) return domain;
    }
    if (std::optional<IniFile> samba = readIniFile(source, kSambaConfigPath)) return winbindRealm(*samba);
    return "";
}

}  // namespace

std::string firstTwoDomainLabels(std::string_view domain) {
    const std::size_t firstDot = domain.find('.');
    if (firstDot == std::string_view::npos || firstDot == 0) return "";
    const std::size_t secondDot = domain.find('.', firstDot + 1);
    const std::string_view twoLabels = domain.substr(0, secondDot);
    if (twoLabels.size() == firstDot + 1) return "";
    return asciiLowercase(std::string(twoLabels));
}

std::string linuxDirectoryDomain(SystemSource& source) {
    return firstTwoDomainLabels(printableText(joinedDomain(source)));
}

}  // namespace tov
