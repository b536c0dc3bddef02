#pragma once

// The report document of a capture folder as the tests expect it: every section of the
// capture's platform, no public-IP lookup, no saved addresses, and a fixed scan time, so
// that the time-zone text and the time stamp do not move with the calendar.

#include <optional>
#include <string>

#include "model/Value.h"

namespace tov::testing {

// 2026-01-15T12:00:00Z: the scan time of every fixture report.
inline constexpr long long kFixtureScanTime = 1768478400;

// The tree { "HWInventory": inventory } of the report, or null when the folder is no capture.
DictionaryRef fixtureHardware(const std::string& captureFolder);

// The indented document, or nothing when the folder is no capture.
std::optional<std::string> fixtureReport(const std::string& captureFolder);

// The document without its "collection" time stamp, for comparisons.
std::string withoutCollection(const std::string& document);

}  // namespace tov::testing
