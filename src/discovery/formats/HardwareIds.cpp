#include "discovery/formats/HardwareIds.h"

#include <array>
#include <cstdio>
#include <utility>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/formats/IdsLines.h"

namespace tov {
namespace {

// Where distributions install the databases: Debian's pci.ids and usb.ids packages (the
// latter links /usr/share/misc/usb.ids to /var/lib/usbutils/usb.ids), and the hwdata
// package of Fedora and Red Hat.
constexpr std::array<const char*, 2> kPciPaths{"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"};
constexpr std::array<const char*, 3> kUsbPaths{"/usr/share/misc/usb.ids", "/var/lib/usbutils/usb.ids",
                                               "/usr/share/hwdata/usb.ids"};

const char* databaseName(IdsDatabase database) { return database == IdsDatabase::Pci ? "pci.ids" : "usb.ids"; }

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

int hexDigitValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

}  // namespace

HardwareIds::HardwareIds(std::shared_ptr<SystemSource> source) : source_(std::move(source)) {}

std::string HardwareIds::vendorName(IdsDatabase database, std::uint16_t vendor) {
    const NameKey key{database, vendor, -1};
    if (const auto known = names_.find(key); known != names_.end()) return known->second;
    IdsFile* file = fileOf(database);
    std::optional<std::string> name = file ? file->vendorName(vendor) : std::nullopt;
    std::string answer = name ? std::move(*name) : hexIdText(vendor);
    remember(key, answer);
    return answer;
}

std::string HardwareIds::deviceName(IdsDatabase database, std::uint16_t vendor, std::uint16_t device) {
    const NameKey key{database, vendor, device};
    if (const auto known = names_.find(key); known != names_.end()) return known->second;
    IdsFile* file = fileOf(database);
    std::optional<std::string> name = file ? file->deviceName(vendor, device) : std::nullopt;
    std::string answer = name ? std::move(*name) : hexIdText(device);
    remember(key, answer);
    return answer;
}

void HardwareIds::remember(const NameKey& key, const std::string& name) {
    if (names_.size() >= kRememberedNames) names_.clear();
    names_.emplace(key, name);
}

IdsFile* HardwareIds::fileOf(IdsDatabase database) {
    OpenedFile& opened = database == IdsDatabase::Pci ? pci_ : usb_;
    if (!opened.tried) {
        opened.file = openDatabase(database);
        opened.tried = true;
    }
    return opened.file ? &*opened.file : nullptr;
}

std::optional<IdsFile> HardwareIds::openDatabase(IdsDatabase database) {
    const auto open = [this](const auto& paths) -> std::optional<IdsFile> {
        for (const char* path : paths) {
            if (std::optional<IdsFile> file = IdsFile::open(*source_, path, kReadLimit)) return file;
        }
        return std::nullopt;
    };
    std::optional<IdsFile> file = database == IdsDatabase::Pci ? open(kPciPaths) : open(kUsbPaths);
    if (!file) {
        QVSLogger::debug("No %s database can be read (missing or larger than %llu bytes); ids stay numbers.",
                         databaseName(database), static_cast<unsigned long long>(kReadLimit));
    }
    return file;
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
    const std::string prefix = idsEntryPrefix(vendor);
    const std::size_t start = findLineStartingWith(text, prefix);
    if (start == std::string_view::npos) return std::nullopt;
    return idsEntryName(lineAt(text, start), prefix.size());
}

std::optional<std::string> idsDeviceName(std::string_view text, std::uint16_t vendor, std::uint16_t device) {
    const std::size_t vendorStart = findLineStartingWith(text, idsEntryPrefix(vendor));
    if (vendorStart == std::string_view::npos) return std::nullopt;
    // A device line is its vendor's entry form, indented by one tab.
    const std::string prefix = std::string(1, '\t').append(idsEntryPrefix(device));
    for (std::size_t start = nextLineStart(text, vendorStart); start < text.size();
         start = nextLineStart(text, start)) {
        const std::string_view line = lineAt(text, start);
        if (hasPrefix(line, prefix)) return idsEntryName(line, prefix.size());
        if (endsIdsVendorBlock(line)) return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace tov
