#include "discovery/linux/LinuxKeyValueFiles.h"

#include "common/PrintableText.h"
#include "common/QVSLogger.h"

namespace tov {

std::optional<std::string> printableSetting(const OsRelease& settings, std::string_view key) {
    std::optional<std::string> value = settings.nonEmptyValue(key);
    if (value) value = printableText(*value);
    return value;
}

std::optional<OsRelease> readKeyValueFile(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = source.readFile(path, kKeyValueFileReadLimit);
    if (!text) {
        QVSLogger::debug("%s cannot be read (missing, unreadable or larger than %llu bytes).", path.c_str(),
                         static_cast<unsigned long long>(kKeyValueFileReadLimit));
        return std::nullopt;
    }
    return OsRelease::parse(*text);
}

std::optional<OsReleaseFile> readOsReleaseFile(SystemSource& source) {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        if (std::optional<OsRelease> release = readKeyValueFile(source, path)) {
            return OsReleaseFile{path, std::move(*release)};
        }
    }
    return std::nullopt;
}

}  // namespace tov
