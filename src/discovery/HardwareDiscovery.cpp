#include "discovery/HardwareDiscovery.h"

#include <exception>

#include "common/QVSLogger.h"

namespace tov {

DictionaryRef discoverSection(QVSystemInfoDiscoverer& discoverer) {
    try {
        if (DictionaryRef section = discoverer.discoverInfo()) return section;
    } catch (const std::exception& exception) {
        QVSLogger::warning("Discovery of [%s] failed: %s", discoverer.sourceName().c_str(), exception.what());
    }
    return makeDictionary();
}

DictionaryRef discoverHardware(QVDiscovererFactory& factory) {
    DictionaryRef hardware = makeDictionary();
    const std::unique_ptr<QVSystemInfoDiscoverer> inventoryDiscoverer = factory.inventoryDiscoverer();
    const DictionaryRef inventory = discoverSection(*inventoryDiscoverer);
    hardware->set(inventoryDiscoverer->sourceName(), Value(inventory));
    for (const std::unique_ptr<QVSystemInfoDiscoverer>& discoverer : factory.sectionDiscoverers()) {
        inventory->set(discoverer->sourceName(), Value(discoverSection(*discoverer)));
    }
    return hardware;
}

}  // namespace tov
