#pragma once

// Turns an inventory tree, or a delta tree of added, changed and removed records, into the
// indented JSON text of a report document. Every record is written as its inner dictionary
// alone: neither its scan-result mark nor its class name ever reaches a document.

#include <optional>
#include <string>

#include "model/Value.h"

namespace tov {

class QVHardwareReportJsonWriter {
public:
    // The JSON text, indented one member per line; nothing for a null argument or when the
    // tree cannot be written (containers nested deeper than kMaximumJsonDepth).
    static std::optional<std::string> jsonContentOfHardware(const DictionaryRef& hardware);
    // Written exactly as a full inventory is.
    static std::optional<std::string> jsonContentOfDeltaHardware(const DictionaryRef& delta);

    // True for a record-table: a non-empty dictionary whose every value is an array holding
    // only records (an empty array counts).
    static bool isStrictlySystemInfoDictionary(const Value& object);
    // A new dictionary of the table's keys whose arrays hold the records' own inner
    // dictionaries (not copies) in place of the records; anything else is kept as it is.
    // Null for null.
    static DictionaryRef jsonDictionaryForSystemInfoDictionary(const DictionaryRef& table);

    // Kept for its name; there is nothing to assemble.
    static void assembleStructure() noexcept {}
};

}  // namespace tov
