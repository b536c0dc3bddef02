#pragma once

// The input devices of /proc/bus/input/devices: one block per device, blocks separated
// by blank lines, each line a letter, a colon and its facts:
//   I: Bus=0003 Vendor=046d Product=c077 Version=0111
//   N: Name="Logitech USB Optical Mouse"
//   B: EV=17
//   B: KEY=ff0000 0 0 0 0
// Other lines (P:, S:, U:, H:, other bitmaps) are not needed and skipped.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "discovery/formats/InputCapabilities.h"

namespace tov {

struct InputDevice {
    std::uint16_t bus = 0;
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    // Printable; nothing when the block has no name line.
    std::optional<std::string> name;
    InputCapabilities events;
    InputCapabilities keys;
    InputCapabilities relativeAxes;
    InputCapabilities absoluteAxes;
    InputCapabilities properties;
};

inline constexpr std::uint16_t kInputBusUsb = 0x0003;

class ProcInputDevices {
public:
    static constexpr const char* kPath = "/proc/bus/input/devices";
    // A machine has a few dozen input devices; the file is a few kilobytes.
    static constexpr std::uint64_t kReadLimit = 1024 * 1024;
    static constexpr std::size_t kMaximumDevices = 1024;

    // The devices of the file's text, in file order; bitmaps with words of wordBits bits.
    // A bitmap that cannot be read counts as empty (with a debug line).
    static std::vector<InputDevice> parse(std::string_view text, unsigned wordBits);
};

}  // namespace tov
