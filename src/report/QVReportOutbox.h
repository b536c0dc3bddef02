#pragma once

// The hand-over of finished reports. The temporary report lives in the private staging
// folder; it is zipped into an archive named by the UTC time beside it, a one-line header
// file is written next to the archive, and the archive and then its header are moved into
// the outbox, where another agent collects them. A pair reaches the outbox whole or not at
// all: each failing step is logged with its cause and what it left behind is removed. Also
// keeps the outbox and ".delta" folders in place. Stateless; the report manager serialises
// the calls.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "report/QVScanType.h"

namespace tov {

class QVReportOutbox {
public:
    static constexpr const char* kArchiveMemberName = "__h_hardware_h__.json";
    static constexpr const char* kHeaderPrefix = "X-NG-metadata: ";

    // "hardware.json-yyyyMMddHHmmss.zip" of the instant in UTC.
    static std::string archiveNameForDate(std::chrono::system_clock::time_point date);
    // The archive's path with its extension "zip" replaced by "hdr".
    static std::string headerPathForArchivePath(const std::string& archivePath);
    // "X-NG-metadata: " and the compact metadata object of the scan type.
    static std::string headerLine(QVScanType scanType);

    // Writes the temporary report afresh; false, with its file-write error code, on failure.
    static bool writeTemporaryReport(std::string_view document, int* errorCode);
    // The temporary report's bytes; nothing when there is none.
    static std::optional<std::string> readTemporaryReport();
    static void removeUncompressedReportFile();

    // Zips the temporary report as of date in the staging folder; unless the scan type is
    // none, writes the header and moves the archive, then the header, into the outbox. True
    // when the pair is in the outbox (for scan type none: when the archive was made).
    static bool compressReportFileWithScanType(QVScanType scanType, std::chrono::system_clock::time_point date);
    // Makes the outbox, ".delta" and staging folders, owned by root and the daemon's group,
    // replacing whatever else stands at their paths. Always true.
    static bool lazyCreateOutboxAndDeltaFolders();
    // True when the outbox holds anything (reports the collecting agent has not taken yet).
    static bool holdsReports();
    // Removes the outbox with everything in it and makes the folders again.
    static void clearOutbox();
};

}  // namespace tov
