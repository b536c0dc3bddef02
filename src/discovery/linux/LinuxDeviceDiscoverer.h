#pragma once

// The "iokit" section on Linux: the machine's devices. This version lists the machine's
// serial number; the device categories come from sysfs in a later version.

#include <memory>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"

namespace tov {

class LinuxDeviceDiscoverer : public QVDiskDiscoverer {
public:
    static constexpr const char* kSerialNumbersKey = "serialNumbers";
    static constexpr const char* kSerialNumberKey = "serialNumber";

    explicit LinuxDeviceDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return "iokit"; }
    DictionaryRef discoverInfo() override;
    ArrayRef discoverDisks() override { return makeArray(); }

    // [ { "serialNumber": serial } ], or an empty array on a machine without one.
    ArrayRef discoverSerialNumbers();

private:
    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
