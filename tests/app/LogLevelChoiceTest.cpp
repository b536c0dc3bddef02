#include "app/LogLevelChoice.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::TestFolder;
using testing::writeFile;

class LogLevelChoice : public ::testing::Test {
protected:
    TestFolder folder;
    const std::string trigger = folder.file("debug_tov");
};

TEST_F(LogLevelChoice, DefaultWithoutArgumentOrTriggerFile) {
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({}), trigger), "INFORMATION");
}

TEST_F(LogLevelChoice, CommandLineLevelWithoutTriggerFile) {
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll", "DEBUG"}), trigger), "DEBUG");
}

TEST_F(LogLevelChoice, TriggerFileReplacesTheCommandLineLevel) {
    writeFile(trigger, "  trace\n");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "trace");
}

TEST_F(LogLevelChoice, EmptyTriggerFileGivesTheDefaultEvenWithALevelArgument) {
    writeFile(trigger, "");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "INFORMATION");
    writeFile(trigger, " \n\t");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "INFORMATION");
}

TEST_F(LogLevelChoice, TriggerThatIsNotAsciiCountsAsEmpty) {
    writeFile(trigger, "D\xc3\x89" "BUG");
    EXPECT_EQ(readDebugTriggerText(trigger), "");
}

TEST_F(LogLevelChoice, TriggerFileIsNotReadThroughASymbolicLink) {
    writeFile(folder.file("elsewhere"), "TRACE");
    ASSERT_EQ(::symlink((folder.file("elsewhere")).c_str(), trigger.c_str()), 0);
    EXPECT_EQ(readDebugTriggerText(trigger), "");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=ERROR"}), trigger), "INFORMATION");
}

TEST_F(LogLevelChoice, MissingTriggerFileIsNothing) {
    EXPECT_FALSE(readDebugTriggerText(trigger));
}

}  // namespace
}  // namespace tov
