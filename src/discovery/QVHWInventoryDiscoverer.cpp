#include "discovery/QVHWInventoryDiscoverer.h"

#include <utility>

#include "model/UtcDateText.h"

namespace tov {

QVHWInventoryDiscoverer::QVHWInventoryDiscoverer(Clock clock) : clock_(std::move(clock)) {}

DictionaryRef QVHWInventoryDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kCollectionKey, formatUtcDate(clock_()));
    return section;
}

}  // namespace tov
