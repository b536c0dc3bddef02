#include "discovery/QVDiscovererFactory.h"

#include <utility>

#include "discovery/PublicIpLookupUrl.h"
#include "discovery/QVAppKitHardwareInfoDiscoverer.h"
#include "discovery/QVEmptySectionDiscoverer.h"
#include "discovery/QVHWInventoryDiscoverer.h"
#include "discovery/QVIPInfoDiscoverer.h"
#include "discovery/QVIOKitUsbHardwareVendorList.h"
#include "discovery/SystemFacts.h"
#include "discovery/linux/LinuxConsoleUser.h"
#include "discovery/linux/LinuxCoreFoundationDiscoverer.h"
#include "discovery/linux/LinuxMountedVolume.h"
#include "discovery/linux/LinuxDeviceDiscoverer.h"
#include "discovery/linux/LinuxOperatingSystemDiscoverer.h"
#include "discovery/linux/LinuxSoundDiscoverer.h"
#include "discovery/linux/LinuxSysCtlDiscoverer.h"
#include "discovery/linux/LinuxVolumeDiscoverer.h"
#include "discovery/macos/QVCoreAudioHardwareDiscoverer.h"
#include "discovery/macos/QVCoreFoundationDiscoverer.h"
#include "discovery/macos/QVDiskUtilHardwareInfoDiscoverer.h"
#include "discovery/macos/QVIOKitHardwareInfoDiscoverer.h"
#include "discovery/macos/QVOSSystemInfoDiscoverer.h"
#include "discovery/macos/QVSysCtlHardwareInfoDiscoverer.h"
#include "platform/LiveSystemSource.h"

