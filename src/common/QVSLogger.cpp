#include "common/QVSLogger.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <limits>
#include <mutex>
#include <optional>
#include <system_error>

#include "common/FileAccess.h"
#include "common/QVFileUtil.h"
#include "common/TextUtils.h"
#include "platform/ProcessInfo.h"

namespace tov {
namespace {

namespace fs = std::filesystem;
using TimePoint = std::chrono::system_clock::time_point;

// Rank r (1 = TRACE ... 6 = CRITICAL) is at index r - 1 of both tables.
constexpr std::array<const char*, 6> kPaddedLevels = {
    QVSLogger::kTrace, QVSLogger::kDebug, QVSLogger::kInformation,
    QVSLogger::kWarning, QVSLogger::kError, QVSLogger::kCritical,
};
constexpr std::array<const char*, 6> kBareLevels = {"TRACE", "DEBUG", "INFORMATION", "WARNING", "ERROR", "CRITICAL"};

constexpr int kInformationRank = 3;
constexpr std::int64_t kInitialMaximumLogFileCount = 20;
constexpr std::int64_t kNoGeneration = -9999;
constexpr std::int64_t kLiveFile = -1;

struct LoggerState {
    std::recursive_mutex lock;
    std::string filename;
    std::string folderPath;
    std::int64_t maximumLogFileCount = kInitialMaximumLogFileCount;
    // The threshold is kept as its rank so the filter can read it without the lock.
    std::atomic<int> minimumLoglLevelRank{kInformationRank};
    std::string processName;
    std::int64_t processId = -1;
    int previousLogDate = 0;
    std::function<TimePoint()> clock;
};

// Never destroyed, so code running during static destruction may still log.
LoggerState& state() {
    static LoggerState* const shared = new LoggerState;
    return *shared;
}

using Guard = std::lock_guard<std::recursive_mutex>;

TimePoint now() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    return logger.clock ? logger.clock() : std::chrono::system_clock::now();
}

int rankOfLevel(const std::string& paddedLevel) {
    for (std::size_t index = 0; index < kPaddedLevels.size(); ++index) {
        if (paddedLevel == kPaddedLevels[index]) return static_cast<int>(index) + 1;
    }
    return 0;
}

std::string thresholdLevel() {
    return kPaddedLevels[static_cast<std::size_t>(state().minimumLoglLevelRank.load() - 1)];
}

std::tm localTime(TimePoint time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
    std::tm parts{};
    localtime_r(&seconds, &parts);
    return parts;
}

std::string formatLocalTime(TimePoint time, const char* format) {
    const std::tm parts = localTime(time);
    char text[64] = {};
    const std::size_t length = std::strftime(text, sizeof text, format, &parts);
    return std::string(text, length);
}

int dayOfMonth(TimePoint time) {
    return localTime(time).tm_mday;
}

template <typename Unit>
std::int64_t unitsIntoSecond(TimePoint time) {
    const auto sinceSecond = time - std::chrono::floor<std::chrono::seconds>(time);
    return std::chrono::duration_cast<Unit>(sinceSecond).count();
}

// vsnprintf twice: once for the length, once into a buffer of that size.
std::optional<std::string> formatMessage(const char* format, va_list arguments) {
    va_list sizing;
    va_copy(sizing, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, sizing);
    va_end(sizing);
    if (length < 0) return std::nullopt;
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

bool logFormatted(const char* paddedLevel, bool applyThreshold, const char* format, va_list arguments) {
    if (applyThreshold && !QVSLogger::logLevel(paddedLevel, thresholdLevel())) return false;
    if (format == nullptr || *format == '\0') return false;
    Guard guard(state().lock);
    const std::optional<std::string> message = formatMessage(format, arguments);
    if (!message) return false;
    return QVSLogger::outputMessage(*message, paddedLevel);
}

std::string liveLogPath(const LoggerState& logger) {
    return logger.folderPath + "/" + logger.filename + ".log";
}

std::string generationPath(const LoggerState& logger, std::int64_t number) {
    return liveLogPath(logger) + "." + std::to_string(number);
}

bool isDirectory(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

void reportFolderCreationFailure(const std::string& folderPath) {
    const std::string message = "Could not create the log folder [" + folderPath + "]";
    ::syslog(LOG_ERR, "%s", message.c_str());
    std::fprintf(stderr, "%s\n", message.c_str());
}

// The folders of path that do not exist yet, deepest first.
std::vector<fs::path> missingFolders(const fs::path& path) {
    std::vector<fs::path> missing;
    for (fs::path folder = path; !folder.empty() && !itemExists(folder.string()); folder = folder.parent_path()) {
        missing.push_back(folder);
        if (folder == folder.parent_path()) break;
    }
    return missing;
}

// Never follows a symbolic link: a link planted in place of the log keeps pointing at its
// target, which is neither written nor changed.
int openForAppend(const std::string& path) {
    return ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
}

// Owner the real user, the daemon's group, mode 0600, without following a link.
void repairOwnership(const std::string& path) {
    (void)QVFileUtil::ensureReadWritePermissionsForRootUserFileAtPath(path, nullptr);
}

// Opens the live file for appending; when that fails, repairs the file, then the folder, and
// as the last resort deletes the folder (the next line creates it again).
int openLogRepairingOnFailure(const std::string& path, const std::string& folderPath) {
    int descriptor = openForAppend(path);
    if (descriptor >= 0) return descriptor;
    repairOwnership(path);
    descriptor = openForAppend(path);
    if (descriptor >= 0) return descriptor;
    repairOwnership(folderPath);
    descriptor = openForAppend(path);
    if (descriptor >= 0) return descriptor;
    if (!isRemovableLogFolder(folderPath)) return -1;
    std::error_code ignored;
    fs::remove_all(folderPath, ignored);
    return openForAppend(path);
}

bool writeWhole(int descriptor, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t result = ::write(descriptor, text.data() + written, text.size() - written);
        if (result < 0 && errno == EINTR) continue;
        if (result <= 0) return false;
        written += static_cast<std::size_t>(result);
    }
    return true;
}

std::string composeLine(const std::string& timestamp, const LoggerState& logger, const std::string& paddedLevel,
                        const std::string& message) {
    // The message ends at its first NUL, as a C string would.
    return timestamp + " - " + logger.processName + "[" + std::to_string(logger.processId) + "] - " + paddedLevel +
           " - " + message.c_str() + "\n";
}

std::vector<std::string> sortedFolderEntries(const std::string& folderPath) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folderPath, error), end; !error && entry != end; entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The generation an entry names exactly ("tov.log" is the live file, kLiveFile), if any.
std::optional<std::int64_t> exactGeneration(const std::string& entry, const std::string& filename) {
    const std::string live = filename + ".log";
    if (entry == live) return kLiveFile;
    if (!hasPrefix(entry, live + ".")) return std::nullopt;
    const std::string suffix = entry.substr(live.size() + 1);
    if (suffix.empty() || !std::all_of(suffix.begin(), suffix.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return std::nullopt;
    }
    const std::int64_t number = leadingIntegerValue(suffix);
    if (std::to_string(number) != suffix) return std::nullopt;
    return number;
}

// The generations from highest down to the live file, highest first. Shifting a generation
// that has no file does nothing, so only those present are listed: a stray huge number
// cannot make a roll count down for ages.
std::vector<std::int64_t> generationsToShift(const std::vector<std::string>& entries, const std::string& filename,
                                             std::int64_t highest) {
    std::vector<std::int64_t> numbers;
    for (const std::string& entry : entries) {
        const std::optional<std::int64_t> number = exactGeneration(entry, filename);
        if (number && *number <= highest) numbers.push_back(*number);
    }
    std::sort(numbers.begin(), numbers.end(), std::greater<>());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

bool isBeyondLastGeneration(std::int64_t number, std::int64_t maximumLogFileCount) {
    if (maximumLogFileCount < std::numeric_limits<std::int64_t>::min() + 2) return true;
    return number >= maximumLogFileCount - 2;
}

// A move never replaces an existing target.
void moveWithoutReplacing(const std::string& source, const std::string& target) {
    if (itemExists(target)) return;
    (void)std::rename(source.c_str(), target.c_str());
}

// A fresh empty file renamed over the live file, so the replacement is never half done and
// a link planted at the live file's name is replaced, not followed.
void writeEmptyFileAtomically(const LoggerState& logger) {
    std::string temporary = logger.folderPath + "/." + logger.filename + ".log.XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) return;
    ::close(descriptor);
    if (std::rename(temporary.c_str(), liveLogPath(logger).c_str()) != 0) ::unlink(temporary.c_str());
}

}  // namespace

std::string logLineTimestamp(TimePoint time) {
    const std::string fraction = std::to_string(unitsIntoSecond<std::chrono::microseconds>(time)).substr(0, 3);
    return formatLocalTime(time, "%Y-%m-%d %H:%M:%S") + "." + fraction;
}

bool isRemovableLogFolder(const std::string& folderPath) {
    return folderPath != "/" && folderPath.size() >= 4;
}

void QVSLogger::setFilename(const std::string& filename, const std::string& folderPath) {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    logger.filename = filename;
    logger.folderPath = folderPath;
}

std::string QVSLogger::folderPath() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    return logger.folderPath;
}

void QVSLogger::setMaximumLogFileCount(std::int64_t count) {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    logger.maximumLogFileCount = count;
}

void QVSLogger::setMinimumLogLevel(const std::string& level) {
    if (level.empty()) return;
    LoggerState& logger = state();
    Guard guard(logger.lock);
    for (std::size_t index = 0; index < kPaddedLevels.size(); ++index) {
        if (level == kPaddedLevels[index] || equalsIgnoringCase(level, kBareLevels[index])) {
            logger.minimumLoglLevelRank.store(static_cast<int>(index) + 1);
            return;
        }
    }
}

std::string QVSLogger::currentMinimumLogLevel() {
    return trimWhitespaceAndNewlines(thresholdLevel());
}

bool QVSLogger::trace(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool written = logFormatted(kTrace, true, format, arguments);
    va_end(arguments);
    return written;
}

bool QVSLogger::debug(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool written = logFormatted(kDebug, true, format, arguments);
    va_end(arguments);
    return written;
}

bool QVSLogger::information(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool written = logFormatted(kInformation, true, format, arguments);
    va_end(arguments);
    return written;
}

bool QVSLogger::warning(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool written = logFormatted(kWarning, true, format, arguments);
    va_end(arguments);
    return written;
}

bool QVSLogger::error(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool written = logFormatted(kError, true, format, arguments);
    va_end(arguments);
    return written;
}

bool QVSLogger::critical(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const bool written = logFormatted(kCritical, false, format, arguments);
    va_end(arguments);
    return written;
}

bool QVSLogger::outputMessage(const std::string& message, const std::string& paddedLevel) {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    rollLogIfApplicable();
    lazyDiscoverProcessInfo();
    if (logger.folderPath.empty() || logger.filename.empty()) return false;

    const std::string path = liveLogPath(logger);
    bool dropLine = false;
    if (!itemExists(path) && !lazyCreateLogfolder()) {
        reportFolderCreationFailure(logger.folderPath);
        dropLine = true;
    }
    const std::string timestamp = logLineTimestamp(now());
    if (dropLine) return false;

    const int descriptor = openLogRepairingOnFailure(path, logger.folderPath);
    if (descriptor < 0) return false;
    const bool written = writeWhole(descriptor, composeLine(timestamp, logger, paddedLevel, message));
    const bool closed = ::close(descriptor) == 0;
    return written && closed;
}

bool QVSLogger::logLevel(const std::string& level, const std::string& minimumLevel) {
    if (minimumLevel.empty() || level.empty()) return false;
    const int minimumRank = rankOfLevel(minimumLevel);
    if (minimumRank == 0) return false;
    return rankOfLevel(level) >= minimumRank;
}

std::string QVSLogger::logDateTimeText() {
    const TimePoint time = now();
    char milliseconds[8] = {};
    std::snprintf(milliseconds, sizeof milliseconds, "%03d",
                  static_cast<int>(unitsIntoSecond<std::chrono::milliseconds>(time)));
    return formatLocalTime(time, "%Y-%m-%d %H:%M:%S") + "." + milliseconds;
}

void QVSLogger::rollLogIfApplicable() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    lazyDiscoverDateComponentOfLatestLogFileIfAny();
    const int today = dayOfMonth(now());
    if (today == logger.previousLogDate) return;
    rollLog();
    logger.previousLogDate = today;
}

