#include "app/QVDebugFileChange.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using testing::writeFile;

constexpr uid_t kNobody = 65534;

// All the bytes of a literal, NULs included.
template <std::size_t Size>
std::string bytes(const char (&text)[Size]) {
    return std::string(text, Size - 1);
}

// The log starts at TRACE here, so both a new level and the default are changes.
class QVDebugFileChangeTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        trigger = Paths::debugTrigger();
        if (!testing::runningAsRoot()) GTEST_SKIP() << "the trigger file counts only when root owns it";
        std::filesystem::create_directories(std::filesystem::path(trigger).parent_path());
    }

    void writeTrigger(const std::string& text) { writeFile(trigger, text); }
    void changed() { didDebugFileChanged(trigger); }

    // Known only once the test root is set.
    std::string trigger;
};

TEST_F(QVDebugFileChangeTest, TheTriggerLivesBelowTheTestRoot) {
    EXPECT_EQ(trigger.rfind(folder.path(), 0), 0U) << trigger;
}

TEST_F(QVDebugFileChangeTest, DebugSwitchesTheLevel) {
    writeTrigger("DEBUG\n");
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "DEBUG");
    EXPECT_TRUE(logHas("Set new loglevel [DEBUG], [DEBUG]"));
    EXPECT_TRUE(logHas(QVSLogger::kCritical));
}

TEST_F(QVDebugFileChangeTest, TheSameLevelInOtherLettersChangesNothingAndLogsNothing) {
    writeTrigger("DEBUG");
    changed();
    const std::string before = log();
    writeTrigger("  debug \n");
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "DEBUG");
    EXPECT_EQ(log(), before);
}

TEST_F(QVDebugFileChangeTest, TheLineIsWrittenWhateverTheNewLevel) {
    writeTrigger("CRITICAL");
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "CRITICAL");
    EXPECT_TRUE(logHas("Set new loglevel [CRITICAL], [CRITICAL]"));
    writeTrigger("error");
    changed();
    EXPECT_TRUE(logHas("Set new loglevel [error], [ERROR]"));
}

TEST_F(QVDebugFileChangeTest, RemovingTheTriggerRestoresInformation) {
    writeTrigger("DEBUG");
    changed();
    ASSERT_EQ(::unlink(trigger.c_str()), 0);
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "INFORMATION");
    EXPECT_TRUE(logHas("Set new loglevel [INFORMATION], [INFORMATION]"));
}

TEST_F(QVDebugFileChangeTest, NoTriggerAtAllGivesInformation) {
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "INFORMATION");
}

TEST_F(QVDebugFileChangeTest, AnEmptyTriggerIsHandedOverAndTheLoggerKeepsItsLevel) {
    writeTrigger("");
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "TRACE");
    EXPECT_TRUE(logHas("Set new loglevel [], [TRACE]"));
    writeTrigger(" \n\t\n");
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "TRACE");
}

TEST_F(QVDebugFileChangeTest, AnUnknownLevelLeavesTheLevelAsItIs) {
    writeTrigger("VERBOSE");
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "TRACE");
    EXPECT_TRUE(logHas("Set new loglevel [VERBOSE], [TRACE]"));
}

TEST_F(QVDebugFileChangeTest, BinaryDataIsNoLevel) {
    writeTrigger(bytes("\x00\x01\xff\xfe" "DEBUG\x89PNG\r\n\x1a\n"));
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "TRACE");
    EXPECT_TRUE(logHas("Set new loglevel [], [TRACE]"));
}

TEST_F(QVDebugFileChangeTest, ControlBytesInTheTextAreShownNotWritten) {
    writeTrigger(bytes("DE\nBUG\x00\x1b[2J"));
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "TRACE");
    EXPECT_TRUE(logHas("Set new loglevel [DE\\x0aBUG\\x00\\x1b[2J], [TRACE]")) << log();
    EXPECT_FALSE(logHas("\nBUG"));
}

TEST_F(QVDebugFileChangeTest, ASymbolicLinkCountsAsNoFile) {
    writeFile(folder.file("level"), "DEBUG");
    ASSERT_EQ(::symlink(folder.file("level").c_str(), trigger.c_str()), 0);
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "INFORMATION");
}

TEST_F(QVDebugFileChangeTest, AnotherUsersFileCountsAsNoFile) {
    writeTrigger("DEBUG");
    ASSERT_EQ(::chown(trigger.c_str(), kNobody, kNobody), 0);
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "INFORMATION");
}

TEST_F(QVDebugFileChangeTest, AFolderCountsAsNoFile) {
    ASSERT_EQ(::mkdir(trigger.c_str(), 0700), 0);
    changed();
    EXPECT_EQ(QVSLogger::currentMinimumLogLevel(), "INFORMATION");
}

}  // namespace
}  // namespace tov
