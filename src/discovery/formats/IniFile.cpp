#include "discovery/formats/IniFile.h"

#include <algorithm>

#include "common/TextUtils.h"

namespace tov {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\f\v";
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return {};
    const std::size_t end = text.find_last_not_of(kBlanks);
    return text.substr(start, end - start + 1);
}

bool isComment(std::string_view line) { return line.front() == '#' || line.front() == ';'; }

// "[name]" gives the trimmed name.
std::optional<std::string> sectionName(std::string_view line) {
    if (line.front() != '[' || line.back() != ']' || line.size() < 2) return std::nullopt;
    return std::string(trimmed(line.substr(1, line.size() - 2)));
}

}  // namespace

IniFile IniFile::parse(std::string_view text) {
    IniFile file;
    std::string section;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || isComment(line)) continue;
        if (std::optional<std::string> name = sectionName(line)) {
            section = *name;
            file.addSection(std::move(*name));
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos || equals == 0) continue;
        file.settings_.push_back(
            {section, std::string(trimmed(line.substr(0, equals))), std::string(trimmed(line.substr(equals + 1)))});
    }
    return file;
}

std::optional<std::string> IniFile::value(std::string_view section, std::string_view key) const {
    const auto setting = std::find_if(settings_.rbegin(), settings_.rend(), [&](const Setting& candidate) {
        return equalsIgnoringCase(candidate.section, section) && equalsIgnoringCase(candidate.key, key);
    });
    if (setting == settings_.rend()) return std::nullopt;
    return setting->value;
}

void IniFile::addSection(std::string name) {
    if (lowercaseSections_.insert(asciiLowercase(name)).second) sections_.push_back(std::move(name));
}

}  // namespace tov
