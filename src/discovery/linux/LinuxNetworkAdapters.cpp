#include "discovery/linux/LinuxNetworkAdapters.h"

#include <charconv>
#include <memory>
#include <vector>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/NetworkAdapterName.h"
#include "discovery/PathWalk.h"
#include "discovery/QVSWiFiInterfaceFactory.h"
#include "discovery/linux/LinuxBusVendor.h"
#include "discovery/linux/LinuxNetworkInterface.h"
#include "discovery/linux/LinuxWiFiInterfaces.h"
#include "model/QVIOKitNetwork.h"

namespace tov {
namespace {

constexpr std::uint64_t kSpeedFileLimit = 64;
constexpr std::uint64_t kBitsPerMegabit = 1000000;

struct BusNames {
    std::string vendor;
    std::string model;
};

// The vendor and device names of the adapter's PCI or USB device; none on other buses.
BusNames busNames(SystemSource& source, HardwareIds& hardwareIds, const std::string& deviceLink) {
    const std::optional<BusVendor> bus = linuxBusVendor(source, deviceLink);
    if (!bus) return {};
    BusNames names;
    names.vendor = hardwareIds.vendorName(bus->database, bus->vendor);
    if (bus->device) names.model = hardwareIds.deviceName(bus->database, bus->vendor, *bus->device);
    return names;
}

// The driver's name: the last component of the device's "driver" link.
std::string driverName(SystemSource& source, const std::string& deviceLink) {
    const std::optional<std::string> target = source.readLink(childPath(deviceLink, "driver"));
    if (!target) {
        QVSLogger::debug("The device of %s has no driver.", deviceLink.c_str());
        return "";
    }
    return printableText(lastPathComponent(*target));
}

// The link speed in bits per second; 0 when the link is down (-1), the file cannot be
// read (a down link or a driver that does not tell) or holds no positive number.
std::uint64_t linkSpeed(SystemSource& source, const std::string& folder) {
    const std::optional<std::string> text = source.readFile(childPath(folder, "speed"), kSpeedFileLimit);
    if (!text) return 0;
    const std::string digits = trimWhitespaceAndNewlines(*text);
    std::uint32_t megabits = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), megabits);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        if (digits != "-1") QVSLogger::debug("The link speed of %s is no number: \"%s\".", folder.c_str(), printableText(digits).c_str());
        return 0;
    }
    return megabits * kBitsPerMegabit;
}

std::shared_ptr<QVIOKitNetwork> adapterRecord(SystemSource& source, HardwareIds& hardwareIds,
                                              QVSWiFiInterface& wiFiInterface, const std::string& name) {
    const std::string folder = linuxNetworkInterfaceFolder(name);
    const std::string deviceLink = childPath(folder, "device");
    const BusNames names = busNames(source, hardwareIds, deviceLink);
    const std::string macAddress = asciiUppercase(linuxHardwareAddress(source, name));
    std::shared_ptr<QVIOKitNetwork> record = QVIOKitNetwork::ioKitNetwork();
    record->setVendor(names.vendor);
    record->setAdapter(networkAdapterName(names.model, driverName(source, deviceLink)));
    record->setMacAddress(macAddress);
    record->setSpeed(linkSpeed(source, folder));
    record->setSsid(wiFiInterface.ssidWithMacAddress(macAddress));
    return record;
}

}  // namespace

ArrayRef discoverLinuxNetworkAdapters(SystemSource& source, HardwareIds& hardwareIds) {
    const std::shared_ptr<QVSWiFiInterface> wiFiInterface =
        QVSWiFiInterfaceFactory::wiFiInterface(false, [&source] { return linuxWiFiInterfaces(source); });
    return discoverLinuxNetworkAdapters(source, hardwareIds, *wiFiInterface);
}

ArrayRef discoverLinuxNetworkAdapters(SystemSource& source, HardwareIds& hardwareIds, QVSWiFiInterface& wiFiInterface) {
    std::vector<std::shared_ptr<QVIOKitNetwork>> records;
    for (const std::string& name : linuxNetworkInterfaceNames(source)) {
        if (!isLinuxNetworkAdapter(source, name)) continue;
        records.push_back(adapterRecord(source, hardwareIds, wiFiInterface, name));
    }
    return equalRecordsOnce(records);
}

}  // namespace tov
