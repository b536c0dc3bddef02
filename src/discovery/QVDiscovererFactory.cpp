#include "discovery/QVDiscovererFactory.h"

#include "discovery/QVEmptySectionDiscoverer.h"
#include "discovery/QVHWInventoryDiscoverer.h"

namespace tov {

std::unique_ptr<QVSystemInfoDiscoverer> QVDiscovererFactory::inventoryDiscoverer() {
    return std::make_unique<QVHWInventoryDiscoverer>();
}

std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> QVDiscovererFactory::sectionDiscoverers() {
    std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> discoverers;
    for (const char* section : {kIOKitSection, kAppKitSection, kDiskUtilSection, kOperatingSystemsSection,
                                kCoreAudioSection, kSysCtlSection, kCoreFoundationSection, kEventsSection}) {
        discoverers.push_back(std::make_unique<QVEmptySectionDiscoverer>(section));
    }
    return discoverers;
}

std::unique_ptr<QVSystemInfoDiscoverer> QVDiscovererFactory::operatingSystemDiscoverer() {
    return std::make_unique<QVEmptySectionDiscoverer>(kOperatingSystemsSection);
}

std::vector<std::unique_ptr<QVDiskDiscoverer>> QVDiscovererFactory::diskDiscoverers() {
    std::vector<std::unique_ptr<QVDiskDiscoverer>> discoverers;
    discoverers.push_back(std::make_unique<QVEmptySectionDiscoverer>(kDiskUtilSection));
    discoverers.push_back(std::make_unique<QVEmptySectionDiscoverer>(kIOKitSection));
    return discoverers;
}

std::string QVDiscovererFactory::localIP() { return ""; }

std::string QVDiscovererFactory::publicIP() { return ""; }

void QVDiscovererFactory::releaseVendorList() {}

}  // namespace tov
