#pragma once

// Makes records by class name and codes them with their kind, so that a record read back
// from a report or an archive is of the kind it was written as.

#include <string_view>

#include "model/QVSystemInfo.h"
#include "model/Value.h"

namespace tov {

class QVRecordFactory {
public:
    // The archive key that names the record's class.
    static constexpr const char* kClassKey = "$class";

    // A new, empty record of the named kind (one of the sixteen, "QVSystemInfo" or
    // "QVHardware"), or nullptr for any other name.
    static RecordRef recordOfClass(std::string_view className);

    // Writes the record's class name beside its own coded keys.
    static void encodeRecord(const QVSystemInfo& record, Dictionary& archive);
    // The record coded in archive, or nullptr when the archive names no known class or
    // holds no dictionary.
    static RecordRef decodeRecord(const Dictionary& archive);
};

}  // namespace tov