namespace tov {
namespace {

QVDiscovererFactory::Options liveOptions() {
    QVDiscovererFactory::Options options;
    options.publicIpUrl = publicIpLookupUrl();
    return options;
}

}  // namespace

QVDiscovererFactory::QVDiscovererFactory()
    : QVDiscovererFactory(std::make_shared<LiveSystemSource>(), liveOptions()) {}

QVDiscovererFactory::QVDiscovererFactory(std::shared_ptr<SystemSource> source, Options options)
    : source_(std::move(source)), options_(std::move(options)) {}

bool QVDiscovererFactory::readsLinux() const { return source_->platform() == SystemSource::kLinuxPlatform; }

std::vector<std::string> QVDiscovererFactory::interfacePrefixes() const {
    if (readsLinux()) return {"en", "eth", "wl"};
    return {"en"};
}

std::shared_ptr<HardwareIds> QVDiscovererFactory::hardwareIds() {
    std::shared_ptr<HardwareIds> ids = hardwareIds_.lock();
    if (!ids) {
        ids = std::make_shared<HardwareIds>(source_);
        hardwareIds_ = ids;
    }
    return ids;
}

std::unique_ptr<QVSystemInfoDiscoverer> QVDiscovererFactory::inventoryDiscoverer() {
    return std::make_unique<QVHWInventoryDiscoverer>(options_.clock);
}

std::unique_ptr<QVDiskDiscoverer> QVDiscovererFactory::diskDiscovererOf(const char* section) {
    const std::string name = section;
    if (name == kIOKitSection) {
        if (readsLinux()) return std::make_unique<LinuxDeviceDiscoverer>(source_, hardwareIds());
        return std::make_unique<QVIOKitHardwareInfoDiscoverer>(source_);
    }
    if (name == kDiskUtilSection) {
        if (readsLinux()) return std::make_unique<LinuxVolumeDiscoverer>(source_);
        return std::make_unique<QVDiskUtilHardwareInfoDiscoverer>(source_);
    }
    return std::make_unique<QVEmptySectionDiscoverer>(section);
}

std::unique_ptr<QVSystemInfoDiscoverer> QVDiscovererFactory::discovererOf(const char* section) {
    const std::string name = section;
    if (name == kEventsSection) {
        return std::make_unique<QVIPInfoDiscoverer>(
            source_, QVIPInfoDiscoverer::Options{interfacePrefixes(), options_.publicIpUrl, options_.persistAddresses});
    }
    if (name == kAppKitSection) return std::make_unique<QVAppKitHardwareInfoDiscoverer>(source_);
    if (std::unique_ptr<QVSystemInfoDiscoverer> discoverer = readsLinux() ? linuxDiscovererOf(name) : macDiscovererOf(name)) {
        return discoverer;
    }
    return diskDiscovererOf(section);
}

std::unique_ptr<QVSystemInfoDiscoverer> QVDiscovererFactory::linuxDiscovererOf(const std::string& section) {
    if (section == kOperatingSystemsSection) return std::make_unique<LinuxOperatingSystemDiscoverer>(source_);
    if (section == kCoreFoundationSection) return std::make_unique<LinuxCoreFoundationDiscoverer>(source_);
    if (section == kSysCtlSection) return std::make_unique<LinuxSysCtlDiscoverer>(source_, options_.clock);
    if (section == kCoreAudioSection) return std::make_unique<LinuxSoundDiscoverer>(source_, hardwareIds());
    return nullptr;
}

std::unique_ptr<QVSystemInfoDiscoverer> QVDiscovererFactory::macDiscovererOf(const std::string& section) {
    if (section == kOperatingSystemsSection) return std::make_unique<QVOSSystemInfoDiscoverer>(source_);
    if (section == kCoreFoundationSection) return std::make_unique<QVCoreFoundationDiscoverer>(source_);
    if (section == kSysCtlSection) return std::make_unique<QVSysCtlHardwareInfoDiscoverer>(source_);
    if (section == kCoreAudioSection) return std::make_unique<QVCoreAudioHardwareDiscoverer>(source_);
    return nullptr;
}

std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> QVDiscovererFactory::sectionDiscoverers() {
    std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> discoverers;
    for (const char* section : {kIOKitSection, kAppKitSection, kDiskUtilSection, kOperatingSystemsSection,
                                kCoreAudioSection, kSysCtlSection, kCoreFoundationSection, kEventsSection}) {
        discoverers.push_back(discovererOf(section));
    }
    return discoverers;
}

std::unique_ptr<QVSystemInfoDiscoverer> QVDiscovererFactory::operatingSystemDiscoverer() {
    return discovererOf(kOperatingSystemsSection);
}

std::vector<std::unique_ptr<QVDiskDiscoverer>> QVDiscovererFactory::diskDiscoverers() {
    std::vector<std::unique_ptr<QVDiskDiscoverer>> discoverers;
    discoverers.push_back(diskDiscovererOf(kDiskUtilSection));
    discoverers.push_back(diskDiscovererOf(kIOKitSection));
    return discoverers;
}

std::string QVDiscovererFactory::localIP() { return QVIPInfoDiscoverer::localIP(*source_, interfacePrefixes()); }

std::string QVDiscovererFactory::publicIP() { return QVIPInfoDiscoverer::publicIP(*source_, options_.publicIpUrl); }

void QVDiscovererFactory::releaseVendorList() { QVIOKitUsbHardwareVendorList::releaseVendorList(); }

QVDiscovererFactory::ConsoleUser QVDiscovererFactory::currentHumanUsername() {
    ConsoleUser user;
    if (!readsLinux()) {
        user.name = QVOSSystemInfoDiscoverer::currentHumanUsername(*source_);
        return user;
    }
    const DictionaryRef seat = source_->fact(facts::kConsoleUser, kConsoleSeat).dictionary();
    user.machineHasConsole = seat && seat->get("seat").toBool();
    user.name = linuxConsoleUser(*source_);
    return user;
}

std::vector<std::string> QVDiscovererFactory::volumeMountPaths() {
    if (!readsLinux()) {
        return QVDiskUtilHardwareInfoDiscoverer::mountPathWithDiskUtilListPlistResponse(
            QVDiskUtilHardwareInfoDiscoverer::diskListPlistResponse(*source_));
    }
    return LinuxMountedVolume::blockDeviceMountPaths(*source_);
}

DictionaryRef QVDiscovererFactory::volumeInfoForMountPath(const std::string& mountPath) {
    if (!readsLinux()) return QVDiskUtilHardwareInfoDiscoverer::infoPlistForMountPath(*source_, mountPath);
    return LinuxMountedVolume::infoForMountPath(*source_, mountPath);
}

}  // namespace tov
