#include "report/QVOwedFullReport.h"

#include "common/FileAccess.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"

namespace tov {

bool QVOwedFullReport::isOwed() { return itemExists(Paths::fullReportOwedMarker()); }

bool QVOwedFullReport::owe() {
    int code = 0;
    if (writeFileAtomically(Paths::fullReportOwedMarker(), "", &code)) {
        QVSLogger::debug("The next report handed over will be a full report.");
        return true;
    }
    QVSLogger::error("Could not note that a full report is owed. Error code = [%d]", code);
    return false;
}

void QVOwedFullReport::settle() {
    if (!removeItemWithoutFollowing(Paths::fullReportOwedMarker())) {
        QVSLogger::error("Could not remove [%s].", Paths::fullReportOwedMarker().c_str());
    }
}

}  // namespace tov
