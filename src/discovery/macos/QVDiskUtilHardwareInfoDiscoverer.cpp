#include "discovery/macos/QVDiskUtilHardwareInfoDiscoverer.h"

#include <algorithm>
#include <set>
#include <utility>

#include "common/PropertyList.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/macos/CoreStorageListing.h"
#include "discovery/macos/ToolOutputLogText.h"

namespace tov {
namespace {

constexpr std::string_view kCoreServicesFolder = "System/Library/CoreServices";
constexpr std::size_t kMinimumDfLineCount = 2;

std::string outputOf(SystemSource& source, const std::vector<std::string>& argv) {
    return source.runTool(argv).value_or("");
}

// The property list's top dictionary; null when the text is no property list or its top
// is something else.
DictionaryRef parsedDictionary(const std::string& text) {
    const std::optional<Value> tree = parsePropertyList(text);
    return tree ? tree->dictionary() : nullptr;
}

// The dictionaries of the array under key, in order; other elements are passed over.
std::vector<DictionaryRef> dictionariesUnder(const Dictionary& dictionary, std::string_view key) {
    std::vector<DictionaryRef> found;
    const ArrayRef array = dictionary.get(key).array();
    if (!array) return found;
    for (const Value& element : *array) {
        if (DictionaryRef entry = element.dictionary()) found.push_back(std::move(entry));
    }
    return found;
}

std::optional<std::string_view> stringUnder(const Dictionary& dictionary, std::string_view key) {
    const Value* value = dictionary.find(key);
    if (!value || !value->isString()) return std::nullopt;
    return *value->string();
}

std::shared_ptr<QVDiskUtilDisk> listedDisk(const Dictionary& entry) {
    auto disk = QVDiskUtilDisk::diskUtilDisk();
    disk->setName(stringUnder(entry, "VolumeName").value_or(""));
    disk->setIdentifier(stringUnder(entry, "DeviceIdentifier"));
    if (const std::optional<std::string_view> mountPoint = stringUnder(entry, "MountPoint")) {
        disk->setMountPoint(std::string(*mountPoint));
    }
    return disk;
}

// Each whole disk of "AllDisksAndPartitions" followed by its "Partitions".
std::vector<DictionaryRef> listedEntries(const Dictionary& list) {
    std::vector<DictionaryRef> entries;
    for (const DictionaryRef& wholeDisk : dictionariesUnder(list, "AllDisksAndPartitions")) {
        entries.push_back(wholeDisk);
        for (const DictionaryRef& partition : dictionariesUnder(*wholeDisk, "Partitions")) entries.push_back(partition);
    }
    return entries;
}

// The disk list's dictionary; a text that is none is logged with the message given.
DictionaryRef parsedDiskList(const std::string& response, const char* failureMessage) {
    const DictionaryRef list = parsedDictionary(response);
    if (!list) QVSLogger::error(failureMessage, loggedData(response).c_str());
    return list;
}

// A value's truth as a property list gives it: a boolean or number by its value, a text
// the way Foundation reads one ("YES", "true", "1" and other texts starting with Y, T or
// a non-zero digit, after blanks, a sign and leading zeros).
bool truthOf(const Value& value) {
    if (value.isNumber()) return value.toBool();
    if (!value.isString()) return false;
    const std::string& text = *value.string();
    std::size_t at = text.find_first_not_of(" \t");
    if (at != std::string::npos && (text[at] == '+' || text[at] == '-')) ++at;
    while (at < text.size() && text[at] == '0') ++at;
    if (at >= text.size()) return false;
    const char first = text[at];
    return first == 'Y' || first == 'y' || first == 'T' || first == 't' || (first >= '1' && first <= '9');
}

// "Directory ID" as an integer: a number by its value, a text by its leading integer.
std::int64_t directoryIdOf(const Value& value) {
    if (value.isNumber()) return value.toInt64();
    if (value.isString()) return leadingIntegerValue(*value.string());
    return 0;
}

bool isBlessedFolder(const Dictionary& entry) {
    const Value* directoryId = entry.find("Directory ID");
    const std::optional<std::string_view> path = stringUnder(entry, "Path");
    return directoryId && directoryIdOf(*directoryId) > 0 && path && !path->empty();
}

std::string withoutOccurrences(std::string text, std::string_view part) {
    std::string kept;
    std::size_t start = 0;
    for (std::size_t found = text.find(part); found != std::string::npos; found = text.find(part, start)) {
        kept.append(text, start, found - start);
        start = found + part.size();
    }
    kept.append(text, start, std::string::npos);
    return kept;
}

// The last component of a path as Foundation takes it: trailing "/" marks do not count,
// and "/" alone is its own last component.
std::string lastPathComponent(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    if (path == "/") return path;
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

QVDiskUtilHardwareInfoDiscoverer::QVDiskUtilHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source)
    : source_(std::move(source)) {}

DictionaryRef QVDiskUtilHardwareInfoDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kDisksKey, discoverDisks());
    return section;
}

