#include "report/QVSReport.h"

#include <string>
#include <utility>

#include "common/FileAccess.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/QVSMD5Utils.h"
#include "common/QVSSettings.h"
#include "common/StringData.h"
#include "discovery/HardwareDiscovery.h"
#include "discovery/PublicIpRule.h"
#include "model/QVIPInfo.h"
#include "model/QVSystemInfo.h"
#include "report/QVCollectionUtil.h"
#include "report/QVHardwareReportJsonReader.h"
#include "report/QVHardwareReportJsonWriter.h"
#include "report/QVReportMerger.h"
#include "report/QVOwedFullReport.h"
#include "report/QVReportOutbox.h"

namespace tov {
namespace {

constexpr const char* kInventoryKey = "HWInventory";
constexpr const char* kDisksKey = "disks";
constexpr const char* kNetworkKey = "Network";
constexpr const char* kIdentityKeys[] = {"username", "systemName", "serialNumber"};

double secondsSince1970(std::chrono::system_clock::time_point time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

std::optional<std::string> textOf(const Value& value) {
    if (const std::string* text = value.string()) return *text;
    return std::nullopt;
}

// A discoverer that throws keeps nothing of its section; the scan goes on without it.
// The three cut copies of a difference tree: added, changed and removed records.
struct CutCopies {
    DictionaryRef added;
    DictionaryRef changed;
    DictionaryRef removed;
};

CutCopies cutCopiesOf(const Dictionary& differences) {
    CutCopies copies{differences.deepCopy(), differences.deepCopy(), differences.deepCopy()};
    QVCollectionUtil::cullSystemInfosFromDictionary(*copies.added, QVScanResultAdded);
    QVCollectionUtil::cullSystemInfosFromDictionary(*copies.changed, QVScanResultChanged);
    QVCollectionUtil::cullSystemInfosFromDictionary(*copies.removed, QVScanResultRemoved);
    return copies;
}

std::string hashOfTemporaryReport() { return QVSMD5Utils::md5OfData(QVReportOutbox::readTemporaryReport().value_or("")); }

bool holdsCode(const QVFileUtilErrorSlot& error) { return error.has_value() && error->code != 0; }

int codeOf(const QVFileUtilErrorSlot& error) { return error ? error->code : 0; }

// Writes the document to the temporary report; a failed write leaves its code in the slot.
void writeTemporaryReport(const std::string& document, QVFileUtilErrorSlot& error) {
    int code = 0;
    if (QVReportOutbox::writeTemporaryReport(document, &code)) return;
    QVFileUtilError filled;
    filled.domain = QVStoredReport::kFileErrorDomain;
    filled.code = code;
    error = std::move(filled);
}

struct ManagerState {
    std::mutex lock;
    std::shared_ptr<QVDiscovererFactory> factory = std::make_shared<QVDiscovererFactory>();
    QVSReport::Clock clock = std::chrono::system_clock::now;
};

ManagerState& managerState() {
    static ManagerState state;
    return state;
}

}  // namespace

QVSReport& QVSReport::sharedManager() {
    // Made on first use under the class lock of the static initialisation; never destroyed.
    static QVSReport* manager = new QVSReport();
    return *manager;
}

QVSReport::QVSReport() {
    std::lock_guard<std::mutex> guard(managerState().lock);
    factory_ = managerState().factory;
    clock_ = managerState().clock;
    storedReport_.loadPreviousReportData();
}

double QVSReport::now() const { return secondsSince1970(clock_()); }

std::shared_ptr<QVDiscovererFactory> QVSReport::factory() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return factory_;
}

bool QVSReport::allowScan() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return rapidReportCount_ < kMaximumRapidReportCount;
}

bool QVSReport::shouldGenerateReportFile() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    const double difference = now() - previousReportTime_;
    if (difference < kRapidReportSeconds) {
        if (rapidReportCount_ < kMaximumRapidReportCount) ++rapidReportCount_;
    } else if (difference > kRestSeconds) {
        rapidReportCount_ = 0;
        QVSLogger::information("Reset rapidReportCount");
    }
    QVSLogger::debug("diff: %f rapidReportCount: %d", difference, static_cast<int>(rapidReportCount_));
    return rapidReportCount_ < kMaximumRapidReportCount;
}

