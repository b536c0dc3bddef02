#include "common/QVSLogger.h"

#include <gtest/gtest.h>
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "common/QVFileUtil.h"
#include "platform/ProcessInfo.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

namespace fs = std::filesystem;
using TimePoint = std::chrono::system_clock::time_point;

// A moment in local time, with microseconds into its second.
TimePoint localTimePoint(int year, int month, int day, int hour, int minute, int second, int microseconds = 0) {
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&parts)) + std::chrono::microseconds(microseconds);
}

void setModificationTime(const std::string& path, TimePoint time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

using testing::readFile;
using testing::writeFile;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

gid_t expectedDaemonGroup() { return QVFileUtil::kDaemonGroupId; }

// "<timestamp> - <process>[<pid>] - <padded level> - <message>"
std::regex linePattern(const std::string& paddedLevel, const std::string& message) {
    return std::regex(R"(^\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{1,3} - )" + currentProcessName() + R"(\[)" +
                      std::to_string(::getpid()) + R"(\] - )" + paddedLevel + " - " + message + "$");
}

class QVSLoggerTest : public ::testing::Test {
protected:
    void SetUp() override {
        QVSLogger::resetForTesting();
        // The clock stands still during a test, so midnight cannot bring an unplanned roll.
        const TimePoint start = std::chrono::system_clock::now();
        QVSLogger::setClockForTesting([start] { return start; });
        root = temporary.path();
        folder = root + "/logs";
        originalDirectory = fs::current_path();
    }

    void TearDown() override {
        QVSLogger::resetForTesting();
        fs::current_path(originalDirectory);
    }

    void configure(std::int64_t count = 5) {
        QVSLogger::setFilename("tov", folder);
        QVSLogger::setMaximumLogFileCount(count);
    }

    // Configures the logger and fills the folder with files of the given names, each holding
    // its own name so moves can be followed.
    void populate(const std::vector<std::string>& names) {
        configure();
        fs::create_directories(folder);
        for (const std::string& name : names) writeFile(file(name), "content of " + name);
    }

    std::string file(const std::string& name) const { return folder + "/" + name; }

    std::vector<std::string> folderEntries() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    testing::TestFolder temporary;
    std::string root;
    std::string folder;
    fs::path originalDirectory;
};

// --- time stamps ---

TEST_F(QVSLoggerTest, LineTimestampFractionIsMicrosecondsWithoutLeadingZerosCutToThree) {
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 7)), "2024-03-05 14:07:09.7");
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 70)), "2024-03-05 14:07:09.70");
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 700)), "2024-03-05 14:07:09.700");
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 700000)), "2024-03-05 14:07:09.700");
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 7000)), "2024-03-05 14:07:09.700");
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 42)), "2024-03-05 14:07:09.42");
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 123456)), "2024-03-05 14:07:09.123");
    EXPECT_EQ(logLineTimestamp(localTimePoint(2024, 3, 5, 14, 7, 9, 0)), "2024-03-05 14:07:09.0");
}

TEST_F(QVSLoggerTest, DateTimeTextPadsMilliseconds) {
    QVSLogger::setClockForTesting([] { return localTimePoint(2024, 3, 5, 14, 7, 9, 5678); });
    EXPECT_EQ(QVSLogger::logDateTimeText(), "2024-03-05 14:07:09.005");
    QVSLogger::setClockForTesting([] { return localTimePoint(2023, 12, 31, 23, 59, 58, 987654); });
    EXPECT_EQ(QVSLogger::logDateTimeText(), "2023-12-31 23:59:58.987");
}

// --- threshold and filter ---

TEST_F(QVSLoggerTest, ThresholdStartsAtInformation) {
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "INFORMATION");
}

