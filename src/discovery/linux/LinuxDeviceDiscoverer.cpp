#include "discovery/linux/LinuxDeviceDiscoverer.h"

#include <utility>

#include "discovery/linux/LinuxBatteries.h"
#include "discovery/linux/LinuxCameras.h"
#include "discovery/linux/LinuxDisks.h"
#include "discovery/linux/LinuxDisplays.h"
#include "discovery/linux/LinuxInputDevices.h"
#include "discovery/linux/LinuxMemoryModules.h"
#include "discovery/linux/LinuxNetworkAdapters.h"
#include "discovery/linux/LinuxSerialNumber.h"

namespace tov {

LinuxDeviceDiscoverer::LinuxDeviceDiscoverer(std::shared_ptr<SystemSource> source,
                                             std::shared_ptr<HardwareIds> hardwareIds)
    : source_(std::move(source)), hardwareIds_(std::move(hardwareIds)) {}

DictionaryRef LinuxDeviceDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kSerialNumbersKey, discoverSerialNumbers());
    section->set(kDisplaysKey, discoverDisplays());
    section->set(kKeyboardsKey, discoverKeyboards());
    section->set(kPointingDevicesKey, discoverPointingDevices());
    section->set(kBatteriesKey, discoverBatteries());
    section->set(kDisksKey, discoverDisks());
    section->set(kNetworkAdaptersKey, discoverNetworkAdapters());
    section->set(kCameraKey, discoverCameras());
    section->set(kMemoryKey, discoverMemories());
    return section;
}

ArrayRef LinuxDeviceDiscoverer::discoverSerialNumbers() {
    ArrayRef serials = makeArray();
    if (const std::optional<std::string> serial = linuxMachineSerialNumber(*source_)) {
        DictionaryRef entry = makeDictionary();
        entry->set(kSerialNumberKey, *serial);
        serials->push_back(entry);
    }
    return serials;
}

ArrayRef LinuxDeviceDiscoverer::discoverDisplays() { return discoverLinuxDisplays(*source_, *hardwareIds_); }

ArrayRef LinuxDeviceDiscoverer::discoverKeyboards() { return discoverLinuxKeyboards(*source_); }

ArrayRef LinuxDeviceDiscoverer::discoverPointingDevices() { return discoverLinuxPointingDevices(*source_); }

ArrayRef LinuxDeviceDiscoverer::discoverBatteries() { return discoverLinuxBatteries(*source_); }

ArrayRef LinuxDeviceDiscoverer::discoverDisks() { return discoverLinuxDisks(*source_, *hardwareIds_); }

ArrayRef LinuxDeviceDiscoverer::discoverNetworkAdapters() {
    return discoverLinuxNetworkAdapters(*source_, *hardwareIds_);
}

ArrayRef LinuxDeviceDiscoverer::discoverCameras() { return discoverLinuxCameras(*source_); }

ArrayRef LinuxDeviceDiscoverer::discoverMemories() { return discoverLinuxMemoryModules(*source_); }

}  // namespace tov
