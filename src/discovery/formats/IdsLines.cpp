#include "discovery/formats/IdsLines.h"

#include <cstdio>

#include "common/TextUtils.h"

namespace tov {
namespace {

int lowerCaseHexDigitValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    return -1;
}

}  // namespace

std::string idsEntryPrefix(std::uint16_t id) {
    char prefix[kIdsEntryPrefixSize + 1];
    std::snprintf(prefix, sizeof prefix, "%04x  ", static_cast<unsigned>(id));
    return prefix;
}

std::optional<std::string> idsEntryName(std::string_view line, std::size_t prefixSize) {
    std::string name = trimWhitespaceAndNewlines(line.substr(prefixSize));
    if (name.empty()) return std::nullopt;
    return name;
}

bool isIgnorableIdsLine(std::string_view line) { return line.empty() || line == "\r" || line.front() == '#'; }

bool endsIdsVendorBlock(std::string_view line) { return !hasPrefix(line, "\t") && !isIgnorableIdsLine(line); }

std::optional<std::uint16_t> idsVendorLineId(std::string_view line) {
    if (line.size() < kIdsEntryPrefixSize || line.substr(4, 2) != "  ") return std::nullopt;
    unsigned id = 0;
    for (char character : line.substr(0, 4)) {
        const int digit = lowerCaseHexDigitValue(character);
        if (digit < 0) return std::nullopt;
        id = id * 16 + static_cast<unsigned>(digit);
    }
    return static_cast<std::uint16_t>(id);
}

}  // namespace tov
