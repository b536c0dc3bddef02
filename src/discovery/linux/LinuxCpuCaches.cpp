#include "discovery/linux/LinuxCpuCaches.h"

#include <charconv>
#include <vector>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

constexpr std::uint64_t kAttributeReadLimit = 4096;
constexpr std::uint64_t kKilobytesPerMegabyte = 1024;
// The kernel lists a handful of caches per CPU; a folder with more is not walked further.
constexpr std::size_t kMaximumCaches = 64;

std::optional<std::string> attribute(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = source.readFile(path, kAttributeReadLimit);
    if (!text) return std::nullopt;
    return trimWhitespaceAndNewlines(*text);
}

void keepFirst(std::optional<std::string>& slot, std::optional<std::string> size) {
    if (!slot) slot = std::move(size);
}

}  // namespace

std::optional<std::string> kilobytesOfCacheSize(std::string_view size) {
    const std::string text = trimWhitespaceAndNewlines(size);
    std::uint64_t amount = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), amount);
    if (error != std::errc() || end == text.data()) return std::nullopt;
    const std::string_view unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    if (unit == "K") return std::to_string(amount);
    if (unit == "M" && amount <= UINT64_MAX / kKilobytesPerMegabyte) return std::to_string(amount * kKilobytesPerMegabyte);
    return std::nullopt;
}

LinuxCpuCaches linuxCpuCaches(SystemSource& source, std::uint32_t cpu) {
    LinuxCpuCaches caches;
    const std::string folder = "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/cache";
    const std::optional<std::vector<std::string>> names = source.listFolder(folder);
    if (!names) {
        QVSLogger::debug("No cache sizes: %s cannot be listed.", folder.c_str());
        return caches;
    }
    std::size_t seen = 0;
    for (const std::string& name : *names) {
        if (!hasPrefix(name, "index") || ++seen > kMaximumCaches) continue;
        const std::optional<std::string> level = attribute(source, folder + "/" + name + "/level");
        const std::optional<std::string> size = attribute(source, folder + "/" + name + "/size");
        if (!level || !size) continue;
        if (*level == "2") keepFirst(caches.level2, kilobytesOfCacheSize(*size));
        if (*level == "3") keepFirst(caches.level3, kilobytesOfCacheSize(*size));
    }
    return caches;
}

}  // namespace tov
