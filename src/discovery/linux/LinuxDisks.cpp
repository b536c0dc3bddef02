#include "discovery/linux/LinuxDisks.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/PathWalk.h"
#include "discovery/formats/ScsiSerialPage.h"
#include "discovery/linux/LinuxBusVendor.h"
#include "discovery/linux/LinuxMountedVolume.h"
#include "discovery/linux/LinuxVolumeLabel.h"
#include "discovery/linux/SysfsBlockDevices.h"
#include "model/QVIOKitDisk.h"

namespace tov {
namespace {

constexpr std::size_t kMaximumTextBytes = 255;
// A VPD page holds at most 0xffff bytes after its header.
constexpr std::uint64_t kVpdPageLimit = 0x10000 + 4;
constexpr const char* kDevicesFolder = "/sys/devices/";

bool isDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isLetters(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

// prefix followed by a run of lower-case letters ("sda", "vdb", "xvdc").
bool isLetteredName(std::string_view name, std::string_view prefix) {
    return hasPrefix(name, prefix) && isLetters(name.substr(prefix.size()));
}

// "nvme0n1": a controller number and a namespace number.
bool isNvmeNamespaceName(std::string_view name) {
    if (!hasPrefix(name, "nvme")) return false;
    const std::string_view numbers = name.substr(4);
    const std::size_t separator = numbers.find('n');
    if (separator == std::string_view::npos) return false;
    return isDigits(numbers.substr(0, separator)) && isDigits(numbers.substr(separator + 1));
}

bool isDriveName(std::string_view name) {
    if (isLetteredName(name, "sd") || isLetteredName(name, "vd") || isLetteredName(name, "xvd") ||
        isLetteredName(name, "hd")) {
        return true;
    }
    if (hasPrefix(name, "sr")) return isDigits(name.substr(2));
    if (hasPrefix(name, "mmcblk")) return isDigits(name.substr(6));
    return isNvmeNamespaceName(name);
}

std::string reportable(std::string_view text) { return reportableText(text, kMaximumTextBytes); }

// A virtio disk has no model: it is named by the PCI function that carries it.
std::optional<std::string> virtioDiskName(SystemSource& source, HardwareIds& hardwareIds,
                                          const std::string& diskPath) {
    const std::optional<std::string> device = LinuxMountedVolume::resolvedDevicePath(source, diskPath + "/device");
    if (!device) return std::nullopt;
    const std::optional<std::string> subsystem = source.readLink(*device + "/subsystem");
    if (!subsystem || lastPathComponent(*subsystem) != "virtio") return std::nullopt;
    const std::optional<BusVendor> bus = linuxBusVendor(source, diskPath + "/device");
    if (!bus || !bus->device) return std::nullopt;
    return hardwareIds.deviceName(bus->database, bus->vendor, *bus->device);
}

std::string nameOf(SystemSource& source, HardwareIds& hardwareIds, const BlockDeviceEntry& disk) {
    if (const std::optional<std::string> model = SysfsBlockDevices::driveModel(source, disk.path)) {
        return reportable(*model);
    }
    return reportable(virtioDiskName(source, hardwareIds, disk.path).value_or(""));
}

// A serial attribute's text, when it holds one.
std::optional<std::string> serialAttribute(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = SysfsBlockDevices::attribute(source, path);
    if (!text) return std::nullopt;
    std::string serial = reportable(*text);
    if (serial.empty()) return std::nullopt;
    return serial;
}

std::optional<std::string> vpdSerial(SystemSource& source, const BlockDeviceEntry& disk) {
    const std::string path = disk.path + "/device/vpd_pg80";
    const std::optional<std::string> bytes = source.readFile(path, kVpdPageLimit);
    if (!bytes) return std::nullopt;
    const std::optional<ScsiSerialPage> page = parseScsiSerialPage(*bytes);
    if (!page) {
        QVSLogger::debug("The serial number page of %s is left out: %s is shorter than it says or no such page.",
                         disk.name.c_str(), path.c_str());
        return std::nullopt;
    }
    std::string serial = reportable(page->serial);
    if (serial.empty()) return std::nullopt;
    return serial;
}

// The serial of the USB device the drive is part of: the first folder above it that is
// a USB device (it holds "idVendor"). Hubs and root hubs above that one are not asked:
// a root hub's "serial" names its controller.
std::optional<std::string> usbParentSerial(SystemSource& source, const std::string& devicePath) {
    for (std::string folder = devicePath; hasPrefix(folder, kDevicesFolder); folder = folder.substr(0, folder.rfind('/'))) {
        if (source.pathKind(folder + "/idVendor") == PathKind::None) continue;
        return serialAttribute(source, folder + "/serial");
    }
    return std::nullopt;
}

std::string serialOf(SystemSource& source, const BlockDeviceEntry& disk, const std::optional<std::string>& devicePath) {
    if (std::optional<std::string> serial = serialAttribute(source, disk.path + "/device/serial")) return *serial;
    if (std::optional<std::string> serial = serialAttribute(source, disk.path + "/serial")) return *serial;
    if (std::optional<std::string> serial = vpdSerial(source, disk)) return *serial;
    if (!devicePath) return "";
    return usbParentSerial(source, *devicePath).value_or("");
}

bool isRemovable(SystemSource& source, const BlockDeviceEntry& disk, const std::optional<std::string>& devicePath) {
    if (SysfsBlockDevices::attribute(source, disk.path + "/removable") == "1") return true;
    if (!devicePath) return false;
    return LinuxMountedVolume::isExternalBusProtocol(LinuxMountedVolume::busProtocolOfDevicePath(source, *devicePath));
}

std::shared_ptr<QVIOKitDisk> diskOf(SystemSource& source, const BlockDeviceEntry& disk, const std::string& name) {
    const std::optional<std::string> devicePath = LinuxMountedVolume::resolvedDevicePath(source, disk.path);
    auto record = QVIOKitDisk::ioKitDisk();
    record->setName(name);
    record->setSerialNo(serialOf(source, disk, devicePath));
    record->setRemovable(isRemovable(source, disk, devicePath));
    return record;
}

}  // namespace

ArrayRef discoverLinuxDisks(SystemSource& source, HardwareIds& hardwareIds) {
    std::vector<std::shared_ptr<QVIOKitDisk>> disks;
    for (const BlockDeviceEntry& entry : SysfsBlockDevices::list(source)) {
        if (entry.isPartition || !isDriveName(entry.name)) continue;
        const std::string name = nameOf(source, hardwareIds, entry);
        if (name.empty()) {
            QVSLogger::debug("The drive %s is left out: it has no model name.", entry.name.c_str());
            continue;
        }
        disks.push_back(diskOf(source, entry, name));
    }
    return equalRecordsOnce(disks);
}

}  // namespace tov
