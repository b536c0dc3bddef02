#include "discovery/formats/InputCapabilities.h"

#include <algorithm>

namespace tov {
namespace {

bool isBlank(char character) { return character == ' ' || character == '\t'; }

int hexDigitValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

// One word of at most wordBits / 4 hex digits.
std::optional<std::uint64_t> parseWord(std::string_view digits, unsigned wordBits) {
    if (digits.empty() || digits.size() > wordBits / 4) return std::nullopt;
    std::uint64_t value = 0;
    for (char character : digits) {
        const int digit = hexDigitValue(character);
        if (digit < 0) return std::nullopt;
        value = value * 16 + static_cast<std::uint64_t>(digit);
    }
    return value;
}

}  // namespace

std::optional<InputCapabilities> InputCapabilities::parse(std::string_view text, unsigned wordBits) {
    if (wordBits != 32 && wordBits != 64) return std::nullopt;
    InputCapabilities capabilities;
    capabilities.wordBits_ = wordBits;
    std::size_t position = 0;
    while (position < text.size()) {
        if (isBlank(text[position]) || text[position] == '\n' || text[position] == '\r') {
            ++position;
            continue;
        }
        std::size_t end = position;
        while (end < text.size() && !isBlank(text[end]) && text[end] != '\n' && text[end] != '\r') ++end;
        if (capabilities.words_.size() == kMaximumWords) return std::nullopt;
        const std::optional<std::uint64_t> word = parseWord(text.substr(position, end - position), wordBits);
        if (!word) return std::nullopt;
        capabilities.words_.push_back(*word);
        position = end;
    }
    if (capabilities.words_.empty()) return std::nullopt;
    std::reverse(capabilities.words_.begin(), capabilities.words_.end());
    return capabilities;
}

bool InputCapabilities::has(unsigned bit) const {
    const std::size_t word = bit / wordBits_;
    if (word >= words_.size()) return false;
    return (words_[word] >> (bit % wordBits_)) & 1U;
}

bool InputCapabilities::hasAll(unsigned first, unsigned last) const {
    for (unsigned bit = first; bit <= last; ++bit) {
        if (!has(bit)) return false;
    }
    return true;
}

bool InputCapabilities::empty() const {
    return std::all_of(words_.begin(), words_.end(), [](std::uint64_t word) { return word == 0; });
}

}  // namespace tov
