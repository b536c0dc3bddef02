#pragma once

// The "iokit" section on a Mac: the platform serial number, displays, keyboards, pointing
// devices, batteries, block-storage disks, network adapters, cameras and memory modules,
// from the device registry, the power sources and the system profiler's reports.

#include <memory>
#include <string>

#include "discovery/IOKitSectionDiscoverer.h"
#include "discovery/QVSWiFiInterface.h"
#include "discovery/SystemSource.h"

namespace tov {

class QVIOKitHardwareInfoDiscoverer : public IOKitSectionDiscoverer {
public:
    // mockWiFi hands every network adapter the mock Wi-Fi interface's network name; the
    // daemon always asks the system's own interface.
    explicit QVIOKitHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source, bool mockWiFi = false);

    // The serial number is the platform expert's.
    ArrayRef discoverSerialNumbers() override;
    ArrayRef discoverDisplays() override;
    ArrayRef discoverKeyboards() override;
    ArrayRef discoverPointingDevices() override;
    ArrayRef discoverBatteries() override;
    ArrayRef discoverDisks() override;
    ArrayRef discoverIOBlockStorageDeviceAsDisks();
    ArrayRef discoverNetworkAdapters() override;
    ArrayRef discoverCameras() override;
    ArrayRef discoverMemories() override;

private:
    std::shared_ptr<SystemSource> source_;
    bool mockWiFi_;
};

}  // namespace tov