TEST_F(QVSLoggerTest, BareLevelNameInAnyCaseSetsThreshold) {
    QVSLogger::setMinimumLogLevel("warning");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "WARNING");
    QVSLogger::setMinimumLogLevel("Debug");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "DEBUG");
    QVSLogger::setMinimumLogLevel("CRITICAL");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "CRITICAL");
    QVSLogger::setMinimumLogLevel("trace");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "TRACE");
}

TEST_F(QVSLoggerTest, PaddedLevelNameSetsThreshold) {
    QVSLogger::setMinimumLogLevel("    WARNING");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "WARNING");
    QVSLogger::setMinimumLogLevel("      ERROR");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "ERROR");
}

TEST_F(QVSLoggerTest, UnknownEmptyOrWronglyPaddedNamesLeaveThreshold) {
    QVSLogger::setMinimumLogLevel("warning");
    QVSLogger::setMinimumLogLevel("verbose");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "WARNING");
    QVSLogger::setMinimumLogLevel("");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "WARNING");
    QVSLogger::setMinimumLogLevel(" debug");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "WARNING");
    QVSLogger::setMinimumLogLevel("  WARNING");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "WARNING");
    QVSLogger::setMinimumLogLevel("DEBUG\n");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "WARNING");
}

TEST_F(QVSLoggerTest, FilterComparesRanks) {
    EXPECT_TRUE(QVSLogger::logLevel(QVSLogger::kError, QVSLogger::kInformation));
    EXPECT_TRUE(QVSLogger::logLevel(QVSLogger::kInformation, QVSLogger::kInformation));
    EXPECT_FALSE(QVSLogger::logLevel(QVSLogger::kDebug, QVSLogger::kInformation));
    EXPECT_TRUE(QVSLogger::logLevel(QVSLogger::kTrace, QVSLogger::kTrace));
    EXPECT_FALSE(QVSLogger::logLevel(QVSLogger::kError, QVSLogger::kCritical));
}

TEST_F(QVSLoggerTest, FilterRejectsEmptyAndUnknownLevels) {
    EXPECT_FALSE(QVSLogger::logLevel(QVSLogger::kError, ""));
    EXPECT_FALSE(QVSLogger::logLevel("", QVSLogger::kTrace));
    EXPECT_FALSE(QVSLogger::logLevel(QVSLogger::kCritical, "WARNING"));  // bare name: unknown threshold
    EXPECT_FALSE(QVSLogger::logLevel("NOTICE", QVSLogger::kTrace));
}

TEST_F(QVSLoggerTest, ThresholdWarningDropsInformationButCriticalIsWritten) {
    configure();
    fs::create_directories(folder);
    writeFile(file("tov.log"), "existing\n");
    QVSLogger::setMinimumLogLevel("WARNING");

    EXPECT_FALSE(QVSLogger::information("dropped"));
    EXPECT_FALSE(QVSLogger::debug("dropped"));
    EXPECT_FALSE(QVSLogger::trace("dropped"));
    EXPECT_EQ(readFile(file("tov.log")), "existing\n");

    EXPECT_TRUE(QVSLogger::warning("kept warning"));
    EXPECT_TRUE(QVSLogger::error("kept error"));
    QVSLogger::setMinimumLogLevel("critical");
    EXPECT_FALSE(QVSLogger::error("dropped"));
    EXPECT_TRUE(QVSLogger::critical("kept critical"));

    const std::vector<std::string> lines = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "existing");
    EXPECT_TRUE(std::regex_match(lines[1], linePattern(QVSLogger::kWarning, "kept warning"))) << lines[1];
    EXPECT_TRUE(std::regex_match(lines[2], linePattern(QVSLogger::kError, "kept error"))) << lines[2];
    EXPECT_TRUE(std::regex_match(lines[3], linePattern(QVSLogger::kCritical, "kept critical"))) << lines[3];
}

// --- writing lines ---

TEST_F(QVSLoggerTest, LineCarriesTimestampProcessLevelAndMessage) {
    configure();
    ASSERT_TRUE(QVSLogger::information("POC: Start apply the new policy..."));
    const std::vector<std::string> lines = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(std::regex_match(lines[0], linePattern("INFORMATION", R"(POC: Start apply the new policy\.\.\.)")))
        << lines[0];
}

