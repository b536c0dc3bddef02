#pragma once

// A source of inventory facts: it names the section of the report that it fills and,
// when asked, produces that section afresh. Discoverers keep nothing between calls.

#include <string>

#include "model/Value.h"

namespace tov {

class QVSystemInfoDiscoverer {
public:
    virtual ~QVSystemInfoDiscoverer() = default;

    // The section's name in the inventory.
    virtual std::string sourceName() const = 0;
    // A new section: category names to arrays of records, as a rule.
    virtual DictionaryRef discoverInfo() = 0;
};

// A discoverer whose section holds "disks", which it can also list on their own for the
// disk-change scan.
class QVDiskDiscoverer : public QVSystemInfoDiscoverer {
public:
    virtual ArrayRef discoverDisks() = 0;
};

}  // namespace tov
