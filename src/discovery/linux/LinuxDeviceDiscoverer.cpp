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

ArrayRef LinuxDeviceDiscoverer::discoverSerialNumbers() { return serialNumbersOf(linuxMachineSerialNumber(*source_)); }

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
