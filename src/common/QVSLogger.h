#pragma once

// The process-wide rolling log. All state is global and every operation is class-level:
// one line per call, filtered by a minimum level, appended to "<folder>/<filename>.log",
// which is rolled into numbered generations once per calendar day.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#define TOV_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))

namespace tov {

class QVSLogger {
public:
    // The six levels, padded on the left to 11 characters as stored and printed.
    static constexpr const char* kTrace = "      TRACE";
    static constexpr const char* kDebug = "      DEBUG";
    static constexpr const char* kInformation = "INFORMATION";
    static constexpr const char* kWarning = "    WARNING";
    static constexpr const char* kError = "      ERROR";
    static constexpr const char* kCritical = "   CRITICAL";

    static void setFilename(const std::string& filename, const std::string& folderPath);
    // Taken under the lock, so a setter running at the same time cannot tear it.
    static std::string folderPath();
    static void setMaximumLogFileCount(std::int64_t count);
    // Accepts a padded level name exactly, or a bare one in any letter case; anything
    // else (an empty text included) leaves the threshold as it is.
    static void setMinimumLogLevel(const std::string& level);
    static std::string currentMinimumLogLevel();

    // printf-style; true only when the line was written. critical ignores the threshold.
    static bool trace(const char* format, ...) TOV_PRINTF_FORMAT(1, 2);
    static bool debug(const char* format, ...) TOV_PRINTF_FORMAT(1, 2);
    static bool information(const char* format, ...) TOV_PRINTF_FORMAT(1, 2);
    static bool warning(const char* format, ...) TOV_PRINTF_FORMAT(1, 2);
    static bool error(const char* format, ...) TOV_PRINTF_FORMAT(1, 2);
    static bool critical(const char* format, ...) TOV_PRINTF_FORMAT(1, 2);

    static bool outputMessage(const std::string& message, const std::string& paddedLevel);
    static bool logLevel(const std::string& level, const std::string& minimumLevel);  // ...satisfiesMinimumLogLevel:
    static std::string logDateTimeText();

    static void rollLogIfApplicable();
    static void rollLog();
    static std::int64_t highestLogFileNumberInArray(const std::vector<std::string>& entries);
    static void rollFileUpFromNumber(std::int64_t number);
    static bool lazyCreateLogfolder();
    static void lazyDiscoverDateComponentOfLatestLogFileIfAny();
    static void lazyDiscoverProcessInfo();

    // Test seams: the clock that stamps lines and decides the daily roll, and a reset of
    // all global state to its initial values.
    static void setClockForTesting(std::function<std::chrono::system_clock::time_point()> clock);
    static void resetForTesting();
};

// "yyyy-mm-dd HH:MM:SS." in local time, then the microseconds of the second printed without
// leading zeros and cut to three characters (7 µs gives 7, 123456 µs gives 123).
std::string logLineTimestamp(std::chrono::system_clock::time_point time);

// Whether the writer may, as its last resort, delete this log folder: never "/" nor a
// path shorter than 4 characters.
bool isRemovableLogFolder(const std::string& folderPath);

}  // namespace tov
