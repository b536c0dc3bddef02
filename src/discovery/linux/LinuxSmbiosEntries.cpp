#include "discovery/linux/LinuxSmbiosEntries.h"

#include <charconv>
#include <map>
#include <optional>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

// "17-3" gives 3 when the type is 17; other names give nothing.
std::optional<std::uint32_t> instanceOf(const std::string& name, const std::string& prefix) {
    if (!hasPrefix(name, prefix)) return std::nullopt;
    std::uint32_t instance = 0;
    const char* digits = name.data() + prefix.size();
    const char* end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(digits, end, instance);
    if (error != std::errc() || stop != end || digits == end) return std::nullopt;
    return instance;
}

}  // namespace

std::vector<std::string> smbiosEntriesOfType(SystemSource& source, std::uint8_t type) {
    const std::optional<std::vector<std::string>> names = source.listFolder(kSmbiosEntriesFolder);
    if (!names) {
        QVSLogger::debug("No SMBIOS entries: %s cannot be listed.", kSmbiosEntriesFolder);
        return {};
    }
    const std::string prefix = std::to_string(type) + "-";
    std::map<std::uint32_t, std::string> folders;
    for (const std::string& name : *names) {
        if (const std::optional<std::uint32_t> instance = instanceOf(name, prefix)) folders.emplace(*instance, name);
        if (folders.size() >= kMaximumSmbiosEntriesOfType) break;
    }
    std::vector<std::string> entries;
    for (const auto& [instance, name] : folders) {
        const std::string path = std::string(kSmbiosEntriesFolder) + "/" + name + "/raw";
        if (std::optional<std::string> raw = source.readFile(path, kSmbiosEntryReadLimit)) {
            entries.push_back(std::move(*raw));
        } else {
            QVSLogger::debug("The SMBIOS entry %s cannot be read; it is left out.", path.c_str());
        }
    }
    return entries;
}

}  // namespace tov
