#include "app/LogLevelChoice.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::TestFolder;
using testing::writeFile;

constexpr uid_t kNobody = 65534;

class LogLevelChoice : public ::testing::Test {
protected:
    TestFolder folder;
    const std::string trigger = folder.file("debug_tov");
};

// Tests whose trigger file must count: it has to be root's own.
class RootTriggerChoice : public LogLevelChoice {
protected:
    void SetUp() override {
        if (!testing::runningAsRoot()) GTEST_SKIP() << "a trigger file counts only when root owns it";
    }
};

TEST_F(LogLevelChoice, DefaultWithoutArgumentOrTriggerFile) {
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({}), trigger), "INFORMATION");
}

TEST_F(LogLevelChoice, CommandLineLevelWithoutTriggerFile) {
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll", "DEBUG"}), trigger), "DEBUG");
}

TEST_F(RootTriggerChoice, TriggerFileReplacesTheCommandLineLevel) {
    writeFile(trigger, "  trace\n");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "trace");
}

TEST_F(RootTriggerChoice, EmptyTriggerFileGivesTheDefaultEvenWithALevelArgument) {
    writeFile(trigger, "");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "INFORMATION");
    writeFile(trigger, " \n\t");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "INFORMATION");
}

TEST_F(RootTriggerChoice, TriggerThatIsNotAsciiCountsAsEmpty) {
    writeFile(trigger, "D\xc3\x89" "BUG");
    EXPECT_EQ(readDebugTriggerText(trigger), "");
}

TEST_F(LogLevelChoice, ASymbolicLinkIsAsIfThereWereNoTrigger) {
    writeFile(folder.file("elsewhere"), "TRACE");
    ASSERT_EQ(::symlink((folder.file("elsewhere")).c_str(), trigger.c_str()), 0);
    EXPECT_FALSE(readDebugTriggerText(trigger));
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=ERROR"}), trigger), "ERROR");
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({}), trigger), "INFORMATION");
}

TEST_F(RootTriggerChoice, AnotherUsersFileIsAsIfThereWereNoTrigger) {
    writeFile(trigger, "CRITICAL");
    ASSERT_EQ(::chown(trigger.c_str(), kNobody, kNobody), 0);
    EXPECT_FALSE(readDebugTriggerText(trigger));
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "DEBUG");
    ASSERT_EQ(::chown(trigger.c_str(), 0, kNobody), 0);
    EXPECT_EQ(readDebugTriggerText(trigger), "CRITICAL");
}

TEST_F(LogLevelChoice, AFolderIsAsIfThereWereNoTrigger) {
    folder.makeFolder("debug_tov");
    EXPECT_FALSE(readDebugTriggerText(trigger));
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "DEBUG");
}

// A FIFO without a writer must not block the start either.
TEST_F(LogLevelChoice, AFifoIsAsIfThereWereNoTrigger) {
    ASSERT_EQ(::mkfifo(trigger.c_str(), 0666), 0);
    EXPECT_FALSE(readDebugTriggerText(trigger));
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({"-ll=DEBUG"}), trigger), "DEBUG");
}

// An ordinary user creates the trigger in a folder anyone may write, as in /tmp.
TEST_F(RootTriggerChoice, AFileMadeByAnOrdinaryUserDoesNotCount) {
    const std::string shared = folder.makeFolder("shared");
    ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    const std::string planted = shared + "/debug_tov";
    const testing::ChildResult result = testing::runInChild([&] {
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return 99;
        writeFile(planted, "CRITICAL\n");
        return 0;
    });
    ASSERT_EQ(result.exitCode, 0);
    ASSERT_EQ(testing::lstatOf(planted).st_uid, kNobody);
    EXPECT_FALSE(readDebugTriggerText(planted));
    EXPECT_EQ(chooseLogLevel(QVSAppArgument({}), planted), "INFORMATION");
}

TEST_F(LogLevelChoice, MissingTriggerFileIsNothing) {
    EXPECT_FALSE(readDebugTriggerText(trigger));
}

}  // namespace
}  // namespace tov
