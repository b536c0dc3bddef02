#include "discovery/linux/LinuxUserLocale.h"

#include <algorithm>
#include <vector>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/linux/LinuxKeyValueFiles.h"

namespace tov {
namespace {

constexpr const char* kPasswdPath = "/etc/passwd";
constexpr std::uint64_t kPasswdReadLimit = 4 * 1024 * 1024;
constexpr const char* kUserLocaleFile = "/.config/locale.conf";
constexpr const char* kLanguageKey = "LANG";
constexpr const char* kDefaultLocale = "C";
constexpr std::size_t kHomeField = 5;

std::optional<std::string> homeFolderOf(SystemSource& source, const std::string& username) {
    const std::optional<std::string> passwd = source.readFile(kPasswdPath, kPasswdReadLimit);
    if (!passwd) {
        QVSLogger::debug("%s cannot be read: the home folder of %s is unknown.", kPasswdPath, username.c_str());
        return std::nullopt;
    }
    std::optional<std::string> home = homeFolderInPasswd(*passwd, username);
    if (!home) QVSLogger::debug("%s has no home folder for %s.", kPasswdPath, username.c_str());
    return home;
}

// The user's locale file, when it is a regular file (a link there is not followed: the
// user owns it).
std::optional<std::string> userLocaleFilePath(SystemSource& source, const std::string& username) {
    const std::optional<std::string> home = homeFolderOf(source, username);
    if (!home || home->empty() || home->front() != '/') return std::nullopt;
    std::string path = *home + kUserLocaleFile;
    if (source.pathKind(path) != PathKind::File) return std::nullopt;
    return path;
}

}  // namespace

std::string localeWithoutEncoding(std::string_view locale) {
    return printableText(locale.substr(0, std::min(locale.find('.'), locale.find('@'))));
}

std::optional<std::string> homeFolderInPasswd(std::string_view passwd, std::string_view username) {
    while (!passwd.empty()) {
        const std::size_t end = std::min(passwd.find('\n'), passwd.size());
        const std::vector<std::string_view> fields = splitAt(passwd.substr(0, end), ':');
        passwd.remove_prefix(std::min(end + 1, passwd.size()));
        if (fields.size() > kHomeField && fields[0] == username) return std::string(fields[kHomeField]);
    }
    return std::nullopt;
}

std::string linuxSystemLocale(SystemSource& source) {
    for (const char* path : {"/etc/locale.conf", "/etc/default/locale"}) {
        const std::optional<OsRelease> settings = readKeyValueFile(source, path);
        if (!settings) continue;
        if (std::optional<std::string> language = settings->nonEmptyValue(kLanguageKey)) {
            return localeWithoutEncoding(*language);
        }
    }
    return kDefaultLocale;
}

std::optional<std::string> linuxUserLocale(SystemSource& source, const std::string& username) {
    if (username.empty()) return linuxSystemLocale(source);
    const std::optional<std::string> path = userLocaleFilePath(source, username);
    const std::optional<OsRelease> settings = path ? readKeyValueFile(source, *path) : std::nullopt;
    if (!settings) return linuxSystemLocale(source);
    const std::optional<std::string> language = settings->nonEmptyValue(kLanguageKey);
    if (!language) {
        QVSLogger::debug("%s sets no %s: the locale of %s is unknown.", path->c_str(), kLanguageKey, username.c_str());
        return std::nullopt;
    }
    return localeWithoutEncoding(*language);
}

}  // namespace tov