void QVSReport::reportHardwareForced() { reportHardware(true); }

void QVSReport::reportHardware() { reportHardware(false); }

void QVSReport::reportHardware(bool forced) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    if (forced) clearOutbox();
    lazyCreateOutboxAndDeltaFolders();
    const DictionaryRef hardware = performFullHardwareDiscovery();
    factory()->releaseVendorList();
    // An owed full report is written as a forced scan writes it.
    const bool fullReportOwed = QVOwedFullReport::isOwed();
    const QVScanType scanType = outputJsonFileWithHardware(hardware, forced || fullReportOwed);
    if (scanType == QVScanTypeNone) {
        QVSLogger::information("scanType is None, No report written.");
    } else {
        decideOnReport(scanType, fullReportOwed);
        removeUncompressedReportFile();
    }
    pendingInventory_ = nullptr;
}

// Hands the temporary report over unless its hash is the last one handed over or the rate
// limit holds it back. An owed full report goes even when it equals the last one: that one
// was removed from the outbox before it was collected.
void QVSReport::decideOnReport(QVScanType scanType, bool fullReportOwed) {
    const std::string hash = hashOfTemporaryReport();
    if (!fullReportOwed && hash == QVSSettings::defaultSettings().previousReportHash()) {
        QVSLogger::information("No report written, because previous report hash has not been changed.");
        // An equal document reached the outbox before, so this inventory counts as handed over.
        storeHandedOverInventory();
        return;
    }
    if (!shouldGenerateReportFile()) {
        QVSLogger::information("No report written, because rapidReportCount is larger than 10. Rest for 10mins.");
        return;
    }
    if (!compressReportFileWithScanType(scanType)) return;
    storeHandedOverInventory();
    if (scanType == QVScanTypeFull) QVOwedFullReport::settle();
    storeReportHash(hash);
}

void QVSReport::storeHandedOverInventory() {
    if (!pendingInventory_) return;
    QVFileUtilErrorSlot error;
    if (!saveFullReportToDisk(pendingInventory_, &error)) {
        QVSLogger::error("Could not store the report handed over. Error code = [%d]", codeOf(error));
    }
    pendingInventory_ = nullptr;
}

void QVSReport::storeReportHash(const std::string& hash) {
    QVSLogger::debug("Update report hash [%s].", hash.c_str());
    QVSSettings& settings = QVSSettings::defaultSettings();
    settings.setPreviousReportHash(hash);
    if (!settings.synchronize()) QVSLogger::error("Could not save the report hash [%s].", hash.c_str());
}

DictionaryRef QVSReport::performFullHardwareDiscovery() { return discoverHardware(*factory()); }

DictionaryRef QVSReport::performIPChangeDiscoveryWithFullReport(const DictionaryRef& fullReport) {
    if (!fullReport) return nullptr;
    DictionaryRef changes = makeDictionary();
    std::lock_guard<std::recursive_mutex> guard(lock_);
    QVSSettings& settings = QVSSettings::defaultSettings();
    const std::optional<std::string> previousLocal = settings.localIP();
    const std::string currentLocal = factory()->localIP();
    if (!needsPublicIpDiscovery(currentLocal, previousLocal)) {
        QVSLogger::debug("No Local IP change, do not report.");
        return changes;
    }
    const std::optional<std::string> previousPublic = settings.publicIP();
    const std::string currentPublic = factory()->publicIP();
    if (currentPublic.empty()) {
        QVSLogger::debug("No New Public IP, do not report.");
        return changes;
    }
    const std::string change = "LocalIP [" + previousLocal.value_or("") + "] -> [" + currentLocal + "], " +
                               "PublicIP [" + previousPublic.value_or("") + "] -> [" + currentPublic + "]";
    QVSLogger::information("%s. Report.", change.c_str());
    const std::shared_ptr<QVIPInfo> record = QVIPInfo::ipInfo();
    record->setLocalIp(currentLocal);
    record->setPublicIp(currentPublic);
    record->setScanResult(QVScanResultChanged);
    DictionaryRef events = makeDictionary();
    events->set(kNetworkKey, Value(record));
    changes->set(QVDiscovererFactory::kEventsSection, Value(events));
    settings.setLocalIP(currentLocal);
    settings.setPublicIP(currentPublic);
    settings.synchronize();
    return changes;
}

