#pragma once

namespace tov {

// What a report operation generated; the header's "scanType" names the last two.
enum QVScanType : int {
    QVScanTypeNone = 0,
    QVScanTypeFull = 1,
    QVScanTypeDelta = 2,
};

}  // namespace tov
