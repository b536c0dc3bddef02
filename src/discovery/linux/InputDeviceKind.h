#pragma once

// What an input device is, told from its capabilities as udev's input_id tells it:
// keyboards have the keys from Esc through the letters (keys 1 to 31) and repeat them;
// pointing devices are mice (relative X and Y with a left button, or absolute X and Y
// with a mouse button and no pen or finger tool, as virtual machines' tablets and mice),
// touchpads (absolute X and Y with a finger tool, not a direct-touch screen) and
// pointing sticks. Touchscreens, pen tablets, accelerometers, switches, power buttons,
// hot keys and speakers are neither.

#include "discovery/linux/ProcInputDevices.h"

namespace tov {

bool isKeyboard(const InputDevice& device);
bool isPointingDevice(const InputDevice& device);

}  // namespace tov
