#include "discovery/formats/OsRelease.h"

#include <algorithm>

namespace tov {
namespace {

bool isBlank(char character) { return character == ' ' || character == '\t'; }

bool isKeyStart(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') || character == '_';
}

bool isKeyCharacter(char character) { return isKeyStart(character) || (character >= '0' && character <= '9'); }

bool escapableInDoubleQuotes(char character) {
    return character == '$' || character == '`' || character == '"' || character == '\\';
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return text;
}

// Reads a key at the start of text and consumes it.
std::optional<std::string> takeKey(std::string_view& text) {
    if (text.empty() || !isKeyStart(text.front())) return std::nullopt;
    std::size_t length = 1;
    while (length < text.size() && isKeyCharacter(text[length])) ++length;
    std::string key(text.substr(0, length));
    text.remove_prefix(length);
    return key;
}

// Reads a double-quoted part whose opening quote is already consumed; false when the line
// ends before the closing quote.
bool takeDoubleQuoted(std::string_view& text, std::string& value) {
    while (!text.empty()) {
        const char character = text.front();
        text.remove_prefix(1);
        if (character == '"') return true;
        if (character == '\\' && !text.empty() && escapableInDoubleQuotes(text.front())) {
            value.push_back(text.front());
            text.remove_prefix(1);
        } else {
            value.push_back(character);
        }
    }
    return false;
}

bool takeSingleQuoted(std::string_view& text, std::string& value) {
    const std::size_t end = text.find('\'');
    if (end == std::string_view::npos) return false;
    value.append(text.substr(0, end));
    text.remove_prefix(end + 1);
    return true;
}

// Reads the value up to the first unquoted blank; nothing when a quote is not closed.
std::optional<std::string> takeValue(std::string_view& text) {
    std::string value;
    while (!text.empty() && !isBlank(text.front())) {
        const char character = text.front();
        text.remove_prefix(1);
        if (character == '"') {
            if (!takeDoubleQuoted(text, value)) return std::nullopt;
        } else if (character == '\'') {
            if (!takeSingleQuoted(text, value)) return std::nullopt;
        } else if (character == '\\') {
            if (!text.empty()) {
                value.push_back(text.front());
                text.remove_prefix(1);
            }
        } else {
            value.push_back(character);
        }
    }
    return value;
}

std::optional<OsRelease::Entry> parseLine(std::string_view line) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    line = withoutLeadingBlanks(line);
    std::optional<std::string> key = takeKey(line);
    if (!key) return std::nullopt;
    line = withoutLeadingBlanks(line);
    if (line.empty() || line.front() != '=') return std::nullopt;
    line = withoutLeadingBlanks(line.substr(1));
    std::optional<std::string> value = takeValue(line);
    if (!value) return std::nullopt;
    line = withoutLeadingBlanks(line);
    if (!line.empty() && line.front() != '#') return std::nullopt;
    return OsRelease::Entry{std::move(*key), std::move(*value)};
}

}  // namespace

OsRelease OsRelease::parse(std::string_view text) {
    OsRelease release;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (std::optional<Entry> entry = parseLine(text.substr(0, end))) {
            release.assign(std::move(entry->first), std::move(entry->second));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return release;
}

std::optional<std::string> OsRelease::value(std::string_view key) const {
    const auto position = positions_.find(std::string(key));
    if (position == positions_.end()) return std::nullopt;
    return entries_[position->second].second;
}

std::optional<std::string> OsRelease::nonEmptyValue(std::string_view key) const {
    std::optional<std::string> found = value(key);
    if (found && found->empty()) return std::nullopt;
    return found;
}

void OsRelease::assign(std::string key, std::string value) {
    const auto [position, added] = positions_.try_emplace(key, entries_.size());
    if (added) {
        entries_.emplace_back(std::move(key), std::move(value));
    } else {
        entries_[position->second].second = std::move(value);
    }
}

}  // namespace tov