DictionaryRef QVSReport::performSysChangeDiscoveryWithFullReport(const DictionaryRef& fullReport) {
    if (!fullReport) return nullptr;
    const std::unique_ptr<QVSystemInfoDiscoverer> discoverer = factory()->operatingSystemDiscoverer();
    const DictionaryRef current = discoverSection(*discoverer);
    const DictionaryRef stored = fullReport->get(discoverer->sourceName()).dictionary();
    const std::shared_ptr<QVSystemInfo> record = QVSystemInfo::systemInfo();
    bool noted = false;
    for (const char* key : kIdentityKeys) {
        const std::optional<std::string> currentValue = textOf(current->get(key));
        const std::optional<std::string> storedValue = stored ? textOf(stored->get(key)) : std::nullopt;
        // A fact that is missing now is not reported as an empty one.
        if (!currentValue || currentValue == storedValue) continue;
        record->setStringValue(*currentValue, key);
        noted = true;
    }
    DictionaryRef changes = makeDictionary();
    if (!noted) return changes;
    record->setScanResult(QVScanResultChanged);
    changes->set(discoverer->sourceName(), Value(record));
    return changes;
}

DictionaryRef QVSReport::performDiskChangeDiscoveryWithFullReport(const DictionaryRef& fullReport) {
    if (!fullReport) return nullptr;
    DictionaryRef changes = makeDictionary();
    for (const std::unique_ptr<QVDiskDiscoverer>& discoverer : factory()->diskDiscoverers()) {
        const DictionaryRef storedSection = fullReport->get(discoverer->sourceName()).dictionary();
        const ArrayRef storedDisks = storedSection ? storedSection->get(kDisksKey).array() : nullptr;
        ArrayRef currentDisks = discoverer->discoverDisks();
        Array differences;
        QVCollectionUtil::populateDifferencesIn(differences, storedDisks ? *storedDisks : Array(),
                                                currentDisks ? *currentDisks : Array());
        if (differences.empty()) continue;
        DictionaryRef section = makeDictionary();
        section->set(kDisksKey, Value(makeArray(std::move(differences))));
        changes->set(discoverer->sourceName(), Value(section));
    }
    return changes;
}

QVScanType QVSReport::outputJsonFileWithHardware(const DictionaryRef& hardware, bool forced) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    pendingInventory_ = nullptr;
    if (!hardware || hardware->empty()) return QVScanTypeNone;
    const DictionaryRef inventory = hardware->get(kInventoryKey).dictionary();
    if (!inventory) return QVScanTypeNone;
    QVFileUtilErrorSlot error;
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(Paths::previousReport(), &error);
    if (holdsCode(error) && error->domain == QVFileUtilError::kDomain) QVSLogger::error("%s", error->message.c_str());
    DictionaryRef differences;
    if (!forced) {
        const std::optional<std::string> previous = storedReport_.readPreviousReport(&error);
        if (holdsCode(error)) {
            QVSLogger::error("Could not read the previous scan data.  Error code = [%d]", codeOf(error));
        }
        const DictionaryRef previousInventory =
            previous && !previous->empty() && isValidStringData(*previous)
                ? QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(*previous)
                : nullptr;
        if (previousInventory) {
            differences = makeDictionary();
            QVCollectionUtil::populateDifferencesIn(*differences, *previousInventory, *inventory);
            if (differences->empty()) return QVScanTypeNone;
        }
    }
    if (holdsCode(error)) {
        // Nothing stored to compare with: a new installation, whose first scan becomes the
        // stored report at once. The error in the slot then holds this report back.
        if (!saveFullReportToDisk(inventory, &error)) {
            QVSLogger::error("Could not generate delta scan file. Error code = [%lu]",
                             static_cast<unsigned long>(codeOf(error)));
            return QVScanTypeNone;
        }
    } else {
        // Stored once the report is handed over, so that one held back or lost on the way
        // leaves its changes in the next comparison.
        pendingInventory_ = inventory;
    }
    return differences ? writeDeltaReport(differences, error) : writeFullReport(hardware, error);
}