TEST_F(QVSLoggerTest, LineUsesTheClockAndFormatsArguments) {
    configure();
    QVSLogger::setClockForTesting([] { return localTimePoint(2024, 3, 5, 14, 7, 9, 512345); });
    ASSERT_TRUE(QVSLogger::warning("%s has %d items, %.1f%% full", "outbox", 3, 42.5));
    EXPECT_EQ(readFile(file("tov.log")), "2024-03-05 14:07:09.512 - " + currentProcessName() + "[" +
                                             std::to_string(::getpid()) +
                                             "] -     WARNING - outbox has 3 items, 42.5% full\n");
}

TEST_F(QVSLoggerTest, EveryLevelPrintsItsPaddedName) {
    configure();
    QVSLogger::setMinimumLogLevel("TRACE");
    ASSERT_TRUE(QVSLogger::trace("t"));
    ASSERT_TRUE(QVSLogger::debug("d"));
    ASSERT_TRUE(QVSLogger::information("i"));
    ASSERT_TRUE(QVSLogger::warning("w"));
    ASSERT_TRUE(QVSLogger::error("e"));
    ASSERT_TRUE(QVSLogger::critical("c"));
    const std::vector<std::string> lines = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(lines.size(), 6u);
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"      TRACE", "t"}, {"      DEBUG", "d"}, {"INFORMATION", "i"},
        {"    WARNING", "w"}, {"      ERROR", "e"}, {"   CRITICAL", "c"},
    };
    for (std::size_t index = 0; index < expected.size(); ++index) {
        EXPECT_TRUE(std::regex_match(lines[index], linePattern(expected[index].first, expected[index].second)))
            << lines[index];
    }
}

TEST_F(QVSLoggerTest, LongMessageIsWrittenWhole) {
    configure();
    const std::string message(100000, 'x');
    ASSERT_TRUE(QVSLogger::information("%s", message.c_str()));
    const std::vector<std::string> lines = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].substr(lines[0].size() - message.size()), message);
    EXPECT_EQ(lines[0].find(" - INFORMATION - ") + 17, lines[0].size() - message.size());
}

// The formats here are empty or null on purpose; clang warns of any format that is no literal.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
TEST_F(QVSLoggerTest, EmptyFormatWritesNothing) {
    configure();
    const char* empty = "";
    const char* absent = nullptr;
    EXPECT_FALSE(QVSLogger::information(empty));
    EXPECT_FALSE(QVSLogger::critical(empty));
    EXPECT_FALSE(QVSLogger::critical(absent));
    EXPECT_FALSE(fs::exists(folder));
}
#pragma GCC diagnostic pop

TEST_F(QVSLoggerTest, EmptyMessageIsStillALine) {
    configure();
    ASSERT_TRUE(QVSLogger::information("%s", ""));
    const std::vector<std::string> lines = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(std::regex_match(lines[0], linePattern("INFORMATION", ""))) << lines[0];
}

TEST_F(QVSLoggerTest, UnconfiguredLoggerWritesNothing) {
    EXPECT_FALSE(QVSLogger::information("no file name"));
    EXPECT_FALSE(QVSLogger::outputMessage("no file name", QVSLogger::kInformation));
    QVSLogger::setFilename("", folder);
    EXPECT_FALSE(QVSLogger::critical("no file name"));
    QVSLogger::setFilename("tov", "");
    EXPECT_FALSE(QVSLogger::critical("no folder"));
    EXPECT_FALSE(fs::exists(folder));
}

