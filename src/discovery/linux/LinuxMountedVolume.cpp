#include "discovery/linux/LinuxMountedVolume.h"

#include <algorithm>
#include <optional>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/PathWalk.h"
#include "discovery/formats/UdevDatabase.h"
#include "discovery/linux/LinuxVolumeLabel.h"
#include "discovery/linux/MountInfo.h"
#include "discovery/linux/SysfsBlockDevices.h"

namespace tov {
namespace {

constexpr const char* kDevicesFolder = "/sys/devices/";
// Folders looked at on the way from the root of the device tree to a block device.
constexpr std::size_t kMaximumDepth = 64;

bool isKernelName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

// "usb2" and the like: a prefix followed by digits only.
bool isNumbered(const std::string& component, std::string_view prefix) {
    if (!hasPrefix(component, prefix) || component.size() == prefix.size()) return false;
    return std::all_of(component.begin() + static_cast<std::ptrdiff_t>(prefix.size()), component.end(),
                       [](char character) { return character >= '0' && character <= '9'; });
}

std::optional<DeviceNumber> deviceNumberAt(SystemSource& source, const std::string& devicePath) {
    const std::optional<std::string> text = SysfsBlockDevices::attribute(source, devicePath + "/dev");
    return text ? SysfsBlockDevices::parseDeviceNumber(*text) : std::nullopt;
}

// The device by the name the table gives as source, when it is the device the table's
// number names (file systems with an anonymous number are taken at their word).
std::optional<std::string> devicePathBySource(SystemSource& source, const MountEntry& entry) {
    if (!hasPrefix(entry.source, "/dev/")) return std::nullopt;
    const std::string name = std::string(lastPathComponent(entry.source));
    if (!isKernelName(name)) return std::nullopt;
    const std::optional<std::string> path = LinuxMountedVolume::resolvedDevicePath(source, "/sys/class/block/" + name);
    if (!path || entry.major == 0) return path;
    if (deviceNumberAt(source, *path) != DeviceNumber{entry.major, entry.minor}) return std::nullopt;
    return path;
}

std::optional<std::string> devicePathByNumber(SystemSource& source, const MountEntry& entry) {
    if (entry.major == 0) return std::nullopt;
    return LinuxMountedVolume::resolvedDevicePath(source,
                              "/sys/dev/block/" + std::to_string(entry.major) + ":" + std::to_string(entry.minor));
}

std::optional<std::string> devicePathOf(SystemSource& source, const MountEntry& entry) {
    if (std::optional<std::string> path = devicePathBySource(source, entry)) return path;
    return devicePathByNumber(source, entry);
}

std::vector<std::string> componentsBelowDevices(const std::string& devicePath) {
    std::vector<std::string> components;
    std::size_t position = std::string(kDevicesFolder).size();
    while (position < devicePath.size() && components.size() < kMaximumDepth) {
        std::size_t end = devicePath.find('/', position);
        if (end == std::string::npos) end = devicePath.size();
        if (end > position) components.push_back(devicePath.substr(position, end - position));
        position = end + 1;
    }
    return components;
}

// For each folder on the way down: its name and the name of its subsystem ("usb", "nvme").
std::vector<std::pair<std::string, std::string>> devicesOnTheWay(SystemSource& source, const std::string& devicePath) {
    std::vector<std::pair<std::string, std::string>> devices;
    std::string folder = "/sys/devices";
    for (const std::string& component : componentsBelowDevices(devicePath)) {
        folder += "/" + component;
        const std::optional<std::string> subsystem = source.readLink(folder + "/subsystem");
        devices.emplace_back(component, subsystem ? std::string(lastPathComponent(*subsystem)) : std::string());
    }
    return devices;
}

bool passesThrough(const std::vector<std::pair<std::string, std::string>>& devices, std::string_view prefix,
                   std::string_view subsystem) {
    return std::any_of(devices.begin(), devices.end(), [&](const auto& device) {
        return isNumbered(device.first, prefix) || device.second == subsystem;
    });
}

// A PCI device below a port the firmware calls external: the kernel writes "removable"
// into its "removable" attribute.
bool passesThroughExternalPci(SystemSource& source, const std::vector<std::pair<std::string, std::string>>& devices) {
    std::string folder = "/sys/devices";
    for (const auto& device : devices) {
        folder += "/" + device.first;
        if (device.second != "pci") continue;
        if (SysfsBlockDevices::attribute(source, folder + "/removable") == "removable") return true;
    }
    return false;
}

}  // namespace

DictionaryRef LinuxMountedVolume::infoForMountPath(SystemSource& source, const std::string& mountPath) {
    const std::optional<std::vector<MountEntry>> table = MountInfo::read(source);
    const MountEntry* entry = table ? MountInfo::visibleAt(*table, mountPath) : nullptr;
    if (!entry) {
        QVSLogger::debug("No volume information: nothing is mounted at the path asked for.");
        return nullptr;
    }
    const std::optional<std::string> devicePath = devicePathOf(source, *entry);
    if (!devicePath) return nullptr;
    const std::string name = std::string(lastPathComponent(*devicePath));
    const std::optional<DeviceNumber> number = deviceNumberAt(source, *devicePath);
    const std::optional<UdevRecord> record =
        number ? UdevDatabase::readBlockDevice(source, number->major, number->minor) : std::nullopt;

    DictionaryRef info = makeDictionary();
    info->set(kMountPointKey, mountPath);
    info->set(kVolumeNameKey, volumeLabelOf(source, record, name));
    info->set(kDeviceIdentifierKey, reportableText(name, kMaximumLabelBytes));
    info->set(kBusProtocolKey, busProtocolOfDevicePath(source, *devicePath));
    return info;
}

std::vector<std::string> LinuxMountedVolume::blockDeviceMountPaths(SystemSource& source) {
    std::vector<std::string> paths;
    for (const MountEntry& entry : MountInfo::read(source).value_or(std::vector<MountEntry>{})) {
        if (std::find(paths.begin(), paths.end(), entry.mountPoint) != paths.end()) continue;
        if (devicePathOf(source, entry)) paths.push_back(entry.mountPoint);
    }
    return paths;
}

std::string LinuxMountedVolume::busProtocolOfDevicePath(SystemSource& source, const std::string& devicePath) {
    const auto devices = devicesOnTheWay(source, devicePath);
    if (passesThrough(devices, "usb", "usb")) return kUsbProtocol;
    if (passesThrough(devices, "fw", "firewire")) return kFireWireProtocol;
    if (passesThroughExternalPci(source, devices)) return kThunderboltProtocol;
    if (passesThrough(devices, "nvme", "nvme") || passesThrough(devices, "nvme-subsys", "nvme-subsystem")) {
        return "NVMe";
    }
    if (passesThrough(devices, "ata", "ata")) return "SATA";
    if (hasPrefix(devicePath, "/sys/devices/virtual/") || passesThrough(devices, "virtio", "virtio")) return "Virtual";
    return "";
}

bool LinuxMountedVolume::isExternalBusProtocol(const std::string& protocol) {
    return protocol == kUsbProtocol || protocol == kFireWireProtocol || protocol == kThunderboltProtocol;
}

std::optional<std::string> LinuxMountedVolume::resolvedDevicePath(SystemSource& source, const std::string& path) {
    const std::optional<PathWalk> walk = walkPath(
        path, true, [&source](const std::string& at) { return source.pathKind(at); },
        [&source](const std::string& at) { return source.readLink(at); });
    if (!walk) {
        // The path may hold a name from the mount table: it stays out of the log.
        QVSLogger::debug("A block device link under /sys cannot be followed (a loop or an unreadable link).");
        return std::nullopt;
    }
    if (!hasPrefix(walk->resolved, kDevicesFolder) || source.pathKind(walk->resolved) != PathKind::Folder) {
        return std::nullopt;
    }
    return walk->resolved;
}

}  // namespace tov
