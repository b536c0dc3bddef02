#include "discovery/QVIOKitUsbHardwareVendorList.h"

#include <memory>
#include <unordered_map>

#include "discovery/QVIOKitUsbHardwareVendorRows.h"

namespace tov {
namespace {

using VendorsList = std::unordered_map<std::string, std::string>;

std::unique_ptr<VendorsList>& vendorsList() {
    static std::unique_ptr<VendorsList> list;
    return list;
}

}  // namespace

std::optional<std::string> QVIOKitUsbHardwareVendorList::vendorNameForVendorId(unsigned long vendorId) {
    lazyInitVendorsList();
    const auto found = vendorsList()->find(std::to_string(vendorId));
    if (found == vendorsList()->end()) return std::nullopt;
    return found->second;
}

void QVIOKitUsbHardwareVendorList::lazyInitVendorsList() {
    if (vendorsList()) return;
    auto list = std::make_unique<VendorsList>();
    list->reserve(kUsbVendorRowCount);
    for (std::size_t index = 0; index < kUsbVendorRowCount; ++index) {
        // A later row replaces an earlier one of the same id, so the fixed rows win.
        (*list)[kUsbVendorRows[index].decimalId] = kUsbVendorRows[index].name;
    }
    vendorsList() = std::move(list);
}

void QVIOKitUsbHardwareVendorList::releaseVendorList() { vendorsList().reset(); }

bool QVIOKitUsbHardwareVendorList::isVendorListBuilt() { return vendorsList() != nullptr; }

}  // namespace tov
