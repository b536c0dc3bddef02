#pragma once

// The "displays" category on Linux: display controllers and the monitors on their connectors.
// - one record per PCI function of class 0x03 (/sys/bus/pci/devices/*/class): described by
//   its device name, made by its vendor (pci.ids); no mode.
// - one record per connector /sys/class/drm/card*-* whose status is "connected" and whose
//   EDID can be read: named by the EDID (else "Generic Display"), made by whom the display
//   manufacturer rule names from the EDID's vendor id, with the EDID's preferred mode and a
//   depth of three times its bits per colour (24 when it does not say). A connector
//   without a readable EDID gives no record: without the vendor id the rule would name Apple.
// Equal records are listed once, so a tiled monitor on two connectors is one record.

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxDisplays(SystemSource& source, HardwareIds& hardwareIds);

}  // namespace tov