void QVSLogger::rollLog() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    if (logger.filename.empty() || logger.folderPath.empty()) return;
    if (!isDirectory(logger.folderPath)) lazyCreateLogfolder();
    const std::vector<std::string> entries = sortedFolderEntries(logger.folderPath);
    const std::int64_t highest = highestLogFileNumberInArray(entries);
    if (highest >= kLiveFile) {
        for (const std::int64_t number : generationsToShift(entries, logger.filename, highest)) {
            rollFileUpFromNumber(number);
        }
    }
    writeEmptyFileAtomically(logger);
}

std::int64_t QVSLogger::highestLogFileNumberInArray(const std::vector<std::string>& entries) {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    const std::string& filename = logger.filename;
    if (filename.empty() || entries.empty()) return kNoGeneration;
    std::int64_t highest = kNoGeneration;
    for (const std::string& entry : entries) {
        if (entry.size() < filename.size() + 4 || !hasPrefix(entry, filename)) continue;
        const std::size_t extension = asciiLowercase(entry).find(".log");
        if (extension == std::string::npos) continue;
        const std::string tail = entry.substr(extension);
        const std::size_t lastDot = tail.rfind('.');
        if (lastDot == 0) {
            // The live file replaces whatever was found before it.
            highest = kLiveFile;
            continue;
        }
        const std::string generation = tail.substr(lastDot + 1);
        highest = std::max(highest, generation.empty() ? kLiveFile : leadingIntegerValue(generation));
    }
    return highest;
}

