#include "discovery/SystemSource.h"

#include <algorithm>

namespace tov {

std::optional<std::string> SystemSource::readFilePart(const std::string& path, std::uint64_t offset,
                                                      std::uint64_t length) {
    std::optional<std::string> bytes = readFile(path, kWholeFileLimitForParts);
    if (!bytes) return bytes;
    if (offset >= bytes->size()) return std::string();
    const std::uint64_t available = bytes->size() - offset;
    bytes->resize(static_cast<std::size_t>(offset + std::min(length, available)));
    bytes->erase(0, static_cast<std::size_t>(offset));
    return bytes;
}

}  // namespace tov
