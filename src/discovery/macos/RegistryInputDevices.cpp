#include "discovery/macos/RegistryInputDevices.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "discovery/EqualRecordsOnce.h"
#include "discovery/QVIOKitUsbHardwareVendorList.h"
#include "discovery/macos/RegistryProperty.h"
#include "discovery/macos/RegistryServices.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitPointingDevice.h"

namespace tov {
namespace {

constexpr const char* kKeyboardMatching = "IOHIDDevice 1 6";
constexpr const char* kMouseMatching = "IOHIDDevice 1 2";

// The properties of each walked interface whose properties could be read.
std::vector<DictionaryRef> interfaceProperties(SystemSource& source, const std::string& matching) {
    std::vector<DictionaryRef> found;
    for (const DictionaryRef& service : walkedRegistryServices(source, matching)) {
        if (DictionaryRef properties = serviceProperties(*service)) found.push_back(std::move(properties));
    }
    return found;
}

// The USB vendor table's name for "VendorID" (0 when missing); else "Manufacturer".
std::string pointingDeviceManufacturer(const Dictionary& properties) {
    const unsigned long vendorId = properties.get("VendorID").toUInt64();
    const std::optional<std::string> vendorName = QVIOKitUsbHardwareVendorList::vendorNameForVendorId(vendorId);
    if (vendorName && !vendorName->empty()) return *vendorName;
    return stringProperty(properties, "Manufacturer").value_or("");
}

}  // namespace

ArrayRef keyboardsFromRegistry(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitKeyboard>> records;
    for (const DictionaryRef& properties : interfaceProperties(source, kKeyboardMatching)) {
        std::shared_ptr<QVIOKitKeyboard> keyboard = QVIOKitKeyboard::ioKitKeyboard();
        keyboard->setName(stringProperty(*properties, "Product"));
        records.push_back(std::move(keyboard));
    }
    return equalRecordsOnce(records);
}

ArrayRef pointingDevicesFromRegistry(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitPointingDevice>> records;
    for (const DictionaryRef& properties : interfaceProperties(source, kMouseMatching)) {
        std::shared_ptr<QVIOKitPointingDevice> device = QVIOKitPointingDevice::ioKitPointingDevice();
        device->setDescription(stringProperty(*properties, "Product"));
        device->setManufacturer(pointingDeviceManufacturer(*properties));
        records.push_back(std::move(device));
    }
    return equalRecordsOnce(records);
}

}  // namespace tov
