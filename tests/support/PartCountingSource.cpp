#include "support/PartCountingSource.h"

#include <algorithm>
#include <utility>

namespace tov::testing {

PartCountingSource& PartCountingSource::held(const std::string& path, std::string bytes) {
    held_[path] = std::move(bytes);
    return *this;
}

std::optional<std::string> PartCountingSource::readFile(const std::string& path, std::uint64_t maximumBytes) {
    ++wholeReads;
    const auto found = held_.find(path);
    if (found == held_.end() || found->second.size() > maximumBytes) return std::nullopt;
    bytesGiven += found->second.size();
    return found->second;
}

std::optional<std::string> PartCountingSource::readFilePart(const std::string& path, std::uint64_t offset,
                                                            std::uint64_t length) {
    ++partReads;
    largestPartAsked = std::max(largestPartAsked, length);
    const auto found = held_.find(path);
    if (found == held_.end()) return std::nullopt;
    const std::string& bytes = found->second;
    if (offset >= bytes.size()) return std::string();
    std::string part = bytes.substr(static_cast<std::size_t>(offset),
                                    static_cast<std::size_t>(std::min<std::uint64_t>(length, bytes.size() - offset)));
    bytesGiven += part.size();
    return part;
}

void PartCountingSource::resetCounts() {
    wholeReads = 0;
    partReads = 0;
    largestPartAsked = 0;
    bytesGiven = 0;
}

}  // namespace tov::testing
