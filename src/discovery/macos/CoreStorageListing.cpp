#include "discovery/macos/CoreStorageListing.h"

#include <limits>
#include <utility>

#include "common/TextUtils.h"

namespace tov {
namespace {

constexpr int kMaximumBarCuts = 10;
constexpr std::size_t kMinimumLineCount = 3;

bool contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

bool startsBlock(std::string_view line, CoreStorageVolumeKind kind) {
    if (kind == CoreStorageVolumeKind::Physical) return contains(line, "< Physical Volume");
    return contains(line, "> Logical Volume") && !contains(line, "> Logical Volume Family");
}

bool hasIdentifier(const QVDiskUtilDisk& disk) { return !disk.identifier().value_or("").empty(); }

// Hands the block's record over when it names its disk; the block is closed either way.
void closeBlock(std::shared_ptr<QVDiskUtilDisk>& current, std::vector<std::shared_ptr<QVDiskUtilDisk>>& volumes) {
    if (current && hasIdentifier(*current)) volumes.push_back(current);
    current.reset();
}

void applyField(QVDiskUtilDisk& disk, std::string_view line, CoreStorageVolumeKind kind) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || line.find(':', colon + 1) != std::string_view::npos) return;
    const std::string key = asciiLowercase(trimWhitespaceAndNewlines(line.substr(0, colon)));
    const std::string value = trimWhitespaceAndNewlines(line.substr(colon + 1));
    if (key == "disk") {
        disk.setIdentifier(value);
    } else if (key == "volume name") {
        disk.setName(value);
    } else if (hasPrefix(key, "size")) {
        if (const std::optional<std::uint64_t> size = firstDigitRun(value)) disk.setSize(*size);
    } else if (kind == CoreStorageVolumeKind::Logical && key == "content hint") {
        disk.setFileSystem(value);
    }
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

std::string withoutLeadingBars(std::string_view line) {
    std::string text = trimWhitespaceAndNewlines(line);
    for (int cuts = 0; cuts < kMaximumBarCuts && hasPrefix(text, "|"); ++cuts) {
        text = trimWhitespaceAndNewlines(std::string_view(text).substr(1));
    }
    return text;
}

std::optional<std::uint64_t> firstDigitRun(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && !isDigit(text[at])) ++at;
    if (at == text.size()) return std::nullopt;
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t number = 0;
    for (; at < text.size() && isDigit(text[at]); ++at) {
        const auto digit = static_cast<std::uint64_t>(text[at] - '0');
        number = number > (kLargest - digit) / 10 ? kLargest : number * 10 + digit;
    }
    return number;
}

std::vector<std::shared_ptr<QVDiskUtilDisk>> coreStorageVolumes(std::string_view listing, CoreStorageVolumeKind kind) {
    std::vector<std::shared_ptr<QVDiskUtilDisk>> volumes;
    const std::vector<std::string_view> lines = splitAt(listing, '\n');
    if (listing.empty() || lines.size() < kMinimumLineCount) return volumes;
    std::shared_ptr<QVDiskUtilDisk> current;
    for (std::size_t index = 1; index < lines.size(); ++index) {
        const std::string line = withoutLeadingBars(lines[index]);
        if (hasPrefix(line, "+-")) closeBlock(current, volumes);
        if (startsBlock(line, kind)) {
            closeBlock(current, volumes);
            current = QVDiskUtilDisk::diskUtilDisk();
            continue;
        }
        if (current) applyField(*current, line, kind);
    }
    closeBlock(current, volumes);
    return volumes;
}

}  // namespace tov
