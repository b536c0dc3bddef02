#pragma once

// Names of USB device vendors by their numeric id, from a table compiled into the
// program. The table is built on first use and freed after each hardware report, so it
// lives only while a scan needs it. Used on the scan thread only: nothing guards it.

#include <optional>
#include <string>

namespace tov {

class QVIOKitUsbHardwareVendorList {
public:
    // The vendor's name, or nothing when the table has no row for the id.
    static std::optional<std::string> vendorNameForVendorId(unsigned long vendorId);
    // Builds the table when it is absent.
    static void lazyInitVendorsList();
    // Frees the table; the next lookup builds it again.
    static void releaseVendorList();
    // Whether the table is built now.
    static bool isVendorListBuilt();
};

}  // namespace tov
