#include "discovery/linux/LinuxDisplays.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/DisplayManufacturer.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/PathWalk.h"
#include "discovery/formats/Edid.h"
#include "model/QVIOKitDisplay.h"

namespace tov {
namespace {

using Displays = std::vector<std::shared_ptr<QVIOKitDisplay>>;

constexpr const char* kPciDevicesPath = "/sys/bus/pci/devices";
constexpr const char* kDrmPath = "/sys/class/drm";
constexpr std::uint64_t kAttributeReadLimit = 64;
// An EDID holds at most 255 extension blocks after its base block.
constexpr std::uint64_t kEdidReadLimit = 256 * Edid::kBlockSize;
constexpr std::uint32_t kDisplayControllerClass = 0x03;
constexpr const char* kGenericDisplayName = "Generic Display";
constexpr std::int64_t kDefaultDepth = 24;

// A PCI "class" file: "0x030000", class, subclass and programming interface.
std::optional<std::uint32_t> parsePciClass(std::string_view text) {
    const std::string trimmed = trimWhitespaceAndNewlines(text);
    if (!hasPrefix(trimmed, "0x")) return std::nullopt;
    std::uint32_t value = 0;
    const char* end = trimmed.data() + trimmed.size();
    const auto result = std::from_chars(trimmed.data() + 2, end, value, 16);
    if (result.ec != std::errc() || result.ptr != end || trimmed.size() == 2) return std::nullopt;
    return value;
}

std::optional<std::uint16_t> pciIdOf(SystemSource& source, const std::string& function, const char* file) {
    const std::optional<std::string> text = source.readFile(childPath(function, file), kAttributeReadLimit);
    return text ? parseHardwareId(*text) : std::nullopt;
}

bool isDisplayController(SystemSource& source, const std::string& function) {
    const std::optional<std::string> text = source.readFile(childPath(function, "class"), kAttributeReadLimit);
    const std::optional<std::uint32_t> pciClass = text ? parsePciClass(*text) : std::nullopt;
    return pciClass && (*pciClass >> 16) == kDisplayControllerClass;
}

std::shared_ptr<QVIOKitDisplay> adapterRecord(SystemSource& source, HardwareIds& hardwareIds,
                                              const std::string& function) {
    const std::optional<std::uint16_t> vendor = pciIdOf(source, function, "vendor");
    const std::optional<std::uint16_t> device = pciIdOf(source, function, "device");
    if (!vendor || !device) {
        QVSLogger::debug("The display controller %s has no readable vendor or device id; it is left out.",
                         function.c_str());
        return nullptr;
    }
    const std::shared_ptr<QVIOKitDisplay> adapter = QVIOKitDisplay::iokitDisplay();
    adapter->setDescription(hardwareIds.deviceName(IdsDatabase::Pci, *vendor, *device));
    adapter->setManufacturer(hardwareIds.vendorName(IdsDatabase::Pci, *vendor));
    adapter->setFrequency(0);
    adapter->setWidth(0);
    adapter->setHeight(0);
    adapter->setDepth(0);
    return adapter;
}

void addAdapters(SystemSource& source, HardwareIds& hardwareIds, Displays& displays) {
    const std::optional<std::vector<std::string>> functions = source.listFolder(kPciDevicesPath);
    if (!functions) {
        QVSLogger::debug("No display controllers: %s cannot be listed.", kPciDevicesPath);
        return;
    }
    for (const std::string& name : *functions) {
        const std::string function = childPath(kPciDevicesPath, name);
        if (!isDisplayController(source, function)) continue;
        if (std::shared_ptr<QVIOKitDisplay> adapter = adapterRecord(source, hardwareIds, function)) {
            displays.push_back(adapter);
        }
    }
}

// "card0-eDP-1", "card1-DP-3": a connector; "card0", "renderD128", "version" are not.
bool isConnectorName(std::string_view name) {
    constexpr std::string_view kCard = "card";
    if (!hasPrefix(name, kCard)) return false;
    const std::size_t dash = name.find('-');
    if (dash == std::string_view::npos || dash == kCard.size() || dash + 1 == name.size()) return false;
    const std::string_view number = name.substr(kCard.size(), dash - kCard.size());
    return std::all_of(number.begin(), number.end(), [](char digit) { return digit >= '0' && digit <= '9'; });
}

bool isConnected(SystemSource& source, const std::string& connector) {
    const std::optional<std::string> status = source.readFile(childPath(connector, "status"), kAttributeReadLimit);
    return status && trimWhitespaceAndNewlines(*status) == "connected";
}

std::shared_ptr<QVIOKitDisplay> monitorRecord(const Edid& edid) {
    const std::string description = edid.monitorName.value_or(kGenericDisplayName);
    const DisplayManufacturer manufacturer = displayManufacturer(description, edid.vendorId);
    const DisplayMode mode = edid.preferredMode.value_or(DisplayMode{});
    const std::shared_ptr<QVIOKitDisplay> monitor = QVIOKitDisplay::iokitDisplay();
    monitor->setDescription(description);
    monitor->setManufacturer(manufacturer.name);
    monitor->setFrequency(displayRefreshRate(manufacturer, mode.refreshRate));
    monitor->setWidth(mode.width);
    monitor->setHeight(mode.height);
    monitor->setDepth(edid.bitsPerColour ? 3 * *edid.bitsPerColour : kDefaultDepth);
    return monitor;
}

std::shared_ptr<QVIOKitDisplay> connectorMonitor(SystemSource& source, const std::string& connector) {
    const std::string edidPath = childPath(connector, "edid");
    const std::optional<std::string> bytes = source.readFile(edidPath, kEdidReadLimit);
    if (!bytes || bytes->empty()) {
        QVSLogger::debug("The connected connector %s has no readable EDID; no monitor is listed for it.",
                         connector.c_str());
        return nullptr;
    }
    const std::optional<Edid> edid = parseEdid(*bytes);
    if (!edid) {
        QVSLogger::debug("The EDID of %s cannot be read; no monitor is listed for it.", connector.c_str());
        return nullptr;
    }
    return monitorRecord(*edid);
}

void addMonitors(SystemSource& source, Displays& displays) {
    const std::optional<std::vector<std::string>> entries = source.listFolder(kDrmPath);
    if (!entries) {
        QVSLogger::debug("No monitors: %s cannot be listed.", kDrmPath);
        return;
    }
    for (const std::string& name : *entries) {
        const std::string connector = childPath(kDrmPath, name);
        if (!isConnectorName(name) || !isConnected(source, connector)) continue;
        if (std::shared_ptr<QVIOKitDisplay> monitor = connectorMonitor(source, connector)) {
            displays.push_back(monitor);
        }
    }
}

}  // namespace

ArrayRef discoverLinuxDisplays(SystemSource& source, HardwareIds& hardwareIds) {
    Displays displays;
    addAdapters(source, hardwareIds, displays);
    addMonitors(source, displays);
    return equalRecordsOnce(displays);
}

}  // namespace tov
