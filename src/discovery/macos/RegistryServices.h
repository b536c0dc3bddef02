#pragma once

// The services of a device-registry matching as the registry fact gives them: each
// { "path", "properties", "usbSerialNumber" }, in the order of the registry's iterator.

#include <string>
#include <vector>

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

// The services of the matching up to the first whose path in the IOService plane could
// not be read: the walk ends there, and later services are not looked at. Empty when the
// matching could not be made.
std::vector<DictionaryRef> walkedRegistryServices(SystemSource& source, const std::string& matching);

// The first service of the matching, whatever its path; null when there is none.
DictionaryRef firstRegistryService(SystemSource& source, const std::string& matching);

// All properties of the service; null when they could not be read.
DictionaryRef serviceProperties(const Dictionary& service);

}  // namespace tov
