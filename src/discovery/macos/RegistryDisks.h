#pragma once

// The block-storage devices of a Mac's device registry as disks: product name, serial
// number (the USB serial number of a parent when the device states none) and whether the
// disk is removable. A device without a product name is left out; equal records once.

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

// QVIOKitDisk records of the "IOBlockStorageDevice" services.
ArrayRef disksFromRegistry(SystemSource& source);

}  // namespace tov
