#include "discovery/QVEmptySectionDiscoverer.h"

#include <utility>

namespace tov {

QVEmptySectionDiscoverer::QVEmptySectionDiscoverer(std::string sourceName) : sourceName_(std::move(sourceName)) {}

}  // namespace tov