ArrayRef QVDiskUtilHardwareInfoDiscoverer::discoverDisks() {
    const ArrayRef listed = disksWithDiskUtilListPlistResponse(diskListPlistResponse(*source_));
    const ArrayRef coreStorageMembers = physicalVolumeDisksWithDiskUtilCSListResponse(diskCSListResponse(*source_));
    std::set<std::string> physicalVolumes;
    for (const Value& volume : *coreStorageMembers) {
        const auto disk = std::dynamic_pointer_cast<QVDiskUtilDisk>(volume.record());
        if (disk && disk->identifier()) physicalVolumes.insert(*disk->identifier());
    }
    systemSetupListStartupDiskMountPoints =
        parseSystemSetupListStartupDisksResponse(systemSetupListStartupDisksResponse(*source_));

    ArrayRef disks = makeArray();
    for (const Value& element : *listed) {
        const auto disk = std::dynamic_pointer_cast<QVDiskUtilDisk>(element.record());
        if (!disk || physicalVolumes.count(disk->identifier().value_or("")) > 0) continue;
        populateDiskWithDiskUtilPlistInfoResponse(*disk, diskPlistInfoResponseForDisk(*source_, *disk));
        disks->push_back(disk);
    }
    return disks;
}

std::string QVDiskUtilHardwareInfoDiscoverer::diskListPlistResponse(SystemSource& source) {
    return outputOf(source, {kDiskUtilPath, "list", "-plist"});
}

std::string QVDiskUtilHardwareInfoDiscoverer::diskCSListResponse(SystemSource& source) {
    return outputOf(source, {kDiskUtilPath, "cs", "list"});
}

std::string QVDiskUtilHardwareInfoDiscoverer::systemSetupListStartupDisksResponse(SystemSource& source) {
    return outputOf(source, {kSystemSetupPath, "-liststartupdisks"});
}

std::string QVDiskUtilHardwareInfoDiscoverer::diskPlistInfoResponseForDisk(SystemSource& source,
                                                                           const QVDiskUtilDisk& disk) {
    const std::string identifier = disk.identifier().value_or("");
    if (identifier.empty()) return "";
    return outputOf(source, {kDiskUtilPath, "info", "-plist", identifier});
}

std::string QVDiskUtilHardwareInfoDiscoverer::blessPlistInfoResponseForMountPath(SystemSource& source,
                                                                                 const std::string& mountPath) {
    if (mountPath.empty()) return "";
    return outputOf(source, {kBlessPath, "--info", mountPath, "--plist"});
}

DictionaryRef QVDiskUtilHardwareInfoDiscoverer::infoPlistForMountPath(SystemSource& source,
                                                                       const std::string& mountPath) {
    const std::optional<std::string> output = source.runTool({kDiskUtilPath, "info", "-plist", mountPath});
    return output ? parsedDictionary(*output) : nullptr;
}

std::optional<std::string> QVDiskUtilHardwareInfoDiscoverer::getCurrentOSDiskId(SystemSource& source) {
    const std::optional<std::string> output = source.runTool({kDfPath, "/"});
    if (!output) return std::nullopt;
    const std::vector<std::string_view> lines = splitAt(*output, '\n');
    if (lines.size() < kMinimumDfLineCount) return std::nullopt;
    const std::string firstPiece(lines[1].substr(0, lines[1].find(' ')));
    return trimWhitespaceAndNewlines(lastPathComponent(firstPiece));
}

ArrayRef QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilListPlistResponse(const std::string& response) {
    if (response.empty()) return makeArray();
    const DictionaryRef list =
        parsedDiskList(response, "disksWithDiskUtilListPlistResponse NSPropertyListSerialization failed data: %s");
    if (!list) return makeArray();
    std::vector<std::shared_ptr<QVDiskUtilDisk>> disks;
    for (const DictionaryRef& entry : listedEntries(*list)) disks.push_back(listedDisk(*entry));
    return equalRecordsOnce(disks);
}

std::vector<std::string> QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(
    const std::string& response) {
    std::vector<std::string> mountPaths;
    if (response.empty()) return mountPaths;
    const DictionaryRef list =
        parsedDiskList(response, "mountPathWithDiskUtilListPlistResponse NSPropertyListSerialization failed data: %s");
    if (!list) return mountPaths;
    for (const DictionaryRef& entry : listedEntries(*list)) {
        const std::optional<std::string_view> mountPoint = stringUnder(*entry, "MountPoint");
        if (mountPoint && std::find(mountPaths.begin(), mountPaths.end(), *mountPoint) == mountPaths.end()) {
            mountPaths.emplace_back(*mountPoint);
        }
    }
    return mountPaths;
}

