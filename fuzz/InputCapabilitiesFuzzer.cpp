// Hands arbitrary bytes to the input capability bitmap reader and to the reader of
// /proc/bus/input/devices, with both word widths. Whatever the text, reading must end,
// stay within its bounds and keep names printable; the device rules must not fail.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "common/PrintableText.h"
#include "discovery/formats/InputCapabilities.h"
#include "discovery/linux/InputDeviceKind.h"
#include "discovery/linux/ProcInputDevices.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const unsigned wordBits : {32U, 64U}) {
        if (const auto bitmap = tov::InputCapabilities::parse(text, wordBits)) {
            if (bitmap->has(tov::InputCapabilities::kMaximumWords * 64)) std::abort();
            bitmap->hasAll(0, 767);
        }
        const auto devices = tov::ProcInputDevices::parse(text, wordBits);
        if (devices.size() > tov::ProcInputDevices::kMaximumDevices) std::abort();
        for (const tov::InputDevice& device : devices) {
            if (device.name && tov::printableText(*device.name) != *device.name) std::abort();
            tov::isKeyboard(device);
            tov::isPointingDevice(device);
        }
    }
    return 0;
}
