#include "discovery/linux/LinuxDeviceDiscoverer.h"

#include <utility>

#include "discovery/linux/LinuxSerialNumber.h"

namespace tov {

LinuxDeviceDiscoverer::LinuxDeviceDiscoverer(std::shared_ptr<SystemSource> source) : source_(std::move(source)) {}

DictionaryRef LinuxDeviceDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kSerialNumbersKey, discoverSerialNumbers());
    return section;
}

ArrayRef LinuxDeviceDiscoverer::discoverSerialNumbers() {
    ArrayRef serials = makeArray();
    if (const std::optional<std::string> serial = linuxMachineSerialNumber(*source_)) {
        DictionaryRef entry = makeDictionary();
        entry->set(kSerialNumberKey, *serial);
        serials->push_back(entry);
    }
    return serials;
}

}  // namespace tov
