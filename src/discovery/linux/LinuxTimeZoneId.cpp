#include "discovery/linux/LinuxTimeZoneId.h"

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

constexpr const char* kLocaltimePath = "/etc/localtime";
constexpr const char* kTimezonePath = "/etc/timezone";
constexpr std::string_view kZoneinfoFolder = "zoneinfo/";
constexpr std::uint64_t kTimezoneReadLimit = 4096;
// The longest id of the time-zone database is about 30 characters.
constexpr std::size_t kLongestZoneId = 128;

// An id is the database's form: letters, digits and "/_-+" only, never climbing up.
bool isZoneId(std::string_view id) {
    if (id.empty() || id.size() > kLongestZoneId || id.find("..") != std::string_view::npos) return false;
    for (char character : id) {
        const bool allowed = (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
                             (character >= '0' && character <= '9') || character == '/' || character == '_' ||
                             character == '-' || character == '+';
        if (!allowed) return false;
    }
    return id.front() != '/';
}

std::optional<std::string> zoneIdOfTimezoneFile(SystemSource& source) {
    const std::optional<std::string> text = source.readFile(kTimezonePath, kTimezoneReadLimit);
    if (!text) return std::nullopt;
    std::string id = printableText(std::string_view(*text).substr(0, text->find('\n')));
    if (!isZoneId(id)) {
        QVSLogger::debug("%s holds no time-zone id.", kTimezonePath);
        return std::nullopt;
    }
    return id;
}

}  // namespace

std::optional<std::string> zoneIdOfLocaltimeTarget(std::string_view target) {
    const std::size_t folder = target.rfind(kZoneinfoFolder);
    if (folder == std::string_view::npos) return std::nullopt;
    std::string_view id = target.substr(folder + kZoneinfoFolder.size());
    for (std::string_view variant : {"posix/", "right/"}) {
        if (hasPrefix(id, variant)) id.remove_prefix(variant.size());
    }
    if (!isZoneId(id)) return std::nullopt;
    return std::string(id);
}

std::string linuxTimeZoneId(SystemSource& source) {
    if (const std::optional<std::string> target = source.readLink(kLocaltimePath)) {
        if (std::optional<std::string> id = zoneIdOfLocaltimeTarget(*target)) return *id;
        QVSLogger::debug("%s points outside the time-zone database.", kLocaltimePath);
    }
    if (std::optional<std::string> id = zoneIdOfTimezoneFile(source)) return *id;
    QVSLogger::debug("No local time zone in %s or %s; UTC is taken.", kLocaltimePath, kTimezonePath);
    return kUtcZoneId;
}

}  // namespace tov
