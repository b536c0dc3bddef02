#pragma once

// The stored previous report, ".delta/previous.json": the inventory last stored, which
// every delta is taken against. A copy of its bytes is kept in memory so that a file that
// vanished while the daemon runs is restored once.

#include <cstdint>
#include <optional>
#include <string>

#include "common/QVFileUtil.h"
#include "model/Value.h"

namespace tov {

class QVStoredReport {
public:
    // A larger stored report is not read at all.
    static constexpr std::uint64_t kMaximumReportBytes = 104857600;
    // The domain of the file read and write errors left in an error slot.
    static constexpr const char* kFileErrorDomain = "NSCocoaErrorDomain";

    // Keeps the stored report's bytes in memory when they are valid text.
    void loadPreviousReportData();
    // The stored report read back as an inventory of records; nothing when there is none.
    DictionaryRef getFullReportFromDisk();
    // Replaces the stored report by the inventory (without the "HWInventory" wrapper);
    // false, with the write error in the slot, when it could not be written.
    bool saveFullReportToDisk(const DictionaryRef& inventory, QVFileUtilErrorSlot* error);
    // The stored report's bytes; "" for a file over the size limit; nothing, with the read
    // error in the slot, when it cannot be read.
    std::optional<std::string> readPreviousReport(QVFileUtilErrorSlot* error) const;

    const std::string& previousDataInMemory() const { return previousDataInMemory_; }

private:
    std::string previousDataInMemory_;
};

}  // namespace tov
