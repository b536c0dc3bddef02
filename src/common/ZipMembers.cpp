#include "common/ZipMembers.h"

#include "common/ZipMemberReader.h"

namespace tov {

std::optional<std::string> readZipMembers(const std::string& path, std::uint64_t maximumBytes) {
    ZipMemberReader reader(path);
    if (!reader.isOpen()) return std::nullopt;
    std::string contents;
    char buffer[64 * 1024];
    for (;;) {
        const std::int64_t count = reader.read(buffer, sizeof buffer);
        if (count < 0) return std::nullopt;
        if (count == 0) return contents;
        if (contents.size() + static_cast<std::uint64_t>(count) > maximumBytes) return std::nullopt;
        contents.append(buffer, static_cast<std::size_t>(count));
    }
}

}  // namespace tov
