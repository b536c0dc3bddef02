#pragma once

// The hand-over of finished reports: the temporary report is zipped into an archive named
// by the UTC time, a one-line header file is written beside it, and the archive and then
// its header are moved into the outbox, where another agent collects them. Also keeps the
// outbox and ".delta" folders in place. Stateless; the report manager serialises the calls.

#include <chrono>
#include <string>

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

    // Zips the temporary report as of date into the staging folder; unless the scan type
    // is none, writes the header and moves the archive, then the header, into the outbox.
    static void compressReportFileWithScanType(QVScanType scanType, std::chrono::system_clock::time_point date);
    static void removeUncompressedReportFile();
    // Makes the outbox and ".delta" folders, owned by root and the daemon's group, replacing
    // whatever else stands at their paths. Always true.
    static bool lazyCreateOutboxAndDeltaFolders();
    // Removes the outbox with everything in it and makes the folders again.
    static void clearOutbox();
};

}  // namespace tov
