#include "discovery/linux/LinuxBusVendor.h"

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/PathWalk.h"

namespace tov {
namespace {

constexpr const char* kDevicesRoot = "/sys/devices/";
constexpr std::uint64_t kIdFileLimit = 64;

std::optional<std::uint16_t> idInFile(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = source.readFile(path, kIdFileLimit);
    return text ? parseHardwareId(*text) : std::nullopt;
}

bool isPciFunction(SystemSource& source, const std::string& folder) {
    const std::optional<std::string> subsystem = source.readLink(childPath(folder, "subsystem"));
    if (!subsystem) return false;
    return lastPathComponent(*subsystem) == "pci";
}

std::optional<BusVendor> vendorOfFolder(SystemSource& source, const std::string& folder) {
    if (const std::optional<std::uint16_t> usb = idInFile(source, childPath(folder, "idVendor"))) {
        return BusVendor{IdsDatabase::Usb, *usb, idInFile(source, childPath(folder, "idProduct"))};
    }
    if (!isPciFunction(source, folder)) return std::nullopt;
    if (const std::optional<std::uint16_t> pci = idInFile(source, childPath(folder, "vendor"))) {
        return BusVendor{IdsDatabase::Pci, *pci, idInFile(source, childPath(folder, "device"))};
    }
    return std::nullopt;
}

}  // namespace

std::optional<BusVendor> linuxBusVendor(SystemSource& source, const std::string& deviceLink) {
    const std::optional<PathWalk> walk = walkPath(
        deviceLink, true, [&source](const std::string& path) { return source.pathKind(path); },
        [&source](const std::string& path) { return source.readLink(path); });
    if (!walk) {
        QVSLogger::debug("The device link %s cannot be followed (a loop or an unreadable link).", deviceLink.c_str());
        return std::nullopt;
    }
    // Up from the device to the devices root, one folder at a time.
    for (std::string folder = walk->resolved; hasPrefix(folder, kDevicesRoot);
         folder = folder.substr(0, folder.rfind('/'))) {
        if (std::optional<BusVendor> vendor = vendorOfFolder(source, folder)) return vendor;
    }
    return std::nullopt;
}

}  // namespace tov
