#include "discovery/macos/QVIOKitHardwareInfoDiscoverer.h"

#include <utility>

#include "discovery/QVSWiFiInterfaceFactory.h"
#include "discovery/macos/MacWiFiInterfaces.h"
#include "discovery/macos/PowerSourceBatteries.h"
#include "discovery/macos/RegistryDisks.h"
#include "discovery/macos/RegistryInputDevices.h"
#include "discovery/macos/RegistryNetworkAdapters.h"
#include "discovery/macos/RegistrySerialNumber.h"
#include "discovery/macos/SystemProfilerDevices.h"

namespace tov {

QVIOKitHardwareInfoDiscoverer::QVIOKitHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source, bool mockWiFi)
    : source_(std::move(source)), mockWiFi_(mockWiFi) {}

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverSerialNumbers() {
    return serialNumbersOf(platformSerialNumberFromRegistry(*source_));
}

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverDisplays() { return displaysFromSystemProfiler(*source_); }

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverKeyboards() { return keyboardsFromRegistry(*source_); }

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverPointingDevices() { return pointingDevicesFromRegistry(*source_); }

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverBatteries() { return batteriesFromPowerSources(*source_); }

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverDisks() { return makeArray(*discoverIOBlockStorageDeviceAsDisks()); }

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverIOBlockStorageDeviceAsDisks() { return disksFromRegistry(*source_); }

// The Wi-Fi interface is asked anew for every adapter, as the system's may change.
ArrayRef QVIOKitHardwareInfoDiscoverer::discoverNetworkAdapters() {
    SystemSource& source = *source_;
    const std::shared_ptr<QVSWiFiInterface> wiFiInterface =
        QVSWiFiInterfaceFactory::wiFiInterface(mockWiFi_, [&source] { return macWiFiInterfaces(source); });
    return networkAdaptersFromRegistry(source, *wiFiInterface);
}

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverCameras() { return camerasFromSystemProfiler(*source_); }

ArrayRef QVIOKitHardwareInfoDiscoverer::discoverMemories() { return memoryModulesFromSystemProfiler(*source_); }

}  // namespace tov
