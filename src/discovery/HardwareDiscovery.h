#pragma once

// One full discovery: the scan's time stamp and every section, in the factory's order.

#include "discovery/QVDiscovererFactory.h"
#include "model/Value.h"

namespace tov {

// { "HWInventory": { "collection": ..., section name: section, ... } }. A discoverer
// that fails keeps what it gave; one that throws gives an empty section, with a warning.
DictionaryRef discoverHardware(QVDiscovererFactory& factory);

// The discoverer's section, or an empty one (with a warning) when it throws.
DictionaryRef discoverSection(QVSystemInfoDiscoverer& discoverer);

}  // namespace tov
