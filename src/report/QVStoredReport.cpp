#include "report/QVStoredReport.h"

#include "common/FileAccess.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/StringData.h"
#include "report/QVHardwareReportJsonReader.h"
#include "report/QVHardwareReportJsonWriter.h"
#include "report/QVOwedFullReport.h"

namespace tov {
namespace {

void putFileError(QVFileUtilErrorSlot* error, int code) {
    if (!error) return;
    QVFileUtilError filled;
    filled.domain = QVStoredReport::kFileErrorDomain;
    filled.code = code;
    *error = std::move(filled);
}

bool isMissingFileCode(int code) {
    return code == FileErrorCode::kNoSuchFile || code == FileErrorCode::kReadNoSuchFile;
}

// Whatever stands at the stored report's path that is not a regular file (a folder, a link,
// a pipe) is removed without being followed; true when it was.
bool removedIntruder(const std::string& path) {
    if (!itemExists(path) || isRegularFileItem(path)) return false;
    QVSLogger::warning("Removed [%s]: it was not a stored report file.", path.c_str());
    if (!removeItemWithoutFollowing(path)) QVSLogger::error("Could not remove [%s].", path.c_str());
    return true;
}

}  // namespace

std::optional<std::string> QVStoredReport::readPreviousReport(QVFileUtilErrorSlot* error) const {
    const std::string path = Paths::previousReport();
    // Nothing there to compare with, yet a report was stored before: read as a stored report
    // that is no report, so the scan writes a full report.
    if (removedIntruder(path)) {
        QVOwedFullReport::owe();
        return std::string();
    }
    if (regularFileSize(path) > kMaximumReportBytes) return std::string();
    int code = 0;
    std::optional<std::string> bytes = readWholeFile(path, kMaximumReportBytes, &code);
    if (!bytes) putFileError(error, code);
    return bytes;
}

void QVStoredReport::loadPreviousReportData() {
    const std::optional<std::string> bytes = readPreviousReport(nullptr);
    if (!bytes || bytes->empty() || !isValidStringData(*bytes)) return;
    previousDataInMemory_ = *bytes;
    QVSLogger::information("Load previous report.");
}

DictionaryRef QVStoredReport::getFullReportFromDisk() {
    QVFileUtilErrorSlot error;
    std::optional<std::string> bytes = readPreviousReport(&error);
    bool restored = false;
    if (!bytes && isMissingFileCode(error->code) && !previousDataInMemory_.empty() &&
        writeFileAtomically(Paths::previousReport(), previousDataInMemory_)) {
        QVSLogger::information("Restore previous report.");
        bytes = previousDataInMemory_;
        restored = true;
    }
    if (!bytes) QVSLogger::information("Could not read the previous scan data. Error code = [%d]", error->code);
    if (!bytes || bytes->empty()) return nullptr;
    if (isValidStringData(*bytes)) return QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(*bytes);
    if (restored) previousDataInMemory_.clear();
    return nullptr;
}

bool QVStoredReport::saveFullReportToDisk(const DictionaryRef& inventory, QVFileUtilErrorSlot* error) {
    const std::string path = Paths::previousReport();
    // The old file stays until the new one replaces it whole; only something that a rename
    // cannot replace (a folder) is cleared out of the way first.
    removedIntruder(path);
    const std::optional<std::string> json = QVHardwareReportJsonWriter::jsonContentOfHardware(inventory);
    int code = FileErrorCode::kWriteUnknown;
    if (!json || !writeFileAtomically(path, *json, &code)) {
        putFileError(error, code);
        return false;
    }
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, nullptr);
    // The bytes just written are the new in-memory copy; reading them back would add nothing.
    previousDataInMemory_ = *json;
    return true;
}

}  // namespace tov
