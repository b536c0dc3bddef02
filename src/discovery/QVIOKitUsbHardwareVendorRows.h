#pragma once

// The rows of the USB vendor table, generated at build time from usb.ids (see
// cmake/GenerateUsbVendorTable.cmake): the vendor id in decimal and the vendor's name.

#include <cstddef>

namespace tov {

struct UsbVendorRow {
    const char* decimalId;
    const char* name;
};

extern const UsbVendorRow kUsbVendorRows[];
extern const std::size_t kUsbVendorRowCount;

}  // namespace tov
