#include "discovery/macos/BlessInfo.h"

#include <algorithm>

namespace tov {
namespace {

constexpr std::string_view kBlessedFolderPhrase = "Blessed System Folder is";

}  // namespace

std::optional<std::string> blessedSystemFolder(std::string_view blessOutput) {
    for (std::size_t start = 0; start <= blessOutput.size();) {
        const std::size_t end = std::min(blessOutput.find('\n', start), blessOutput.size());
        const std::string_view line = blessOutput.substr(start, end - start);
        const std::size_t phrase = line.find(kBlessedFolderPhrase);
        if (phrase != std::string_view::npos) {
            const std::size_t path = phrase + kBlessedFolderPhrase.size() + 1;
            return std::string(path < line.size() ? line.substr(path) : std::string_view());
        }
        start = end + 1;
    }
    return std::nullopt;
}

}  // namespace tov
