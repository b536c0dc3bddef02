#pragma once

// Keyboards and pointing devices of a Mac: the HID interfaces the device registry matches
// by their generic-desktop usage. Every interface is a candidate; equal records once.

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

// QVIOKitKeyboard records of the keyboard interfaces (usage page 1, usage 6).
ArrayRef keyboardsFromRegistry(SystemSource& source);

// QVIOKitPointingDevice records of the mouse interfaces (usage page 1, usage 2).
ArrayRef pointingDevicesFromRegistry(SystemSource& source);

}  // namespace tov
