#pragma once

// Where the report manager gets the discoverers of a scan, made afresh for each one, and
// the two address facts of the IP change scan. Tests substitute a factory of fakes.
// This build's factory yields discoverers whose sections are empty and no addresses; the
// platform discoverers replace them section by section.

#include <memory>
#include <string>
#include <vector>

#include "discovery/QVSystemInfoDiscoverer.h"

namespace tov {

class QVDiscovererFactory {
public:
    // The section names, in the order in which a full scan runs their discoverers.
    static constexpr const char* kIOKitSection = "iokit";
    static constexpr const char* kAppKitSection = "appkit";
    static constexpr const char* kDiskUtilSection = "diskutil";
    static constexpr const char* kOperatingSystemsSection = "operatingSystems";
    static constexpr const char* kCoreAudioSection = "coreaudio";
    static constexpr const char* kSysCtlSection = "sysctl";
    static constexpr const char* kCoreFoundationSection = "corefoundation";
    static constexpr const char* kEventsSection = "events";

    virtual ~QVDiscovererFactory() = default;

    // The discoverer of "HWInventory", the scan's time stamp.
    virtual std::unique_ptr<QVSystemInfoDiscoverer> inventoryDiscoverer();
    // The eight section discoverers, in the order above.
    virtual std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> sectionDiscoverers();
    // The operating-system facts alone, for the identity change scan.
    virtual std::unique_ptr<QVSystemInfoDiscoverer> operatingSystemDiscoverer();
    // The disk-utility and then the device-registry discoverer, for the disk change scan.
    virtual std::vector<std::unique_ptr<QVDiskDiscoverer>> diskDiscoverers();
    // The local IPv4 address and the public one; "" when there is none.
    virtual std::string localIP();
    virtual std::string publicIP();
    // Gives back the memory of the USB vendor name table after a full scan.
    virtual void releaseVendorList();
};

}  // namespace tov
