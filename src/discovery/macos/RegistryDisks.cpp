#include "discovery/macos/RegistryDisks.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/TextUtils.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/macos/AsciiCString.h"
#include "discovery/macos/RegistryProperty.h"
#include "discovery/macos/RegistryServices.h"
#include "model/QVIOKitDisk.h"

namespace tov {
namespace {

constexpr const char* kBlockStorageMatching = "IOBlockStorageDevice";
// The buffer the USB serial number is converted into, terminator included.
constexpr std::size_t kUsbSerialBufferBytes = 128;

struct Characteristics {
    std::optional<std::string> productName;
    std::optional<std::string> serial;
    std::optional<std::string> location;
};

Characteristics characteristics(const Dictionary& properties) {
    Characteristics found;
    if (const DictionaryRef device = dictionaryProperty(properties, "Device Characteristics")) {
        found.productName = stringProperty(*device, "Product Name");
        found.serial = stringProperty(*device, "Serial Number");
    }
    if (const DictionaryRef protocol = dictionaryProperty(properties, "Protocol Characteristics")) {
        found.location = stringProperty(*protocol, "Physical Interconnect Location");
    }
    return found;
}

// A device that states no location counts as external, as the comparison with nothing
// that this rule stems from answered "same".
bool isRemovable(const std::optional<std::string>& location) {
    return !location || equalsIgnoringCase(*location, "External");
}

// The device's own serial number; when it states none, the "USB Serial Number" found
// from the device up through its parents, if it converts to ASCII.
std::string serialNumber(const Dictionary& service, const std::optional<std::string>& ownSerial) {
    if (ownSerial && !ownSerial->empty()) return *ownSerial;
    return asciiCString(service.get("usbSerialNumber"), kUsbSerialBufferBytes).value_or("");
}

std::shared_ptr<QVIOKitDisk> diskRecord(const Dictionary& service, const Dictionary& properties) {
    const Characteristics found = characteristics(properties);
    if (!found.productName || found.productName->empty()) return nullptr;
    std::shared_ptr<QVIOKitDisk> disk = QVIOKitDisk::ioKitDisk();
    disk->setName(*found.productName);
    disk->setRemovable(isRemovable(found.location));
    disk->setSerialNo(serialNumber(service, found.serial));
    return disk;
}

}  // namespace

ArrayRef disksFromRegistry(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitDisk>> records;
    for (const DictionaryRef& service : walkedRegistryServices(source, kBlockStorageMatching)) {
        const DictionaryRef properties = serviceProperties(*service);
        if (!properties) continue;
        if (std::shared_ptr<QVIOKitDisk> disk = diskRecord(*service, *properties)) records.push_back(std::move(disk));
    }
    return equalRecordsOnce(records);
}

}  // namespace tov
