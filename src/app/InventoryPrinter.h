#pragma once

// The print modes: one full discovery written to standard output, as the report document
// ({"HWInventory": ...}, exactly as a full report is written) with "-p", or as a short
// table for people with "-s", leaving no report, settings or outbox file behind.
// "-p -capture DIR" also records everything the scan read into a new capture folder;
// "-replay DIR" discovers a captured machine instead of this one.

#include <cstdio>

#include "app/QVSAppArgument.h"

namespace tov {

class InventoryPrinter {
public:
    static constexpr const char* kCaptureFlag = "-capture";
    static constexpr const char* kReplayFlag = "-replay";

    // True when the arguments ask for printing, summarising, capturing or replaying.
    static bool isPrintRequest(const QVSAppArgument& arguments);
    // Prints to output; the exit code: 0, or 1 when the request cannot be carried out.
    static int print(const QVSAppArgument& arguments, std::FILE* output);
};

}  // namespace tov
