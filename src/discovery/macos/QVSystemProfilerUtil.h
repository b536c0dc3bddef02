#pragma once

// Runs the system profiler for one data type and hands back its parsed report. Only the
// tool's standard output is read: the warnings it prints on standard error never reach
// the parser.

#include <string>

#include "discovery/SystemSource.h"
#include "model/Value.h"

namespace tov {

class QVSystemProfilerUtil {
public:
    static constexpr const char* kSystemProfilerPath = "/usr/sbin/system_profiler";

    // The first report dictionary of "system_profiler -xml TYPE -detailLevel mini" (its
    // "_items" hold the entries); null when the tool fails, prints nothing, or prints
    // something other than a property list whose top is a non-empty array starting with
    // a dictionary.
    static DictionaryRef copyProfileForDataType(SystemSource& source, const std::string& dataType);

    // The whole parsed output of "system_profiler -xml TYPE" (no detail level), as the
    // camera and memory categories read it; null when it is no array.
    static ArrayRef fullProfileListForDataType(SystemSource& source, const std::string& dataType);
};

}  // namespace tov