QVScanType QVSReport::writeFullReport(const DictionaryRef& hardware, QVFileUtilErrorSlot& error) {
    const std::optional<std::string> document = QVHardwareReportJsonWriter::jsonContentOfHardware(hardware);
    if (!document || document->empty()) return QVScanTypeNone;
    writeTemporaryReport(*document, error);
    if (holdsCode(error)) {
        QVSLogger::error("Could not generate hardware report. Error code = [%lu]", static_cast<unsigned long>(codeOf(error)));
        return QVScanTypeNone;
    }
    QVSSettings& settings = QVSSettings::defaultSettings();
    settings.setPreviousFullScanDatetime(now());
    if (!settings.synchronize()) {
        QVSLogger::error("Saving setting file failed. return QVScanTypeNone.");
        return QVScanTypeNone;
    }
    QVSLogger::information("Generated hardware report (FULL).");
    return QVScanTypeFull;
}

QVScanType QVSReport::writeDeltaReport(const DictionaryRef& differences, QVFileUtilErrorSlot& error) {
    const CutCopies copies = cutCopiesOf(*differences);
    DictionaryRef delta = makeDictionary();
    delta->set("added", Value(copies.added));
    delta->set("changed", Value(copies.changed));
    delta->set("removed", Value(copies.removed));
    const std::optional<std::string> document = QVHardwareReportJsonWriter::jsonContentOfDeltaHardware(delta);
    if (!document || document->empty()) return QVScanTypeNone;
    writeTemporaryReport(*document, error);
    if (holdsCode(error)) {
        QVSLogger::error("Could not generate hardware report. Error code = %lu", static_cast<unsigned long>(codeOf(error)));
        return QVScanTypeNone;
    }
    QVSLogger::information("Generated hardware report (DELTA).");
    return QVScanTypeDelta;
}

void QVSReport::outputJsonFileWithDeltaDictionary(const DictionaryRef& changes) {
    if (!changes) return;
    const CutCopies copies = cutCopiesOf(*changes);
    DictionaryRef delta = makeDictionary();
    if (!copies.added->empty()) delta->set("added", Value(copies.added));
    if (!copies.changed->empty()) delta->set("changed", Value(copies.changed));
    if (!copies.removed->empty()) delta->set("removed", Value(copies.removed));
    if (delta->empty()) {
        QVSLogger::debug("No Change is detected.");
        return;
    }
    QVFileUtilErrorSlot error;
    writeTemporaryReport(QVHardwareReportJsonWriter::jsonContentOfDeltaHardware(delta).value_or(""), error);
    if (holdsCode(error)) {
        QVSLogger::error("Could not generate IP report. Error code = %lu", static_cast<unsigned long>(codeOf(error)));
        return;
    }
    QVSLogger::debug("Generated Delta Report.");
    const std::string hash = hashOfTemporaryReport();
    if (hash == QVSSettings::defaultSettings().previousReportHash()) {
        QVSLogger::debug("Delta report is writen, but md5 hash is same as previous on, So, do not report.");
        removeUncompressedReportFile();
        return;
    }
    if (!shouldGenerateReportFile()) {
        QVSLogger::debug("Delta report is writen, but rapidReportCount is larger than 10. So, Rest for 10mins.");
        removeUncompressedReportFile();
        return;
    }
    // The changes enter the stored report only once they are in the outbox; until then the
    // next full scan still finds them.
    if (compressReportFileWithScanType(QVScanTypeDelta)) {
        mergeIntoStoredReport(copies.added, copies.changed, copies.removed);
        storeReportHash(hash);
    }
    removeUncompressedReportFile();
}

