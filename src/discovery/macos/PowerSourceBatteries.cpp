#include "discovery/macos/PowerSourceBatteries.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "discovery/EqualRecordsOnce.h"
#include "discovery/SystemFacts.h"
#include "discovery/macos/RegistryProperty.h"
#include "model/QVIOKitBattery.h"

namespace tov {
namespace {

// The number as a float; beyond the float range it stays at the range's end.
float floatWithinRange(double number) {
    if (std::isnan(number)) return 0.0F;
    constexpr double kLargest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(number, -kLargest, kLargest));
}

std::shared_ptr<QVIOKitBattery> batteryRecord(const Dictionary& description) {
    std::shared_ptr<QVIOKitBattery> battery = QVIOKitBattery::ioKitBattery();
    battery->setName(stringProperty(description, "Name"));
    battery->setSerialNo(stringProperty(description, "Hardware Serial Number"));
    battery->setCapacity(floatWithinRange(description.get("Current Capacity").toDouble()));
    battery->setEstimatedRunTime(description.get("Time to Empty").toInt64());
    return battery;
}

}  // namespace

ArrayRef batteriesFromPowerSources(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitBattery>> records;
    const ArrayRef descriptions = source.fact(facts::kPowerSources).array();
    if (!descriptions) return makeArray();
    for (const Value& element : *descriptions) {
        if (const DictionaryRef description = element.dictionary()) records.push_back(batteryRecord(*description));
    }
    return equalRecordsOnce(records);
}

}  // namespace tov