TEST_F(QVSLoggerTest, NewLogFileIsPrivateToItsOwner) {
    configure();
    ASSERT_TRUE(QVSLogger::information("line"));
    struct stat info {};
    ASSERT_EQ(::stat(file("tov.log").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
}

// --- folders ---

TEST_F(QVSLoggerTest, MissingFolderIsCreatedWithParents) {
    folder = root + "/a/b/logs";
    configure();
    ASSERT_TRUE(QVSLogger::information("first line"));
    EXPECT_TRUE(fs::is_directory(root + "/a/b/logs"));
    EXPECT_EQ(linesOf(readFile(file("tov.log"))).size(), 1u);
    if (::geteuid() == 0) {
        for (const std::string& created : {root + "/a", root + "/a/b", root + "/a/b/logs"}) {
            struct stat info {};
            ASSERT_EQ(::stat(created.c_str(), &info), 0);
            EXPECT_EQ(info.st_uid, 0u) << created;
            EXPECT_EQ(info.st_gid, expectedDaemonGroup()) << created;
        }
    }
}

TEST_F(QVSLoggerTest, FolderCreationLeavesExistingParentsAlone) {
    folder = root + "/logs";
    configure();
    ASSERT_EQ(::chown(root.c_str(), 1, 1), 0);
    ASSERT_TRUE(QVSLogger::lazyCreateLogfolder());
    struct stat info {};
    ASSERT_EQ(::stat(root.c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 1u);
    EXPECT_TRUE(QVSLogger::lazyCreateLogfolder());  // already there: no error
}

TEST_F(QVSLoggerTest, FolderThatCannotBeCreatedDropsTheLineAndSaysSo) {
    writeFile(root + "/plain-file", "not a folder");
    folder = root + "/plain-file/logs";
    configure();
    EXPECT_FALSE(QVSLogger::lazyCreateLogfolder());
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(QVSLogger::information("lost"));
    const std::string output = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(output.find("Could not create the log folder [" + folder + "]"), std::string::npos) << output;
}

TEST_F(QVSLoggerTest, FolderThatCannotBeWrittenIsRemovedAndRecreatedByTheNextLine) {
    configure();
    fs::create_directories(file("tov.log"));  // a folder in place of the log: open fails
    writeFile(file("tov.log.0"), "yesterday");

    EXPECT_FALSE(QVSLogger::information("lost"));
    EXPECT_FALSE(fs::exists(folder));

    ASSERT_TRUE(QVSLogger::information("written"));
    const std::vector<std::string> lines = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(std::regex_match(lines[0], linePattern("INFORMATION", "written"))) << lines[0];
}

TEST_F(QVSLoggerTest, LinkPlantedInPlaceOfTheLogIsNeverFollowed) {
    const std::string outside = root + "/outside";
    fs::create_directories(outside);
    writeFile(outside + "/victim", "untouched");
    ASSERT_EQ(::chmod((outside + "/victim").c_str(), 0644), 0);
    ASSERT_EQ(::chown((outside + "/victim").c_str(), 1, 1), 0);
    configure();
    fs::create_directories(folder);
    fs::create_symlink(outside + "/victim", file("tov.log"));

    EXPECT_FALSE(QVSLogger::information("must not reach the link's target"));

    EXPECT_EQ(readFile(outside + "/victim"), "untouched");
    struct stat info {};
    ASSERT_EQ(::stat((outside + "/victim").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
    EXPECT_EQ(info.st_uid, 1u);
    EXPECT_EQ(info.st_gid, 1u);
    EXPECT_FALSE(fs::exists(folder));  // the last resort removed the folder, not the target
}

TEST_F(QVSLoggerTest, RootAndShortFolderPathsAreNeverRemovable) {
    EXPECT_FALSE(isRemovableLogFolder("/"));
    EXPECT_FALSE(isRemovableLogFolder(""));
    EXPECT_FALSE(isRemovableLogFolder("/x"));
    EXPECT_FALSE(isRemovableLogFolder("/ab"));
    EXPECT_TRUE(isRemovableLogFolder("/abc"));
    EXPECT_TRUE(isRemovableLogFolder("/var/log/tov"));
}

TEST_F(QVSLoggerTest, ShortFolderPathSurvivesAFailedOpen) {
    fs::current_path(root);
    QVSLogger::setFilename("tov", "ab");
    fs::create_directories(root + "/ab/tov.log");
    EXPECT_FALSE(QVSLogger::information("lost"));
    EXPECT_TRUE(fs::is_directory(root + "/ab/tov.log"));
}

TEST_F(QVSLoggerTest, FourCharacterFolderPathIsRemovedAfterAFailedOpen) {
    fs::current_path(root);
    QVSLogger::setFilename("tov", "abcd");
    fs::create_directories(root + "/abcd/tov.log");
    EXPECT_FALSE(QVSLogger::information("lost"));
    EXPECT_FALSE(fs::exists(root + "/abcd"));
}

// --- highest generation ---

TEST_F(QVSLoggerTest, HighestGenerationOfNumberedFiles) {
    configure();
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log", "tov.log.0", "tov.log.3", "tov.log.1"}), 3);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log", "tov.log.10", "tov.log.9"}), 10);
}

TEST_F(QVSLoggerTest, LiveFileAfterGenerationsReplacesTheResult) {
    configure();
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log.2", "tov.log"}), -1);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log", "tov.log.2"}), 2);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log"}), -1);
}

