#pragma once

// The daemon's one report manager. It runs full scans and the narrow change scans (IP
// addresses, operating-system identity, disks), decides whether their report is a full
// or a delta report, holds back reports whose content hash is unchanged or that come too
// fast, and hands the rest over to the outbox.
//
// Hand-over is at least once: the stored report is the inventory last handed over (for a
// new installation, its first scan), and it and the report hash move on only when a report
// reaches the outbox. A report held back by the rate limit, lost on the way or cut short by
// a crash therefore leaves its changes in the next comparison, and the next report handed
// over carries them. Reports removed from the outbox before they were collected are
// replaced by a full report (QVOwedFullReport).

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "discovery/QVDiscovererFactory.h"
#include "model/Value.h"
#include "report/QVScanType.h"
#include "report/QVStoredReport.h"

namespace tov {

class QVSReport {
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    // Reports closer together than this count as rapid; this many rapid ones hold reports back.
    static constexpr double kRapidReportSeconds = 60;
    static constexpr std::uint64_t kMaximumRapidReportCount = 10;
    // A report attempt this long after the last hand-over lifts the hold.
    static constexpr double kRestSeconds = 600;

    static QVSReport& sharedManager();
    QVSReport(const QVSReport&) = delete;
    QVSReport& operator=(const QVSReport&) = delete;

    // True while reports may be handed over by the rate limit; changes nothing.
    bool allowScan();
    // The rate limit: counts a report attempt and answers whether it may be handed over.
    bool shouldGenerateReportFile();

    void reportHardwareForced();
    void reportHardware();
    void reportHardware(bool forced);

    // { "HWInventory": inventory }, the inventory holding "collection" and every section.
    DictionaryRef performFullHardwareDiscovery();
    // Each answers the marked changes it found (possibly none), or null for a null report.
    DictionaryRef performIPChangeDiscoveryWithFullReport(const DictionaryRef& fullReport);
    DictionaryRef performSysChangeDiscoveryWithFullReport(const DictionaryRef& fullReport);
    DictionaryRef performDiskChangeDiscoveryWithFullReport(const DictionaryRef& fullReport);

    // Writes the full or delta document of a full scan to the temporary report and
    // stores the inventory; answers what was written.
    QVScanType outputJsonFileWithHardware(const DictionaryRef& hardware, bool forced);
    // Writes, decides on and hands over the delta report of a change scan, and merges its
    // changes into the stored report.
    void outputJsonFileWithDeltaDictionary(const DictionaryRef& changes);
    static void mergeAdded(const DictionaryRef& added, const DictionaryRef& modified, const DictionaryRef& removed,
                           Dictionary& fullReport);

    void loadPreviousReportData();
    DictionaryRef getFullReportFromDisk();
    bool saveFullReportToDisk(const DictionaryRef& inventory, QVFileUtilErrorSlot* error);
    // True when the report reached the outbox (for scan type none: when it was zipped).
    bool compressReportFileWithScanType(QVScanType scanType);
    void removeUncompressedReportFile();
    bool lazyCreateOutboxAndDeltaFolders();
    void clearOutbox();

    double previousReportTime() const;
    std::uint64_t rapidReportCount() const;
    std::string previousDataInMemory() const;

    // Test seams: the discoverers, the clock, and a manager as it is after start-up
    // (counters at zero, the stored report loaded again from the current paths).
    static void setDiscovererFactoryForTesting(std::shared_ptr<QVDiscovererFactory> factory);
    static void setClockForTesting(Clock clock);
    static void resetForTesting();

private:
    QVSReport();

    double now() const;
    std::shared_ptr<QVDiscovererFactory> factory() const;
    QVScanType writeFullReport(const DictionaryRef& hardware, QVFileUtilErrorSlot& error);
    QVScanType writeDeltaReport(const DictionaryRef& differences, QVFileUtilErrorSlot& error);
    void decideOnReport(QVScanType scanType, bool fullReportOwed);
    void storeHandedOverInventory();
    void mergeIntoStoredReport(const DictionaryRef& added, const DictionaryRef& changed, const DictionaryRef& removed);
    void storeReportHash(const std::string& hash);

    mutable std::recursive_mutex lock_;
    double previousReportTime_ = 0;
    std::uint64_t rapidReportCount_ = 0;
    QVStoredReport storedReport_;
    // The inventory of the full-scan report being decided on, stored once it is handed over.
    DictionaryRef pendingInventory_;
    std::shared_ptr<QVDiscovererFactory> factory_;
    Clock clock_;
};

}  // namespace tov
