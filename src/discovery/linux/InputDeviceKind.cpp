#include "discovery/linux/InputDeviceKind.h"

namespace tov {
namespace {

// Numbers of <linux/input-event-codes.h>.
constexpr unsigned kEventKey = 0x01;
constexpr unsigned kEventRelative = 0x02;
constexpr unsigned kEventAbsolute = 0x03;
constexpr unsigned kEventRepeat = 0x14;

constexpr unsigned kKeyEscape = 1;
constexpr unsigned kKeyD = 31;

constexpr unsigned kButtonMouse = 0x110;  // BTN_LEFT, the first mouse button
constexpr unsigned kButtonJoystick = 0x120;  // the first button past the mouse buttons
constexpr unsigned kButtonToolPen = 0x140;
constexpr unsigned kButtonToolFinger = 0x145;
constexpr unsigned kButtonStylus = 0x14b;

constexpr unsigned kRelativeX = 0x00;
constexpr unsigned kRelativeY = 0x01;
constexpr unsigned kAbsoluteX = 0x00;
constexpr unsigned kAbsoluteY = 0x01;
constexpr unsigned kAbsoluteZ = 0x02;
constexpr unsigned kAbsoluteMultiTouchX = 0x35;
constexpr unsigned kAbsoluteMultiTouchY = 0x36;

constexpr unsigned kPropertyDirect = 0x01;
constexpr unsigned kPropertyPointingStick = 0x05;
constexpr unsigned kPropertyAccelerometer = 0x06;

bool hasKeys(const InputDevice& device) { return device.events.has(kEventKey); }

bool hasRelativeXY(const InputDevice& device) {
    return device.events.has(kEventRelative) && device.relativeAxes.has(kRelativeX) &&
           device.relativeAxes.has(kRelativeY);
}

bool hasAbsoluteXY(const InputDevice& device) {
    const bool plain = device.absoluteAxes.has(kAbsoluteX) && device.absoluteAxes.has(kAbsoluteY);
    const bool multiTouch =
        device.absoluteAxes.has(kAbsoluteMultiTouchX) && device.absoluteAxes.has(kAbsoluteMultiTouchY);
    return device.events.has(kEventAbsolute) && (plain || multiTouch);
}

// Motion sensors report X, Y and Z and no keys, or say so by their property.
bool isAccelerometer(const InputDevice& device) {
    if (device.properties.has(kPropertyAccelerometer)) return true;
    return !hasKeys(device) && hasAbsoluteXY(device) && device.absoluteAxes.has(kAbsoluteZ);
}

bool hasMouseButton(const InputDevice& device) {
    for (unsigned button = kButtonMouse; button < kButtonJoystick; ++button) {
        if (device.keys.has(button)) return true;
    }
    return false;
}

bool hasPen(const InputDevice& device) {
    return device.keys.has(kButtonToolPen) || device.keys.has(kButtonStylus);
}

bool isMouse(const InputDevice& device) {
    if (!hasKeys(device)) return false;
    if (hasRelativeXY(device)) return device.keys.has(kButtonMouse);
    return hasAbsoluteXY(device) && hasMouseButton(device) && !hasPen(device) &&
           !device.keys.has(kButtonToolFinger) && !device.properties.has(kPropertyDirect);
}

bool isTouchpad(const InputDevice& device) {
    return hasKeys(device) && hasAbsoluteXY(device) && device.keys.has(kButtonToolFinger) && !hasPen(device) &&
           !device.properties.has(kPropertyDirect);
}

bool isPointingStick(const InputDevice& device) { return device.properties.has(kPropertyPointingStick); }

}  // namespace

bool isKeyboard(const InputDevice& device) {
    return hasKeys(device) && device.events.has(kEventRepeat) && device.keys.hasAll(kKeyEscape, kKeyD);
}

bool isPointingDevice(const InputDevice& device) {
    if (isAccelerometer(device)) return false;
    return isMouse(device) || isTouchpad(device) || isPointingStick(device);
}

}  // namespace tov
