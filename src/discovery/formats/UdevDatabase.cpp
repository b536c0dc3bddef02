#include "discovery/formats/UdevDatabase.h"

#include "common/QVSLogger.h"

namespace tov {
namespace {

int hexDigitValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

bool startsHexEscape(std::string_view text, std::size_t index) {
    return index + 3 < text.size() && text[index] == '\\' && text[index + 1] == 'x' &&
           hexDigitValue(text[index + 2]) >= 0 && hexDigitValue(text[index + 3]) >= 0;
}

std::string_view withoutCarriageReturn(std::string_view line) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
}

void addProperty(UdevRecord& record, std::string_view value) {
    const std::size_t equals = value.find('=');
    if (equals == std::string_view::npos || equals == 0) return;
    if (record.properties.size() >= UdevDatabase::kMaximumEntries) return;
    record.properties.emplace_back(std::string(value.substr(0, equals)), std::string(value.substr(equals + 1)));
}

void addEntry(std::vector<std::string>& entries, std::string_view value) {
    if (value.empty() || entries.size() >= UdevDatabase::kMaximumEntries) return;
    entries.emplace_back(value);
}

void addLine(UdevRecord& record, std::string_view line) {
    if (line.size() < 2 || line[1] != ':') return;
    const std::string_view value = line.substr(2);
    switch (line[0]) {
        case 'S': addEntry(record.links, value); break;
        case 'E': addProperty(record, value); break;
        case 'G': addEntry(record.tags, value); break;
        default: break;
    }
}

}  // namespace

std::optional<std::string> UdevRecord::property(std::string_view key) const {
    for (auto entry = properties.rbegin(); entry != properties.rend(); ++entry) {
        if (entry->first == key) return entry->second;
    }
    return std::nullopt;
}

std::optional<std::string> UdevRecord::decodedProperty(std::string_view key) const {
    if (std::optional<std::string> encoded = property(std::string(key) + "_ENC")) {
        return UdevDatabase::decodeHexEscapes(*encoded);
    }
    return property(key);
}

UdevRecord UdevDatabase::parse(std::string_view text) {
    UdevRecord record;
    std::size_t position = 0;
    while (position < text.size()) {
        std::size_t end = text.find('\n', position);
        if (end == std::string_view::npos) end = text.size();
        addLine(record, withoutCarriageReturn(text.substr(position, end - position)));
        position = end + 1;
    }
    return record;
}

std::string UdevDatabase::blockDevicePath(unsigned major, unsigned minor) {
    return std::string(kDataFolder) + "/b" + std::to_string(major) + ":" + std::to_string(minor);
}

std::optional<UdevRecord> UdevDatabase::readBlockDevice(SystemSource& source, unsigned major, unsigned minor) {
    const std::string path = blockDevicePath(major, minor);
    const std::optional<std::string> text = source.readFile(path, kReadLimit);
    if (!text) {
        QVSLogger::debug("The udev record %s cannot be read.", path.c_str());
        return std::nullopt;
    }
    return parse(*text);
}

std::string UdevDatabase::decodeHexEscapes(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (startsHexEscape(text, index)) {
            decoded.push_back(static_cast<char>(hexDigitValue(text[index + 2]) * 16 + hexDigitValue(text[index + 3])));
            index += 3;
        } else {
            decoded.push_back(text[index]);
        }
    }
    return decoded;
}

}  // namespace tov