TEST_F(QVSLoggerTest, FileNameMustMatchCaseExactlyButExtensionIgnoresCase) {
    configure();
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"TOV.LOG.4"}), -9999);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.Log.4"}), 4);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log.1", "TOV.LOG.4"}), 1);
}

TEST_F(QVSLoggerTest, HighestGenerationWithoutEntriesOrFileName) {
    configure();
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({}), -9999);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"other.log.3", "tov", "tov.lo", ".tov.log.2"}), -9999);
    QVSLogger::setFilename("", folder);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log", "tov.log.0"}), -9999);
}

TEST_F(QVSLoggerTest, GenerationTextIsReadAsItsLeadingInteger) {
    configure();
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log.7abc"}), 7);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log.abc"}), 0);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log."}), -1);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log.-5"}), -5);
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log.gz.2"}), 2);
}

// --- rolling ---

TEST_F(QVSLoggerTest, RollShiftsEveryGenerationAndDropsTheOldest) {
    populate({"tov.log", "tov.log.0", "tov.log.1", "tov.log.2", "tov.log.3"});
    QVSLogger::rollLog();
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.0", "tov.log.1", "tov.log.2", "tov.log.3"}));
    EXPECT_EQ(readFile(file("tov.log")), "");
    EXPECT_EQ(readFile(file("tov.log.0")), "content of tov.log");
    EXPECT_EQ(readFile(file("tov.log.1")), "content of tov.log.0");
    EXPECT_EQ(readFile(file("tov.log.2")), "content of tov.log.1");
    EXPECT_EQ(readFile(file("tov.log.3")), "content of tov.log.2");
}

TEST_F(QVSLoggerTest, RollWithCountOneKeepsTwoFiles) {
    populate({"tov.log", "tov.log.0"});
    QVSLogger::setMaximumLogFileCount(1);
    QVSLogger::rollLog();
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.0"}));
    EXPECT_EQ(readFile(file("tov.log.0")), "content of tov.log");
    EXPECT_EQ(readFile(file("tov.log")), "");

    writeFile(file("tov.log"), "second day");
    QVSLogger::rollLog();
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.0"}));
    EXPECT_EQ(readFile(file("tov.log.0")), "second day");
    EXPECT_EQ(readFile(file("tov.log")), "");
}

TEST_F(QVSLoggerTest, RollLeavesOtherFilesAlone) {
    populate({"tov.log", "tov.log.0", "other.log", "tov.txt"});
    QVSLogger::rollLog();
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"other.log", "tov.log", "tov.log.0", "tov.log.1", "tov.txt"}));
    EXPECT_EQ(readFile(file("other.log")), "content of other.log");
}

