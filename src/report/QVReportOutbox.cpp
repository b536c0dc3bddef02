#include "report/QVReportOutbox.h"

#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>

#include "common/FileAccess.h"
#include "common/Paths.h"
#include "common/QVFileUtil.h"
#include "common/QVSLogger.h"
#include "common/Version.h"
#include "common/ZipArchiveWriter.h"
#include "model/Json.h"

namespace tov {
namespace {

// The temporary report is at most as large as a stored report may be.
constexpr std::uint64_t kMaximumReportBytes = 104857600;

std::string fileName(const std::string& path) { return std::filesystem::path(path).filename().string(); }

const char* scanTypeName(QVScanType scanType) {
    switch (scanType) {
        case QVScanTypeFull: return "full";
        case QVScanTypeDelta: return "delta";
        default: return "";
    }
}

// The archive holds the temporary report's bytes, read without following a link.
bool zipTemporaryReport(const std::string& archivePath) {
    const std::optional<std::string> report = readWholeFile(Paths::temporaryReport(), kMaximumReportBytes);
    if (!report || !writeZipWithOneMember(archivePath, QVReportOutbox::kArchiveMemberName, *report)) return false;
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(archivePath, nullptr);
    return true;
}

void writeHeader(const std::string& headerPath, QVScanType scanType) {
    removeFile(headerPath);
    if (writeFileAtomically(headerPath, QVReportOutbox::headerLine(scanType))) {
        QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(headerPath, nullptr);
    }
    QVSLogger::information("Generated header [%s].", fileName(headerPath).c_str());
}

// The archive goes first: the collecting agent takes a header as the sign that its
// archive is complete.
void moveIntoOutbox(const std::string& archivePath, const std::string& headerPath) {
    if (!isRegularFileItem(archivePath) || !isRegularFileItem(headerPath)) return;
    const std::string outbox = Paths::outboxFolder();
    moveFileWithoutReplacing(archivePath, outbox + "/" + fileName(archivePath));
    moveFileWithoutReplacing(headerPath, outbox + "/" + fileName(headerPath));
    QVSLogger::information("Move report and header to outbox.");
}

void createFolder(const std::string& path, const char* failure, const char* success) {
    if (QVFileUtil::isAccessiblePath(path, nullptr)) return;
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error || ::lchown(path.c_str(), 0, QVFileUtil::kDaemonGroupId) != 0) {
        QVSLogger::error("%s", failure);
    } else {
        QVSLogger::debug("%s", success);
    }
}

}  // namespace

std::string QVReportOutbox::archiveNameForDate(std::chrono::system_clock::time_point date) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    std::tm utc {};
    ::gmtime_r(&seconds, &utc);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%d%H%M%S", &utc);
    return std::string("hardware.json-") + stamp + ".zip";
}

std::string QVReportOutbox::headerPathForArchivePath(const std::string& archivePath) {
    return std::filesystem::path(archivePath).replace_extension("hdr").string();
}

std::string QVReportOutbox::headerLine(QVScanType scanType) {
    DictionaryRef metadata = makeDictionary();
    metadata->set("scanType", scanTypeName(scanType));
    metadata->set("Component", kTovComponent);
    metadata->set("Version", kTovVersion);
    return kHeaderPrefix + writeJson(Value(metadata), JsonStyle::Compact);
}

void QVReportOutbox::compressReportFileWithScanType(QVScanType scanType,
                                                     std::chrono::system_clock::time_point date) {
    const std::string archivePath = Paths::archiveStagingFolder() + "/" + archiveNameForDate(date);
    if (!itemExists(Paths::temporaryReport())) {
        QVSLogger::error("The was no file to compress.");
        return;
    }
    removeFile(archivePath);
    if (!zipTemporaryReport(archivePath)) {
        QVSLogger::error("Failed to compress hardware report [%s].", fileName(archivePath).c_str());
        return;
    }
    QVSLogger::information("Compressed hardware report [%s].", fileName(archivePath).c_str());
    if (scanType == QVScanTypeNone) return;
    const std::string headerPath = headerPathForArchivePath(archivePath);
    writeHeader(headerPath, scanType);
    moveIntoOutbox(archivePath, headerPath);
}

void QVReportOutbox::removeUncompressedReportFile() { removeFile(Paths::temporaryReport()); }

bool QVReportOutbox::lazyCreateOutboxAndDeltaFolders() {
    createFolder(Paths::outboxFolder(), "Could not create TOV outbox.  Perhaps not running as root?",
                 "TOV outbox is created.");
    createFolder(Paths::deltaFolder(), "Could not create TOV delta folder.  Perhaps not running as root?",
                 "TOV delta folder is created.");
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(Paths::outboxFolder(), nullptr);
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(Paths::deltaFolder(), nullptr);
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(Paths::previousReport(), nullptr);
    return true;
}

void QVReportOutbox::clearOutbox() {
    const std::string outbox = Paths::outboxFolder();
    if (!itemExists(outbox)) return;
    QVSLogger::debug("Proceeding to remove the outbox in order to clear it.");
    std::error_code error;
    std::filesystem::remove_all(outbox, error);
    if (error) {
        QVSLogger::error("Encountered an error in trying to remove the outbox at [%s] with error code [%d]",
                         outbox.c_str(), error.value());
        return;
    }
    QVSLogger::debug("Succeeded in removing the outbox.");
    lazyCreateOutboxAndDeltaFolders();
}

}  // namespace tov
