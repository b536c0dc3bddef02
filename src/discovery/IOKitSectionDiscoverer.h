#pragma once

// The "iokit" section: the machine's serial number and its devices, in the section's
// order (displays, keyboards, pointing devices, batteries, disks, network adapters,
// cameras, memory modules). Each platform reads every category its own way; the section
// is put together here once, so both platforms' reports have one shape.

#include <optional>
#include <string>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SectionKeys.h"

namespace tov {

class IOKitSectionDiscoverer : public QVDiskDiscoverer, public IOKitSectionKeys {
public:
    static constexpr const char* kSourceName = "iokit";

    std::string sourceName() const override { return kSourceName; }
    // The nine categories, in the order of the keys.
    DictionaryRef discoverInfo() final;

    // One dictionary { "serialNumber": ... }; empty when the machine states no serial number.
    virtual ArrayRef discoverSerialNumbers() = 0;
    virtual ArrayRef discoverDisplays() = 0;
    virtual ArrayRef discoverKeyboards() = 0;
    virtual ArrayRef discoverPointingDevices() = 0;
    virtual ArrayRef discoverBatteries() = 0;
    virtual ArrayRef discoverNetworkAdapters() = 0;
    virtual ArrayRef discoverCameras() = 0;
    virtual ArrayRef discoverMemories() = 0;

protected:
    // The serial-number category of a machine with this serial number, or none.
    static ArrayRef serialNumbersOf(const std::optional<std::string>& serial);
};

}  // namespace tov
