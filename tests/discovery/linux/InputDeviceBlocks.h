#pragma once

// Blocks of /proc/bus/input/devices as real machines print them (64-bit kernels unless
// said), for the tests of the input device rules.

namespace tov::testing::input {

inline constexpr const char* kAtKeyboard =
    "I: Bus=0011 Vendor=0001 Product=0001 Version=ab83\n"
    "N: Name=\"AT Translated Set 2 keyboard\"\n"
    "P: Phys=isa0060/serio0/input0\n"
    "S: Sysfs=/devices/platform/i8042/serio0/input/input3\n"
    "U: Uniq=\n"
    "H: Handlers=sysrq kbd leds event3\n"
    "B: PROP=0\n"
    "B: EV=120013\n"
    "B: KEY=402000000 3803078f800d001 feffffdfffefffff fffffffffffffffe\n"
    "B: MSC=10\n"
    "B: LED=7\n";

// The same keyboard as a 32-bit kernel prints it.
inline constexpr const char* kAtKeyboard32 =
    "I: Bus=0011 Vendor=0001 Product=0001 Version=ab41\n"
    "N: Name=\"AT Translated Set 2 keyboard\"\n"
    "B: PROP=0\n"
    "B: EV=120013\n"
    "B: KEY=4 2000000 3803078 f800d001 feffffdf ffefffff ffffffff fffffffe\n";

inline constexpr const char* kUsbKeyboard =
    "I: Bus=0003 Vendor=413c Product=2113 Version=0110\n"
    "N: Name=\"Dell KB216 Wired Keyboard\"\n"
    "B: PROP=0\n"
    "B: EV=120013\n"
    "B: KEY=1000000000007 ff9f207ac14057ff febeffdfffefffff fffffffffffffffe\n";

// Media keys of a keyboard: keys, but not Esc through the letters.
inline constexpr const char* kConsumerControl =
    "I: Bus=0003 Vendor=413c Product=2113 Version=0110\n"
    "N: Name=\"Dell KB216 Wired Keyboard Consumer Control\"\n"
    "B: PROP=0\n"
    "B: EV=1f\n"
    "B: KEY=3f000303ff 0 0 483ffff17aff32d bfd4444600000000 1 130ff38b17c000 677bfad9415fed 9ed68000004400 "
    "10000002\n"
    "B: REL=1040\n"
    "B: ABS=100000000\n";

// All the letter keys, but no key repeat.
inline constexpr const char* kLettersWithoutRepeat =
    "I: Bus=0003 Vendor=1a86 Product=e026 Version=0111\n"
    "N: Name=\"Scanner Pad\"\n"
    "B: EV=13\n"
    "B: KEY=fffffffffffffffe\n";

inline constexpr const char* kUsbMouse =
    "I: Bus=0003 Vendor=046d Product=c077 Version=0111\n"
    "N: Name=\"Logitech USB Optical Mouse\"\n"
    "B: PROP=0\n"
    "B: EV=17\n"
    "B: KEY=ff0000 0 0 0 0\n"
    "B: REL=903\n"
    "B: MSC=10\n";

inline constexpr const char* kPs2Mouse =
    "I: Bus=0011 Vendor=0002 Product=0006 Version=0000\n"
    "N: Name=\"ImExPS/2 Generic Explorer Mouse\"\n"
    "B: PROP=1\n"
    "B: EV=7\n"
    "B: KEY=1f0000 0 0 0 0\n"
    "B: REL=143\n";

// QEMU's USB tablet: absolute axes and mouse buttons, no touch.
inline constexpr const char* kQemuTablet =
    "I: Bus=0003 Vendor=0627 Product=0001 Version=0001\n"
    "N: Name=\"QEMU QEMU USB Tablet\"\n"
    "B: PROP=0\n"
    "B: EV=1f\n"
    "B: KEY=70000 0 0 0 0\n"
    "B: REL=900\n"
    "B: ABS=3\n"
    "B: MSC=10\n";

inline constexpr const char* kTouchpad =
    "I: Bus=0018 Vendor=06cb Product=cea3 Version=0100\n"
    "N: Name=\"SYNA3105:00 06CB:CEA3 Touchpad\"\n"
    "B: PROP=5\n"
    "B: EV=1b\n"
    "B: KEY=e520 10000 0 0 0 0\n"
    "B: ABS=2e0800000000003\n"
    "B: MSC=20\n";

inline constexpr const char* kPointingStick =
    "I: Bus=0011 Vendor=0002 Product=000a Version=0000\n"
    "N: Name=\"TPPS/2 IBM TrackPoint\"\n"
    "B: PROP=21\n"
    "B: EV=7\n"
    "B: KEY=70000 0 0 0 0\n"
    "B: REL=3\n";

inline constexpr const char* kTouchscreen =
    "I: Bus=0003 Vendor=1fd2 Product=6003 Version=0111\n"
    "N: Name=\"Melfas LGDisplay Incell Touch\"\n"
    "B: PROP=2\n"
    "B: EV=b\n"
    "B: KEY=400 0 0 0 0 0\n"
    "B: ABS=260800000000003\n";

// A pen tablet on the desk (not a screen): pen, stylus and its buttons.
inline constexpr const char* kPenTablet =
    "I: Bus=0003 Vendor=056a Product=0374 Version=0110\n"
    "N: Name=\"Wacom Intuos S Pen\"\n"
    "B: PROP=1\n"
    "B: EV=1b\n"
    "B: KEY=1c03 10000 0 0 0 0\n"
    "B: ABS=1000003\n";

inline constexpr const char* kAccelerometer =
    "I: Bus=0018 Vendor=0000 Product=0000 Version=0000\n"
    "N: Name=\"ST LIS3LV02DL Accelerometer\"\n"
    "B: PROP=40\n"
    "B: EV=9\n"
    "B: ABS=7\n";

inline constexpr const char* kLidSwitch =
    "I: Bus=0019 Vendor=0000 Product=0005 Version=0000\n"
    "N: Name=\"Lid Switch\"\n"
    "B: PROP=0\n"
    "B: EV=21\n"
    "B: SW=1\n";

inline constexpr const char* kPowerButton =
    "I: Bus=0019 Vendor=0000 Product=0001 Version=0000\n"
    "N: Name=\"Power Button\"\n"
    "B: PROP=0\n"
    "B: EV=3\n"
    "B: KEY=10000000000000 0\n";

inline constexpr const char* kSleepButton =
    "I: Bus=0019 Vendor=0000 Product=0003 Version=0000\n"
    "N: Name=\"Sleep Button\"\n"
    "B: PROP=0\n"
    "B: EV=3\n"
    "B: KEY=4000 0 0\n";

inline constexpr const char* kVideoBus =
    "I: Bus=0019 Vendor=0000 Product=0006 Version=0000\n"
    "N: Name=\"Video Bus\"\n"
    "B: PROP=0\n"
    "B: EV=3\n"
    "B: KEY=3e000b00000000 0 0 0\n";

inline constexpr const char* kHdaJack =
    "I: Bus=0000 Vendor=0000 Product=0000 Version=0000\n"
    "N: Name=\"HDA Intel PCH Headphone\"\n"
    "B: PROP=0\n"
    "B: EV=21\n"
    "B: SW=4\n";

inline constexpr const char* kPcSpeaker =
    "I: Bus=0010 Vendor=001f Product=0001 Version=0100\n"
    "N: Name=\"PC Speaker\"\n"
    "B: PROP=0\n"
    "B: EV=40001\n"
    "B: SND=6\n";

}  // namespace tov::testing::input
