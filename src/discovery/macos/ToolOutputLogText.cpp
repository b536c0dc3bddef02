#include "discovery/macos/ToolOutputLogText.h"

#include <algorithm>
#include <string>

#include "common/PrintableText.h"

namespace tov {
namespace {

bool isContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

std::string loggedData(std::string_view bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const std::size_t shown = std::min(bytes.size(), kLoggedDataBytes);
    std::string text = "<";
    for (std::size_t at = 0; at < shown; ++at) {
        if (at > 0 && at % 4 == 0) text += ' ';
        const auto byte = static_cast<unsigned char>(bytes[at]);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
    }
    text += '>';
    if (shown < bytes.size()) text += " (" + std::to_string(bytes.size()) + " bytes)";
    return text;
}

std::string loggedText(std::string_view text) {
    if (text.size() <= kLoggedTextBytes) return printableText(text);
    std::size_t cut = kLoggedTextBytes;
    while (cut > 0 && isContinuationByte(text[cut])) --cut;
    return printableText(text.substr(0, cut)) + "...";
}

}  // namespace tov
