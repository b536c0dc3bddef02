#include "discovery/linux/SysfsBlockDevices.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/PathWalk.h"

namespace tov {
namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// The run of digits or of other characters that starts at position.
std::string_view runAt(std::string_view text, std::size_t position) {
    const bool digits = isDigit(text[position]);
    std::size_t end = position;
    while (end < text.size() && isDigit(text[end]) == digits) ++end;
    return text.substr(position, end - position);
}

// -1, 0 or 1 as left sorts before, with or after right.
int compareDigitRuns(std::string_view left, std::string_view right) {
    const std::size_t leftZeros = std::min(left.find_first_not_of('0'), left.size());
    const std::size_t rightZeros = std::min(right.find_first_not_of('0'), right.size());
    left.remove_prefix(leftZeros);
    right.remove_prefix(rightZeros);
    if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
    const int order = left.compare(right);
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

int compareOtherRuns(std::string_view left, std::string_view right) {
    const bool shareKind = left.size() >= 2 && right.size() >= 2 && left.substr(0, 2) == right.substr(0, 2);
    if (shareKind && left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
    const int order = left.compare(right);
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

bool isWholeDiskName(const std::string& name) { return !name.empty() && name != "." && name != ".."; }

bool isDrive(SystemSource& source, const std::string& diskPath) {
    return source.pathKind(diskPath + "/device") != PathKind::None;
}

std::optional<unsigned> partitionNumberOf(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = SysfsBlockDevices::attribute(source, path + "/partition");
    if (!text) return std::nullopt;
    const std::optional<std::uint64_t> number = SysfsBlockDevices::parseUnsigned(*text);
    if (!number || *number > std::numeric_limits<unsigned>::max()) return 0u;
    return static_cast<unsigned>(*number);
}

struct Partition {
    unsigned number = 0;
    BlockDeviceEntry entry;
};

std::vector<BlockDeviceEntry> partitionsOf(SystemSource& source, const BlockDeviceEntry& disk) {
    std::vector<Partition> partitions;
    const std::vector<std::string> names = source.listFolder(disk.path).value_or(std::vector<std::string>{});
    for (std::size_t index = 0; index < names.size() && index < SysfsBlockDevices::kMaximumEntries; ++index) {
        const std::string path = childPath(disk.path, names[index]);
        if (source.pathKind(path) != PathKind::Folder) continue;
        const std::optional<unsigned> number = partitionNumberOf(source, path);
        if (!number) continue;
        partitions.push_back({*number, {names[index], path, disk.name, disk.path, true}});
    }
    std::stable_sort(partitions.begin(), partitions.end(), [](const Partition& left, const Partition& right) {
        if (left.number != right.number) return left.number < right.number;
        return SysfsBlockDevices::naturalLess(left.entry.name, right.entry.name);
    });
    std::vector<BlockDeviceEntry> entries;
    for (Partition& partition : partitions) entries.push_back(std::move(partition.entry));
    return entries;
}

struct WholeDisk {
    bool drive = false;
    BlockDeviceEntry entry;
};

std::vector<WholeDisk> wholeDisksOf(SystemSource& source) {
    const std::optional<std::vector<std::string>> names = source.listFolder(SysfsBlockDevices::kBlockFolder);
    if (!names) {
        QVSLogger::debug("No block devices: %s cannot be listed.", SysfsBlockDevices::kBlockFolder);
        return {};
    }
    std::vector<WholeDisk> disks;
    for (std::size_t index = 0; index < names->size() && index < SysfsBlockDevices::kMaximumEntries; ++index) {
        const std::string& name = (*names)[index];
        if (!isWholeDiskName(name)) continue;
        const std::string path = childPath(SysfsBlockDevices::kBlockFolder, name);
        disks.push_back({isDrive(source, path), {name, path, name, path, false}});
    }
    std::stable_sort(disks.begin(), disks.end(), [](const WholeDisk& left, const WholeDisk& right) {
        if (left.drive != right.drive) return left.drive;
        return SysfsBlockDevices::naturalLess(left.entry.name, right.entry.name);
    });
    return disks;
}

}  // namespace

std::vector<BlockDeviceEntry> SysfsBlockDevices::list(SystemSource& source) {
    std::vector<BlockDeviceEntry> entries;
    for (const WholeDisk& disk : wholeDisksOf(source)) {
        entries.push_back(disk.entry);
        for (BlockDeviceEntry& partition : partitionsOf(source, disk.entry)) entries.push_back(std::move(partition));
    }
    return entries;
}

std::optional<std::string> SysfsBlockDevices::driveModel(SystemSource& source, const std::string& diskPath) {
    for (const char* attribute : {"/device/model", "/device/name"}) {
        if (std::optional<std::string> model = SysfsBlockDevices::attribute(source, diskPath + attribute)) return model;
    }
    return std::nullopt;
}

std::optional<std::string> SysfsBlockDevices::attribute(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = source.readFile(path, kAttributeReadLimit);
    if (!text) return std::nullopt;
    return trimWhitespaceAndNewlines(*text);
}

std::optional<DeviceNumber> SysfsBlockDevices::parseDeviceNumber(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const std::optional<std::uint64_t> major = parseUnsigned(text.substr(0, colon));
    const std::optional<std::uint64_t> minor = parseUnsigned(text.substr(colon + 1));
    constexpr std::uint64_t kLargest = std::numeric_limits<unsigned>::max();
    if (!major || !minor || *major > kLargest || *minor > kLargest) return std::nullopt;
    return DeviceNumber{static_cast<unsigned>(*major), static_cast<unsigned>(*minor)};
}

std::optional<std::uint64_t> SysfsBlockDevices::parseUnsigned(std::string_view text) {
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return number;
}

bool SysfsBlockDevices::naturalLess(std::string_view left, std::string_view right) {
    std::size_t leftPosition = 0;
    std::size_t rightPosition = 0;
    while (leftPosition < left.size() && rightPosition < right.size()) {
        const std::string_view leftRun = runAt(left, leftPosition);
        const std::string_view rightRun = runAt(right, rightPosition);
        const bool leftDigits = isDigit(leftRun[0]);
        const bool rightDigits = isDigit(rightRun[0]);
        if (leftDigits != rightDigits) return leftDigits;
        const int order = leftDigits ? compareDigitRuns(leftRun, rightRun) : compareOtherRuns(leftRun, rightRun);
        if (order != 0) return order < 0;
        leftPosition += leftRun.size();
        rightPosition += rightRun.size();
    }
    if ((left.size() - leftPosition) != (right.size() - rightPosition)) {
        return left.size() - leftPosition < right.size() - rightPosition;
    }
    return left < right;
}

}  // namespace tov
