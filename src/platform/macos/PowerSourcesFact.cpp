#include <IOKit/ps/IOPowerSources.h>

#include <utility>

#include "common/QVSLogger.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

namespace tov {

// The descriptions in the order of the power-source list; a machine without power sources,
// or whose snapshot cannot be taken, has none.
Value powerSourcesFact(const std::string&) {
    ArrayRef descriptions = makeArray();
    const OwnedCFReference<CFTypeRef> snapshot(IOPSCopyPowerSourcesInfo());
    if (!snapshot) {
        QVSLogger::debug("The power sources cannot be read.");
        return descriptions;
    }
    const OwnedCFReference<CFArrayRef> sources(IOPSCopyPowerSourcesList(snapshot.get()));
    if (!sources) {
        QVSLogger::debug("The list of power sources cannot be read.");
        return descriptions;
    }
    const CFIndex count = CFArrayGetCount(sources.get());
    for (CFIndex index = 0; index < count; ++index) {
        // Got, not copied: the description belongs to the snapshot.
        const CFDictionaryRef description =
            IOPSGetPowerSourceDescription(snapshot.get(), CFArrayGetValueAtIndex(sources.get(), index));
        Value tree = valueOfCFType(description);
        if (tree.isDictionary()) descriptions->push_back(std::move(tree));
    }
    return descriptions;
}

}  // namespace tov
