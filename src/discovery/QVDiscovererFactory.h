#pragma once

// Where the report manager gets the discoverers of a scan, made afresh for each one, and
// the two address facts of the IP change scan. The discoverer set follows the platform of
// the source: the machine's own for the live source, the recorded machine's for a capture.
// Tests substitute a factory of fakes.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"

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

    using Clock = std::function<std::chrono::system_clock::time_point()>;

    struct Options {
        // False for a scan that must leave no trace (printing): the saved addresses are
        // neither used nor written.
        bool persistAddresses = true;
        // The public-IP lookup page; "" for none.
        std::string publicIpUrl;
        Clock clock = std::chrono::system_clock::now;
    };

    // The live machine, with the lookup page this build was made with.
    QVDiscovererFactory();
    QVDiscovererFactory(std::shared_ptr<SystemSource> source, Options options);
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
    // The user logged in at the machine's console. A Linux machine without seat0 (a server,
    // a virtual machine) has no console at all.
    struct ConsoleUser {
        bool machineHasConsole = true;
        // "" when nobody is logged in at the console.
        std::string name;
    };
    virtual ConsoleUser currentHumanUsername();
    // The mount paths of the volumes mounted now, and the disk information of the volume at
    // a mount path ("BusProtocol" among its keys; null when there is none): what the
    // removable-media events ask.
    virtual std::vector<std::string> volumeMountPaths();
    virtual DictionaryRef volumeInfoForMountPath(const std::string& mountPath);
    // Gives back the memory of the USB vendor name table after a full scan.
    virtual void releaseVendorList();

    const std::shared_ptr<SystemSource>& source() const { return source_; }

private:
    bool readsLinux() const;
    std::vector<std::string> interfacePrefixes() const;
    std::unique_ptr<QVSystemInfoDiscoverer> discovererOf(const char* section);
    // The platform's own discoverer of a section that is not shared, or null.
    std::unique_ptr<QVSystemInfoDiscoverer> linuxDiscovererOf(const std::string& section);
    std::unique_ptr<QVSystemInfoDiscoverer> macDiscovererOf(const std::string& section);
    std::unique_ptr<QVDiskDiscoverer> diskDiscovererOf(const char* section);
    // The id names shared by the discoverers alive at the same time (those of one scan):
    // the databases are read once per scan and given back when its discoverers go away.
    std::shared_ptr<HardwareIds> hardwareIds();

    std::shared_ptr<SystemSource> source_;
    Options options_;
    std::weak_ptr<HardwareIds> hardwareIds_;
};

}  // namespace tov
