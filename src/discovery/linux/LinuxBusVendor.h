#pragma once

// The vendor and device ids of the PCI or USB device that a sysfs device link leads to,
// or of the nearest one above it: a USB interface belongs to the USB device above it,
// which carries "idVendor" and "idProduct"; a PCI function carries "vendor" ("0x8086")
// and "device" and names "pci" as its subsystem; a virtio device belongs to the PCI
// function above it. Devices of no bus (platform devices of a system on a chip, virtual
// cards) have none.

#include <cstdint>
#include <optional>
#include <string>

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"

namespace tov {

struct BusVendor {
    IdsDatabase database;
    std::uint16_t vendor;
    // Nothing when the device's id file is missing or unreadable.
    std::optional<std::uint16_t> device;
};

// deviceLink: a link such as "/sys/class/sound/card0/device"; nothing when it cannot be
// followed or no PCI or USB device stands at or above its target.
std::optional<BusVendor> linuxBusVendor(SystemSource& source, const std::string& deviceLink);

}  // namespace tov
