#include "discovery/linux/MountInfo.h"

#include <charconv>

#include "common/QVSLogger.h"

namespace tov {
namespace {

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    std::size_t position = 0;
    while (position < line.size()) {
        const std::size_t start = line.find_first_not_of(' ', position);
        if (start == std::string_view::npos) break;
        std::size_t end = line.find(' ', start);
        if (end == std::string_view::npos) end = line.size();
        fields.push_back(line.substr(start, end - start));
        position = end;
    }
    return fields;
}

bool parseNumber(std::string_view text, unsigned& number) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

bool parseDeviceNumbers(std::string_view text, MountEntry& entry) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return false;
    return parseNumber(text.substr(0, colon), entry.major) && parseNumber(text.substr(colon + 1), entry.minor);
}

bool isOctalDigit(char character) { return character >= '0' && character <= '7'; }

// Fields: id, parent id, major:minor, root, mount point, options, optional fields up
// to "-", then file-system type, source and super options.
std::optional<MountEntry> parseLine(std::string_view line) {
    const std::vector<std::string_view> fields = fieldsOf(line);
    if (fields.size() < 9) return std::nullopt;
    MountEntry entry;
    if (!parseDeviceNumbers(fields[2], entry)) return std::nullopt;
    entry.root = MountInfo::decodeOctalEscapes(fields[3]);
    entry.mountPoint = MountInfo::decodeOctalEscapes(fields[4]);
    std::size_t separator = 6;
    while (separator < fields.size() && fields[separator] != "-") ++separator;
    if (separator + 2 >= fields.size()) return std::nullopt;
    entry.fileSystem = MountInfo::decodeOctalEscapes(fields[separator + 1]);
    entry.source = MountInfo::decodeOctalEscapes(fields[separator + 2]);
    return entry;
}

}  // namespace

std::string MountInfo::decodeOctalEscapes(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '\\' && index + 3 < text.size() && isOctalDigit(text[index + 1]) &&
            isOctalDigit(text[index + 2]) && isOctalDigit(text[index + 3])) {
            const int value = (text[index + 1] - '0') * 64 + (text[index + 2] - '0') * 8 + (text[index + 3] - '0');
            decoded.push_back(static_cast<char>(value & 0xFF));
            index += 3;
        } else {
            decoded.push_back(text[index]);
        }
    }
    return decoded;
}

std::vector<MountEntry> MountInfo::parse(std::string_view text) {
    std::vector<MountEntry> entries;
    std::size_t position = 0;
    while (position < text.size()) {
        std::size_t end = text.find('\n', position);
        if (end == std::string_view::npos) end = text.size();
        if (std::optional<MountEntry> entry = parseLine(text.substr(position, end - position))) {
            entries.push_back(std::move(*entry));
        }
        position = end + 1;
    }
    return entries;
}

std::optional<std::vector<MountEntry>> MountInfo::read(SystemSource& source) {
    const std::optional<std::string> text = source.readFile(kPath, kReadLimit);
    if (!text) {
        QVSLogger::debug("The mount table %s cannot be read.", kPath);
        return std::nullopt;
    }
    return parse(*text);
}

const MountEntry* MountInfo::visibleAt(const std::vector<MountEntry>& entries, std::string_view mountPoint) {
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        if (entry->mountPoint == mountPoint) return &*entry;
    }
    return nullptr;
}

}  // namespace tov