// With no stored report there is nothing to merge into; the next full scan then writes a
// full report.
void QVSReport::mergeIntoStoredReport(const DictionaryRef& added, const DictionaryRef& changed,
                                      const DictionaryRef& removed) {
    const DictionaryRef stored = getFullReportFromDisk();
    if (!stored) return;
    const DictionaryRef merged = stored->shallowCopy();
    mergeAdded(added, changed, removed, *merged);
    QVFileUtilErrorSlot error;
    if (!saveFullReportToDisk(merged, &error)) {
        QVSLogger::error("Could not store the report handed over. Error code = [%d]", codeOf(error));
    }
}

void QVSReport::mergeAdded(const DictionaryRef& added, const DictionaryRef& modified, const DictionaryRef& removed,
                           Dictionary& fullReport) {
    QVReportMerger::mergeAdded(added, modified, removed, fullReport);
}

void QVSReport::loadPreviousReportData() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    storedReport_.loadPreviousReportData();
}

DictionaryRef QVSReport::getFullReportFromDisk() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return storedReport_.getFullReportFromDisk();
}

bool QVSReport::saveFullReportToDisk(const DictionaryRef& inventory, QVFileUtilErrorSlot* error) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return storedReport_.saveFullReportToDisk(inventory, error);
}

bool QVSReport::compressReportFileWithScanType(QVScanType scanType) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    const std::chrono::system_clock::time_point date = clock_();
    // Set before anything can fail: a failed hand-over still counts for the rate limit.
    previousReportTime_ = secondsSince1970(date);
    return QVReportOutbox::compressReportFileWithScanType(scanType, date);
}

void QVSReport::removeUncompressedReportFile() { QVReportOutbox::removeUncompressedReportFile(); }

bool QVSReport::lazyCreateOutboxAndDeltaFolders() { return QVReportOutbox::lazyCreateOutboxAndDeltaFolders(); }

// Reports still in the outbox were never collected; a full report takes their place, and
// the debt is written down before they go, so that a crash in between loses nothing.
void QVSReport::clearOutbox() {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    if (QVReportOutbox::holdsReports()) {
        lazyCreateOutboxAndDeltaFolders();
        if (!QVOwedFullReport::owe()) {
            QVSLogger::error("The outbox is kept: its reports could not be replaced by a full report.");
            return;
        }
    }
    QVReportOutbox::clearOutbox();
}

double QVSReport::previousReportTime() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return previousReportTime_;
}

std::uint64_t QVSReport::rapidReportCount() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return rapidReportCount_;
}

std::string QVSReport::previousDataInMemory() const {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    return storedReport_.previousDataInMemory();
}

void QVSReport::setDiscovererFactoryForTesting(std::shared_ptr<QVDiscovererFactory> factory) {
    {
        std::lock_guard<std::mutex> guard(managerState().lock);
        managerState().factory = factory ? factory : std::make_shared<QVDiscovererFactory>();
    }
    QVSReport& manager = sharedManager();
    std::lock_guard<std::recursive_mutex> guard(manager.lock_);
    std::lock_guard<std::mutex> stateGuard(managerState().lock);
    manager.factory_ = managerState().factory;
}

void QVSReport::setClockForTesting(Clock clock) {
    {
        std::lock_guard<std::mutex> guard(managerState().lock);
        managerState().clock = clock ? std::move(clock) : Clock(std::chrono::system_clock::now);
    }
    QVSReport& manager = sharedManager();
    std::lock_guard<std::recursive_mutex> guard(manager.lock_);
    std::lock_guard<std::mutex> stateGuard(managerState().lock);
    manager.clock_ = managerState().clock;
}

void QVSReport::resetForTesting() {
    QVSReport& manager = sharedManager();
    std::lock_guard<std::recursive_mutex> guard(manager.lock_);
    manager.previousReportTime_ = 0;
    manager.rapidReportCount_ = 0;
    manager.storedReport_ = QVStoredReport();
    manager.pendingInventory_ = nullptr;
    manager.storedReport_.loadPreviousReportData();
}

}  // namespace tov
