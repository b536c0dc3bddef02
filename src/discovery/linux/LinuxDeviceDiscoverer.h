#pragma once

// The "iokit" section on Linux: the machine's serial number and its devices, in the
// section's order: displays, keyboards, pointing devices, batteries, disks, network
// adapters, cameras and memory modules. Each category is read from sysfs, procfs and
// the firmware tables by its own free function; this class puts them together.

#include <memory>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SectionKeys.h"
#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"

namespace tov {

class LinuxDeviceDiscoverer : public QVDiskDiscoverer, public IOKitSectionKeys {
public:
    LinuxDeviceDiscoverer(std::shared_ptr<SystemSource> source, std::shared_ptr<HardwareIds> hardwareIds);

    std::string sourceName() const override { return "iokit"; }
    DictionaryRef discoverInfo() override;
    ArrayRef discoverDisks() override;

    // [ { "serialNumber": serial } ], or an empty array on a machine without one.
    ArrayRef discoverSerialNumbers();
    ArrayRef discoverDisplays();
    ArrayRef discoverKeyboards();
    ArrayRef discoverPointingDevices();
    ArrayRef discoverBatteries();
    ArrayRef discoverNetworkAdapters();
    ArrayRef discoverCameras();
    ArrayRef discoverMemories();

private:
    std::shared_ptr<SystemSource> source_;
    std::shared_ptr<HardwareIds> hardwareIds_;
};

}  // namespace tov