ArrayRef QVDiskUtilHardwareInfoDiscoverer::physicalVolumeDisksWithDiskUtilCSListResponse(const std::string& response) {
    return equalRecordsOnce(coreStorageVolumes(response, CoreStorageVolumeKind::Physical));
}

ArrayRef QVDiskUtilHardwareInfoDiscoverer::disksWithDiskUtilCSListResponse(const std::string& response) {
    return equalRecordsOnce(coreStorageVolumes(response, CoreStorageVolumeKind::Logical));
}

std::vector<std::string> QVDiskUtilHardwareInfoDiscoverer::parseSystemSetupListStartupDisksResponse(
    const std::string& response) {
    std::vector<std::string> mountPaths;
    for (const std::string_view line : splitAt(response, '\n')) {
        const std::string trimmed = trimWhitespaceAndNewlines(line);
        if (hasPrefix(trimmed, "/")) mountPaths.push_back(withoutOccurrences(trimmed, kCoreServicesFolder));
    }
    return mountPaths;
}

std::vector<DictionaryRef> QVDiskUtilHardwareInfoDiscoverer::parseBlessPlistInfo(const std::string& response) {
    std::vector<DictionaryRef> blessedFolders;
    if (response.empty()) return blessedFolders;
    const std::string_view text = response;
    if (text == "Can't get booter information" || text.ends_with("Can't get mount point for")) {
        QVSLogger::error("parseBlessPlistInfo %s", loggedText(response).c_str());
        return blessedFolders;
    }
    const DictionaryRef info = parsedDictionary(response);
    if (!info) {
        QVSLogger::error("parseBlessPlistInfo NSPropertyListSerialization failed response: %s",
                         loggedText(response).c_str());
        return blessedFolders;
    }
    for (const DictionaryRef& entry : dictionariesUnder(*info, "Finder Info")) {
        if (isBlessedFolder(*entry)) blessedFolders.push_back(entry);
    }
    return blessedFolders;
}

void QVDiskUtilHardwareInfoDiscoverer::populateDiskWithDiskUtilPlistInfoResponse(QVDiskUtilDisk& disk,
                                                                                  const std::string& response) {
    if (response.empty()) return;
    const DictionaryRef info = parsedDictionary(response);
    if (!info) {
        QVSLogger::error("populateDisk:withDiskUtilPlistInfoResponse: NSPropertyListSerialization failed response: %s",
                         loggedText(response).c_str());
        return;
    }
    for (const auto& [key, value] : *info) applyInfoEntry(disk, key, value);
    if (disk.isBootVolume() && !isBlessedOrStartupVolume(disk)) disk.setBootVolume(false);
}

// One key of the disk information, in the list's own order; keys match in any letter case.
void QVDiskUtilHardwareInfoDiscoverer::applyInfoEntry(QVDiskUtilDisk& disk, const std::string& key,
                                                      const Value& value) {
    const std::optional<std::string_view> text =
        value.isString() ? std::optional<std::string_view>(*value.string()) : std::nullopt;
    if (equalsIgnoringCase(key, "TotalSize")) {
        if (value.isNumber()) disk.setSize(value.toUInt64());
    } else if (equalsIgnoringCase(key, "FreeSpace")) {
        if (value.isNumber()) disk.setFreeSpace(value.toUInt64());
    } else if (equalsIgnoringCase(key, "MediaName")) {
        disk.setDeviceName(text);
    } else if (equalsIgnoringCase(key, "FilesystemName")) {
        disk.setFileSystem(text);
    } else if (equalsIgnoringCase(key, "Content")) {
        if (!disk.isBootVolume() && text && equalsIgnoringCase(*text, "Apple_Boot")) disk.setBootVolume(true);
    } else if (equalsIgnoringCase(key, "OpticalDeviceType")) {
        disk.setOpticalMedia(true);
    } else if (equalsIgnoringCase(key, "Bootable")) {
        disk.setBootVolume(truthOf(value));
    }
}

// A boot volume mounted outside the startup disks keeps its mark only when the
// boot-blessing tool names a blessed folder on it; an unmounted one keeps it as it is.
bool QVDiskUtilHardwareInfoDiscoverer::isBlessedOrStartupVolume(const QVDiskUtilDisk& disk) {
    const std::optional<std::string>& mountPoint = disk.mountPoint();
    if (!mountPoint) return true;
    const std::vector<std::string>& startup = systemSetupListStartupDiskMountPoints;
    if (std::find(startup.begin(), startup.end(), *mountPoint) != startup.end()) return true;
    return !parseBlessPlistInfo(blessPlistInfoResponseForMountPath(*source_, *mountPoint)).empty();
}

}  // namespace tov