TEST_F(QVSLoggerTest, RollDeletesEveryGenerationBeyondTheCount) {
    populate({"tov.log", "tov.log.2", "tov.log.7", "tov.log.99999999999"});
    QVSLogger::rollLog();
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.0", "tov.log.3"}));
    EXPECT_EQ(readFile(file("tov.log.3")), "content of tov.log.2");
}

TEST_F(QVSLoggerTest, RollWithoutLiveFileStillShiftsAndStartsOne) {
    populate({"tov.log.0"});
    QVSLogger::rollLog();
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.1"}));
    EXPECT_EQ(readFile(file("tov.log.1")), "content of tov.log.0");
}

TEST_F(QVSLoggerTest, RollCreatesAMissingFolder) {
    configure();
    QVSLogger::rollLog();
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log"}));
}

TEST_F(QVSLoggerTest, MoveOntoAnExistingGenerationFails) {
    populate({"tov.log", "tov.log.0", "tov.log.1"});
    QVSLogger::rollFileUpFromNumber(0);
    EXPECT_EQ(readFile(file("tov.log.0")), "content of tov.log.0");
    EXPECT_EQ(readFile(file("tov.log.1")), "content of tov.log.1");
    QVSLogger::rollFileUpFromNumber(-1);
    EXPECT_EQ(readFile(file("tov.log")), "content of tov.log");
    EXPECT_EQ(readFile(file("tov.log.0")), "content of tov.log.0");
}

TEST_F(QVSLoggerTest, ShiftingOneGenerationAtAndBeyondTheCount) {
    populate({"tov.log", "tov.log.2", "tov.log.3"});
    QVSLogger::rollFileUpFromNumber(-9999);
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.2", "tov.log.3"}));
    QVSLogger::rollFileUpFromNumber(3);  // 3 >= 5 - 2: deleted
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.2"}));
    QVSLogger::rollFileUpFromNumber(2);
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.3"}));
    QVSLogger::rollFileUpFromNumber(-1);
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log.0", "tov.log.3"}));
}

TEST_F(QVSLoggerTest, ResetRestoresTheInitialState) {
    configure(2);
    QVSLogger::setMinimumLogLevel("error");
    QVSLogger::setClockForTesting([] { return localTimePoint(2001, 1, 2, 3, 4, 5); });
    QVSLogger::resetForTesting();

    EXPECT_EQ(QVSLogger::folderPath(), "");
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "INFORMATION");
    EXPECT_EQ(QVSLogger::highestLogFileNumberInArray({"tov.log.1"}), -9999);  // no file name
    const std::string today = QVSLogger::logDateTimeText().substr(0, 10);
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    char expected[16] = {};
    std::strftime(expected, sizeof expected, "%Y-%m-%d", &parts);
    EXPECT_EQ(today, expected);

    // The count is 20 again: generation 17 moves up, generation 18 is the last one kept.
    populate({"tov.log.17", "tov.log.18"});
    QVSLogger::resetForTesting();
    QVSLogger::setFilename("tov", folder);
    QVSLogger::rollFileUpFromNumber(18);
    QVSLogger::rollFileUpFromNumber(17);
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log.18"}));
    EXPECT_EQ(readFile(file("tov.log.18")), "content of tov.log.17");
}

// --- the daily roll ---

TEST_F(QVSLoggerTest, DayChangeOfTheClockRollsExactlyOnce) {
    configure();
    TimePoint clock = localTimePoint(2024, 3, 5, 23, 59, 0);
    QVSLogger::setClockForTesting([&clock] { return clock; });

    ASSERT_TRUE(QVSLogger::information("first"));
    ASSERT_TRUE(QVSLogger::information("second"));
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log"}));

    clock = localTimePoint(2024, 3, 6, 0, 0, 1);
    ASSERT_TRUE(QVSLogger::information("third"));
    ASSERT_TRUE(QVSLogger::information("fourth"));
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.0"}));
    EXPECT_EQ(linesOf(readFile(file("tov.log.0"))).size(), 2u);
    const std::vector<std::string> today = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(today.size(), 2u);
    EXPECT_NE(today[0].find(" - third"), std::string::npos);
    EXPECT_NE(today[1].find(" - fourth"), std::string::npos);
}

