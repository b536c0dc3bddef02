#include "discovery/linux/LinuxInputDevices.h"

#include <memory>
#include <string>
#include <vector>

#include "common/QVSLogger.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/QVIOKitUsbHardwareVendorList.h"
#include "discovery/linux/InputDeviceKind.h"
#include "discovery/linux/LinuxKernelWordBits.h"
#include "discovery/linux/ProcInputDevices.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitPointingDevice.h"

namespace tov {
namespace {

// The named input devices of the machine; none (with a debug line) when the list
// cannot be read.
std::vector<InputDevice> namedInputDevices(SystemSource& source) {
    const std::optional<std::string> text = source.readFile(ProcInputDevices::kPath, ProcInputDevices::kReadLimit);
    if (!text) {
        QVSLogger::debug("%s cannot be read (missing or larger than %llu bytes); no input devices.",
                         ProcInputDevices::kPath, static_cast<unsigned long long>(ProcInputDevices::kReadLimit));
        return {};
    }
    std::vector<InputDevice> named;
    for (InputDevice& device : ProcInputDevices::parse(*text, linuxKernelWordBits(source))) {
        if (device.name && !device.name->empty()) {
            named.push_back(std::move(device));
        } else {
            QVSLogger::debug("An input device of %s has no name (a cut-off entry?); it is left out.",
                             ProcInputDevices::kPath);
        }
    }
    return named;
}

// The USB vendor table's name of a USB device's vendor; "" for other buses and
// vendors the table does not know.
std::string pointingManufacturer(const InputDevice& device) {
    if (device.bus != kInputBusUsb) return "";
    return QVIOKitUsbHardwareVendorList::vendorNameForVendorId(device.vendor).value_or("");
}

}  // namespace

ArrayRef discoverLinuxKeyboards(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitKeyboard>> keyboards;
    for (const InputDevice& device : namedInputDevices(source)) {
        if (!isKeyboard(device)) continue;
        std::shared_ptr<QVIOKitKeyboard> keyboard = QVIOKitKeyboard::ioKitKeyboard();
        keyboard->setName(*device.name);
        keyboards.push_back(std::move(keyboard));
    }
    return equalRecordsOnce(keyboards);
}

ArrayRef discoverLinuxPointingDevices(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitPointingDevice>> pointingDevices;
    for (const InputDevice& device : namedInputDevices(source)) {
        if (!isPointingDevice(device)) continue;
        std::shared_ptr<QVIOKitPointingDevice> pointingDevice = QVIOKitPointingDevice::ioKitPointingDevice();
        pointingDevice->setDescription(*device.name);
        pointingDevice->setManufacturer(pointingManufacturer(device));
        pointingDevices.push_back(std::move(pointingDevice));
    }
    return equalRecordsOnce(pointingDevices);
}

}  // namespace tov
