#include "discovery/IOKitSectionDiscoverer.h"

namespace tov {

DictionaryRef IOKitSectionDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kSerialNumbersKey, discoverSerialNumbers());
    section->set(kDisplaysKey, discoverDisplays());
    section->set(kKeyboardsKey, discoverKeyboards());
    section->set(kPointingDevicesKey, discoverPointingDevices());
    section->set(kBatteriesKey, discoverBatteries());
    section->set(kDisksKey, discoverDisks());
    section->set(kNetworkAdaptersKey, discoverNetworkAdapters());
    section->set(kCameraKey, discoverCameras());
    section->set(kMemoryKey, discoverMemories());
    return section;
}

ArrayRef IOKitSectionDiscoverer::serialNumbersOf(const std::optional<std::string>& serial) {
    ArrayRef serials = makeArray();
    if (serial) {
        DictionaryRef entry = makeDictionary();
        entry->set(kSerialNumberKey, *serial);
        serials->push_back(entry);
    }
    return serials;
}

}  // namespace tov