TEST_F(QVSLoggerTest, OnlyTheDayOfTheMonthIsCompared) {
    configure();
    TimePoint clock = localTimePoint(2024, 3, 5, 12, 0, 0);
    QVSLogger::setClockForTesting([&clock] { return clock; });
    ASSERT_TRUE(QVSLogger::information("March"));
    clock = localTimePoint(2024, 4, 5, 12, 0, 0);
    ASSERT_TRUE(QVSLogger::information("April"));
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log"}));
}

TEST_F(QVSLoggerTest, LiveFileFromAnEarlierDayRollsAtTheFirstLine) {
    populate({"tov.log"});
    setModificationTime(file("tov.log"), localTimePoint(2024, 3, 4, 18, 0, 0));
    QVSLogger::setClockForTesting([] { return localTimePoint(2024, 3, 5, 9, 0, 0); });

    ASSERT_TRUE(QVSLogger::information("new day"));
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.0"}));
    EXPECT_EQ(readFile(file("tov.log.0")), "content of tov.log");
    EXPECT_EQ(linesOf(readFile(file("tov.log"))).size(), 1u);
}

TEST_F(QVSLoggerTest, LiveFileFromTheSameDayIsAppendedTo) {
    populate({"tov.log"});
    setModificationTime(file("tov.log"), localTimePoint(2024, 3, 5, 1, 0, 0));
    QVSLogger::setClockForTesting([] { return localTimePoint(2024, 3, 5, 9, 0, 0); });

    ASSERT_TRUE(QVSLogger::information("same day"));
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log"}));
    const std::string text = readFile(file("tov.log"));
    EXPECT_EQ(text.rfind("content of tov.log", 0), 0u);
    EXPECT_NE(text.find("INFORMATION - same day\n"), std::string::npos);
}

TEST_F(QVSLoggerTest, MissingLiveFileRollsAtTheFirstLine) {
    populate({"tov.log.0"});
    ASSERT_TRUE(QVSLogger::information("first"));
    EXPECT_EQ(folderEntries(), (std::vector<std::string>{"tov.log", "tov.log.1"}));
    EXPECT_EQ(linesOf(readFile(file("tov.log"))).size(), 1u);
}

// --- threads ---

TEST_F(QVSLoggerTest, LinesFromManyThreadsStayWhole) {
    configure();
    constexpr int kThreads = 6;
    constexpr int kLinesEach = 150;
    const std::string padding(400, '.');
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread, &padding] {
            for (int line = 0; line < kLinesEach; ++line) {
                if (line % 2 == 0) {
                    QVSLogger::information("thread %d line %d %s", thread, line, padding.c_str());
                } else {
                    QVSLogger::setMinimumLogLevel(line % 4 == 1 ? "DEBUG" : "INFORMATION");
                    QVSLogger::warning("thread %d line %d %s", thread, line, padding.c_str());
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();

    const std::vector<std::string> lines = linesOf(readFile(file("tov.log")));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kThreads * kLinesEach));
    const std::regex pattern = linePattern(R"( *(INFORMATION|WARNING))", R"(thread (\d) line (\d+) \.{400})");
    std::map<int, int> linesPerThread;
    for (const std::string& line : lines) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, pattern)) << line;
        ++linesPerThread[std::stoi(match[2].str())];
    }
    for (int thread = 0; thread < kThreads; ++thread) EXPECT_EQ(linesPerThread[thread], kLinesEach);
}

}  // namespace
}  // namespace tov
