#pragma once

// Who made the machine and what it is called, as its firmware tells: the DMI tables on
// PCs and servers, the device tree on Arm boards. A machine without them is normal.

#include <string>

#include "discovery/SystemSource.h"

namespace tov {

// /sys/class/dmi/id/sys_vendor; "" without DMI.
std::string linuxSystemManufacturer(SystemSource& source);

// /sys/class/dmi/id/product_name, else the device tree's model; "" without either.
std::string linuxSystemModel(SystemSource& source);

}  // namespace tov
