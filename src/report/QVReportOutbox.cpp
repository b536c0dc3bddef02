#include "report/QVReportOutbox.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>

#include "common/FileAccess.h"
#include "common/FileDescriptor.h"
#include "common/Paths.h"
#include "common/QVFileUtil.h"
#include "common/QVSLogger.h"
#include "common/Version.h"
#include "common/ZipArchiveWriter.h"
#include "model/Json.h"
#include "report/ReportStagingFolder.h"

namespace tov {
namespace {

// Removes the header files of the outbox, never following a link.
void removeHeadersOf(const std::string& outbox) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(outbox, error)) {
        if (entry.path().extension() == ".hdr") removeItemWithoutFollowing(entry.path().string());
    }
}

// The temporary report is at most as large as a stored report may be.
constexpr std::uint64_t kMaximumReportBytes = 104857600;

const char* scanTypeName(QVScanType scanType) {
    switch (scanType) {
        case QVScanTypeFull: return "full";
        case QVScanTypeDelta: return "delta";
        default: return "";
    }
}

// The archive of the report, written in the staging folder.
bool stageArchive(const ReportStagingFolder& staging, const std::string& archiveName, const std::string& report) {
    const std::optional<std::string> archive = zipWithOneMember(QVReportOutbox::kArchiveMemberName, report);
    if (!archive) {
        QVSLogger::error("Failed to compress hardware report [%s].", archiveName.c_str());
        return false;
    }
    int error = 0;
    if (staging.write(archiveName, *archive, &error)) return true;
    QVSLogger::error("Could not write the archive [%s]: %s", archiveName.c_str(), std::strerror(error));
    return false;
}

bool stageHeader(const ReportStagingFolder& staging, const std::string& headerName, QVScanType scanType) {
    int error = 0;
    if (staging.write(headerName, QVReportOutbox::headerLine(scanType), &error)) {
        QVSLogger::information("Generated header [%s].", headerName.c_str());
        return true;
    }
    QVSLogger::error("Could not write the header [%s]: %s", headerName.c_str(), std::strerror(error));
    return false;
}

// The archive goes first: the collecting agent takes a header as the sign that its archive
// is complete. Whatever fails, the outbox is left without a part of this pair.
bool moveIntoOutbox(const ReportStagingFolder& staging, const std::string& archiveName, const std::string& headerName) {
    const std::string outboxPath = Paths::outboxFolder();
    const FileDescriptor outbox(::open(outboxPath.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    int error = errno;
    if (!outbox.isOpen()) {
        QVSLogger::error("Could not open the outbox [%s]: %s", outboxPath.c_str(), std::strerror(error));
        return false;
    }
    if (!staging.moveInto(archiveName, outbox.get(), &error)) {
        QVSLogger::error("Could not move [%s] into the outbox: %s", archiveName.c_str(), std::strerror(error));
        return false;
    }
    if (!staging.moveInto(headerName, outbox.get(), &error)) {
        QVSLogger::error("Could not move [%s] into the outbox: %s", headerName.c_str(), std::strerror(error));
        if (!removeItemAt(outbox.get(), archiveName)) {
            QVSLogger::error("Could not take [%s] back out of the outbox: %s", archiveName.c_str(), std::strerror(errno));
        }
        return false;
    }
    QVSLogger::information("Move report and header to outbox.");
    return true;
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

bool QVReportOutbox::writeTemporaryReport(std::string_view document, int* errorCode) {
    const std::optional<ReportStagingFolder> staging = ReportStagingFolder::open();
    int error = EACCES;
    if (staging && staging->write(kArchiveMemberName, document, &error)) return true;
    if (errorCode) *errorCode = fileWriteErrorCode(error);
    return false;
}

std::optional<std::string> QVReportOutbox::readTemporaryReport() {
    const std::optional<ReportStagingFolder> staging = ReportStagingFolder::open();
    return staging ? staging->read(kArchiveMemberName, kMaximumReportBytes) : std::nullopt;
}

void QVReportOutbox::removeUncompressedReportFile() {
    if (const std::optional<ReportStagingFolder> staging = ReportStagingFolder::open()) {
        staging->remove(kArchiveMemberName);
    }
}

bool QVReportOutbox::compressReportFileWithScanType(QVScanType scanType, std::chrono::system_clock::time_point date) {
    const std::optional<ReportStagingFolder> staging = ReportStagingFolder::open();
    if (!staging) return false;
    const std::optional<std::string> report = staging->read(kArchiveMemberName, kMaximumReportBytes);
    if (!report) {
        QVSLogger::error("The was no file to compress.");
        return false;
    }
    staging->removeLeftoversExcept(kArchiveMemberName);
    const std::string archiveName = archiveNameForDate(date);
    if (!stageArchive(*staging, archiveName, *report)) return false;
    QVSLogger::information("Compressed hardware report [%s].", archiveName.c_str());
    if (scanType == QVScanTypeNone) return true;
    const std::string headerName = headerPathForArchivePath(archiveName);
    const bool handedOver = stageHeader(*staging, headerName, scanType) && moveIntoOutbox(*staging, archiveName, headerName);
    if (!handedOver) staging->removeLeftoversExcept(kArchiveMemberName);
    return handedOver;
}

bool QVReportOutbox::lazyCreateOutboxAndDeltaFolders() {
    createFolder(Paths::outboxFolder(), "Could not create TOV outbox.  Perhaps not running as root?",
                 "TOV outbox is created.");
    createFolder(Paths::deltaFolder(), "Could not create TOV delta folder.  Perhaps not running as root?",
                 "TOV delta folder is created.");
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(Paths::outboxFolder(), nullptr);
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(Paths::deltaFolder(), nullptr);
    QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(Paths::previousReport(), nullptr);
    ReportStagingFolder::open();
    return true;
}

bool QVReportOutbox::holdsReports() {
    std::error_code error;
    std::filesystem::directory_iterator entries(Paths::outboxFolder(), error);
    return !error && entries != std::filesystem::directory_iterator();
}

void QVReportOutbox::clearOutbox() {
    const std::string outbox = Paths::outboxFolder();
    if (!itemExists(outbox)) return;
    QVSLogger::debug("Proceeding to remove the outbox in order to clear it.");
    // Headers go first: a removal cut short must never leave a header without its archive.
    removeHeadersOf(outbox);
    if (!removeItemWithoutFollowing(outbox)) {
        QVSLogger::error("Encountered an error in trying to remove the outbox at [%s] with error code [%d]",
                         outbox.c_str(), errno);
        return;
    }
    QVSLogger::debug("Succeeded in removing the outbox.");
    lazyCreateOutboxAndDeltaFolders();
}

}  // namespace tov
