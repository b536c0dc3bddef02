#pragma once

// A discoverer for a section whose platform discoverer this build does not have yet: it
// names the section and always finds it empty (no disks either).

#include <string>

#include "discovery/QVSystemInfoDiscoverer.h"

namespace tov {

class QVEmptySectionDiscoverer : public QVDiskDiscoverer {
public:
    explicit QVEmptySectionDiscoverer(std::string sourceName);

    std::string sourceName() const override { return sourceName_; }
    DictionaryRef discoverInfo() override { return makeDictionary(); }
    ArrayRef discoverDisks() override { return makeArray(); }

private:
    std::string sourceName_;
};

}  // namespace tov