void QVSLogger::rollFileUpFromNumber(std::int64_t number) {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    if (number == kNoGeneration || logger.filename.empty() || logger.folderPath.empty()) return;
    if (number < 0) {
        moveWithoutReplacing(liveLogPath(logger), generationPath(logger, 0));
    } else if (isBeyondLastGeneration(number, logger.maximumLogFileCount)) {
        std::error_code ignored;
        fs::remove_all(generationPath(logger, number), ignored);
    } else {
        moveWithoutReplacing(generationPath(logger, number), generationPath(logger, number + 1));
    }
}

bool QVSLogger::lazyCreateLogfolder() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    if (logger.folderPath.empty()) return false;
    const std::vector<fs::path> created = missingFolders(logger.folderPath);
    std::error_code error;
    fs::create_directories(logger.folderPath, error);
    if (error) return false;
    if (::geteuid() == 0) {
        const gid_t group = QVFileUtil::kDaemonGroupId;
        for (const fs::path& folder : created) {
            // A folder the group cannot be given keeps root's own group: still root-only.
            [[maybe_unused]] const int result = ::chown(folder.c_str(), 0, group);
        }
    }
    return true;
}

void QVSLogger::lazyDiscoverDateComponentOfLatestLogFileIfAny() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    if (logger.previousLogDate != 0 || logger.folderPath.empty() || logger.filename.empty()) return;
    struct stat info {};
    if (::lstat(liveLogPath(logger).c_str(), &info) != 0) return;
    logger.previousLogDate = dayOfMonth(std::chrono::system_clock::from_time_t(info.st_mtime));
}

void QVSLogger::lazyDiscoverProcessInfo() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    if (logger.processId != -1) return;
    logger.processName = currentProcessName();
    logger.processId = static_cast<std::int64_t>(::getpid());
}

void QVSLogger::setClockForTesting(std::function<TimePoint()> clock) {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    logger.clock = std::move(clock);
}

void QVSLogger::resetForTesting() {
    LoggerState& logger = state();
    Guard guard(logger.lock);
    logger.filename.clear();
    logger.folderPath.clear();
    logger.maximumLogFileCount = kInitialMaximumLogFileCount;
    logger.minimumLoglLevelRank.store(kInformationRank);
    logger.processName.clear();
    logger.processId = -1;
    logger.previousLogDate = 0;
    logger.clock = nullptr;
}

}  // namespace tov
