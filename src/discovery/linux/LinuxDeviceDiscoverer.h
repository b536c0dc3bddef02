#pragma once

// The "iokit" section on Linux: each category is read from sysfs, procfs and the firmware
// tables by its own free function.

#include <memory>

#include "discovery/IOKitSectionDiscoverer.h"
#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"

namespace tov {

class LinuxDeviceDiscoverer : public IOKitSectionDiscoverer {
public:
    LinuxDeviceDiscoverer(std::shared_ptr<SystemSource> source, std::shared_ptr<HardwareIds> hardwareIds);

    ArrayRef discoverSerialNumbers() override;
    ArrayRef discoverDisplays() override;
    ArrayRef discoverKeyboards() override;
    ArrayRef discoverPointingDevices() override;
    ArrayRef discoverBatteries() override;
    ArrayRef discoverDisks() override;
    ArrayRef discoverNetworkAdapters() override;
    ArrayRef discoverCameras() override;
    ArrayRef discoverMemories() override;

private:
    std::shared_ptr<SystemSource> source_;
    std::shared_ptr<HardwareIds> hardwareIds_;
};

}  // namespace tov
