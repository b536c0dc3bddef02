#include "discovery/macos/AsciiCString.h"

#include <algorithm>

namespace tov {
namespace {

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

std::optional<std::string> asciiCString(const Value& value, std::size_t bufferBytes) {
    const std::string* text = value.string();
    if (!text || text->size() >= bufferBytes || !isAscii(*text)) return std::nullopt;
    return text->substr(0, text->find('\0'));
}

}  // namespace tov
