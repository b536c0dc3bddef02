#include "discovery/formats/HardwareIds.h"

#include <array>
#include <cstdio>
#include <utility>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

// Where distributions install the databases: Debian's pci.ids and usb.ids packages (the
// latter links /usr/share/misc/usb.ids to /var/lib/usbutils/usb.ids), and the hwdata
// package of Fedora and Red Hat.
constexpr std::array<const char*, 2> kPciPaths{"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"};
constexpr std::array<const char*, 3> kUsbPaths{"/usr/share/misc/usb.ids", "/var/lib/usbutils/usb.ids",
                                               "/usr/share/hwdata/usb.ids"};

const char* databaseName(IdsDatabase database) { return database == IdsDatabase::Pci ? "pci.ids" : "usb.ids"; }

// The id as the databases write it: four lower-case hex digits and two blanks.
std::string entryPrefix(std::uint16_t id) { return hexIdText(id).substr(2) + "  "; }

std::string_view lineAt(std::string_view text, std::size_t start) {
    const std::size_t end = text.find('\n', start);
    return text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
}

// Where the line after the one starting at start begins; text.size() at the end.
std::size_t nextLineStart(std::string_view text, std::size_t start) {
    const std::size_t end = text.find('\n', start);
    return end == std::string_view::npos ? text.size() : end + 1;
}

// The first line that starts with prefix, or npos.
std::size_t findLineStartingWith(std::string_view text, std::string_view prefix) {
    for (std::size_t position = text.find(prefix); position != std::string_view::npos;
         position = text.find(prefix, position + 1)) {
        if (position == 0 || text[position - 1] == '\n') return position;
    }
    return std::string_view::npos;
}

// The text after the entry's prefix on its line, trimmed; nothing when it is empty.
std::optional<std::string> entryName(std::string_view line, std::size_t prefixSize) {
    std::string name = trimWhitespaceAndNewlines(line.substr(prefixSize));
    if (name.empty()) return std::nullopt;
    return name;
}

// Comments and blank lines may stand between a vendor's lines.
bool isIgnorableLine(std::string_view line) { return line.empty() || line == "\r" || line.front() == '#'; }

int hexDigitValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

}  // namespace

HardwareIds::HardwareIds(std::shared_ptr<SystemSource> source) : source_(std::move(source)) {}

std::string HardwareIds::vendorName(IdsDatabase database, std::uint16_t vendor) {
    const std::optional<std::string>& text = textOf(database);
    std::optional<std::string> name = text ? idsVendorName(*text, vendor) : std::nullopt;
    return name ? std::move(*name) : hexIdText(vendor);
}

std::string HardwareIds::deviceName(IdsDatabase database, std::uint16_t vendor, std::uint16_t device) {
    const std::optional<std::string>& text = textOf(database);
    std::optional<std::string> name = text ? idsDeviceName(*text, vendor, device) : std::nullopt;
    return name ? std::move(*name) : hexIdText(device);
}

const std::optional<std::string>& HardwareIds::textOf(IdsDatabase database) {
    LoadedText& text = database == IdsDatabase::Pci ? pci_ : usb_;
    if (!text.loaded) {
        text.bytes = readDatabase(database);
        text.loaded = true;
    }
    return text.bytes;
}

std::optional<std::string> HardwareIds::readDatabase(IdsDatabase database) {
    const auto read = [this](const auto& paths) -> std::optional<std::string> {
        for (const char* path : paths) {
            if (std::optional<std::string> bytes = source_->readFile(path, kReadLimit)) return bytes;
        }
        return std::nullopt;
    };
    std::optional<std::string> bytes = database == IdsDatabase::Pci ? read(kPciPaths) : read(kUsbPaths);
    if (!bytes) {
        QVSLogger::debug("No %s database can be read (missing or larger than %llu bytes); ids stay numbers.",
                         databaseName(database), static_cast<unsigned long long>(kReadLimit));
    }
    return bytes;
}

std::string hexIdText(std::uint16_t id) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%04x", static_cast<unsigned>(id));
    return text;
}

std::optional<std::uint16_t> parseHardwareId(std::string_view text) {
    const std::string trimmed = trimWhitespaceAndNewlines(text);
    std::string_view digits = trimmed;
    if (hasPrefix(digits, "0x") || hasPrefix(digits, "0X")) digits.remove_prefix(2);
    if (digits.empty() || digits.size() > 4) return std::nullopt;
    unsigned value = 0;
    for (char character : digits) {
        const int digit = hexDigitValue(character);
        if (digit < 0) return std::nullopt;
        value = value * 16 + static_cast<unsigned>(digit);
    }
    return static_cast<std::uint16_t>(value);
}

std::optional<std::string> idsVendorName(std::string_view text, std::uint16_t vendor) {
    const std::string prefix = entryPrefix(vendor);
    const std::size_t start = findLineStartingWith(text, prefix);
    if (start == std::string_view::npos) return std::nullopt;
    return entryName(lineAt(text, start), prefix.size());
}

std::optional<std::string> idsDeviceName(std::string_view text, std::uint16_t vendor, std::uint16_t device) {
    const std::size_t vendorStart = findLineStartingWith(text, entryPrefix(vendor));
    if (vendorStart == std::string_view::npos) return std::nullopt;
    const std::string prefix = "\t" + entryPrefix(device);
    for (std::size_t start = nextLineStart(text, vendorStart); start < text.size();
         start = nextLineStart(text, start)) {
        const std::string_view line = lineAt(text, start);
        if (hasPrefix(line, prefix)) return entryName(line, prefix.size());
        if (!hasPrefix(line, "\t") && !isIgnorableLine(line)) return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace tov
