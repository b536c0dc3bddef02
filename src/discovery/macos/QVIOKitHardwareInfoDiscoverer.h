#pragma once

// The "iokit" section on a Mac: the platform serial number, displays, keyboards, pointing
// devices, batteries, block-storage disks, network adapters, cameras and memory modules,
// from the device registry, the power sources and the system profiler's reports.

#include <memory>
#include <string>

#include "discovery/QVSWiFiInterface.h"
#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SectionKeys.h"
#include "discovery/SystemSource.h"

namespace tov {

class QVIOKitHardwareInfoDiscoverer : public QVDiskDiscoverer, public IOKitSectionKeys {
public:
    static constexpr const char* kSourceName = "iokit";

    // mockWiFi hands every network adapter the mock Wi-Fi interface's network name; the
    // daemon always asks the system's own interface.
    explicit QVIOKitHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source, bool mockWiFi = false);

    std::string sourceName() const override { return kSourceName; }
    // The nine categories, in the order of the keys above.
    DictionaryRef discoverInfo() override;

    // One dictionary { "serialNumber": ... }; empty when the machine states no platform
    // serial number.
    ArrayRef discoverSerialNumbers();
    ArrayRef discoverDisplays();
    ArrayRef discoverKeyboards();
    ArrayRef discoverPointingDevices();
    ArrayRef discoverBatteries();
    ArrayRef discoverDisks() override;
    ArrayRef discoverIOBlockStorageDeviceAsDisks();
    ArrayRef discoverNetworkAdapters();
    ArrayRef discoverCameras();
    ArrayRef discoverMemories();

private:
    std::shared_ptr<SystemSource> source_;
    bool mockWiFi_;
};

}  // namespace tov
