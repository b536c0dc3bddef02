#pragma once

// The inventory's own section: the scan's time stamp in UTC under "collection".

#include <chrono>
#include <functional>

#include "discovery/QVSystemInfoDiscoverer.h"

namespace tov {

class QVHWInventoryDiscoverer : public QVSystemInfoDiscoverer {
public:
    static constexpr const char* kSourceName = "HWInventory";
    static constexpr const char* kCollectionKey = "collection";
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    explicit QVHWInventoryDiscoverer(Clock clock = std::chrono::system_clock::now);

    std::string sourceName() const override { return kSourceName; }
    // { "collection": "yyyy-MM-ddTHH:mm:ssZ" } of the current time.
    DictionaryRef discoverInfo() override;

private:
    Clock clock_;
};

}  // namespace tov
