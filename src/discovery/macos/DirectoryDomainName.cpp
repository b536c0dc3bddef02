#include "discovery/macos/DirectoryDomainName.h"

#include <vector>

namespace tov {
namespace {

constexpr std::string_view kDomainComponentSeparator = ",DC=";

std::vector<std::string_view> splitOn(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> pieces;
    for (std::size_t start = 0;;) {
        const std::size_t found = text.find(separator, start);
        if (found == std::string_view::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, found - start));
        start = found + separator.size();
    }
}

}  // namespace

std::string domainFromDistinguishedName(std::string_view distinguishedName) {
    const std::vector<std::string_view> pieces = splitOn(distinguishedName, kDomainComponentSeparator);
    if (pieces.size() < 3) return "";
    return std::string(pieces[1]) + "." + std::string(pieces[2]);
}

}  // namespace tov
