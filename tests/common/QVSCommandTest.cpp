#include "common/QVSCommand.h"

#include <fcntl.h>
#include <signal.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "support/TestFolder.h"

namespace tov {
namespace {

// The daemon blocks SIGTERM in all its threads; the tools it runs must still end on it.
// The check runs in a thread of its own so the test's mask stays as it was.
TEST(QVSCommandRun, ChildrenStartWithNoSignalBlocked) {
    // posix_spawn's signal mask works alike everywhere; only Linux shows a process's mask as text.
    if (::access("/proc/self/status", R_OK) != 0) GTEST_SKIP() << "reads the child's signal mask from Linux's /proc";
    std::string withRun;
    std::string withLimits;
    std::thread caller([&] {
        sigset_t terminate;
        sigemptyset(&terminate);
        sigaddset(&terminate, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &terminate, nullptr);
        withRun = QVSCommand::runProgram("/bin/grep", {"SigBlk", "/proc/self/status"}).value_or("");
        withLimits = QVSCommand::runProgramWithLimits("/bin/grep", {"SigBlk", "/proc/self/status"},
                                                      std::chrono::seconds(30), 4096)
                         .value_or("");
    });
    caller.join();
    EXPECT_EQ(withRun, "SigBlk:\t0000000000000000\n");
    EXPECT_EQ(withLimits, "SigBlk:\t0000000000000000\n");
}

TEST(QVSCommandRun, JoinsArgumentsWithSingleBlanks) {
    EXPECT_EQ(QVSCommand::run("echo", {"a", "b c"}), "a b c\n");
}

TEST(QVSCommandRun, CommandWithoutArgumentsRunsAsItStands) {
    EXPECT_EQ(QVSCommand::run("echo one   two"), "one two\n");
    EXPECT_EQ(QVSCommand::run("printf '%s-%s' 'x y' z"), "x y-z");
}

TEST(QVSCommandRun, CommandThatPrintsNothingGivesEmptyText) {
    const std::optional<std::string> output = QVSCommand::run("true");
    ASSERT_TRUE(output.has_value());
    EXPECT_EQ(*output, "");
}

TEST(QVSCommandRun, OutputWithoutFinalLineBreakKeepsNone) {
    EXPECT_EQ(QVSCommand::run("printf", {"abc"}), "abc");
    EXPECT_EQ(QVSCommand::run("printf", {"'one\\ntwo'"}), "one\ntwo");
}

TEST(QVSCommandRun, LinesLongerThanTheLineBufferComeBackExactly) {
    const std::string first(3000, 'x');
    const std::string second(1023, 'y');
    const std::string third(1024, 'z');
    EXPECT_EQ(QVSCommand::run("printf", {"'%s\\n%s\\n%s'", first, second, third}),
              first + "\n" + second + "\n" + third);
}

TEST(QVSCommandRun, OutputLargerThanAPipeBufferIsCollectedWhole) {
    const std::optional<std::string> output = QVSCommand::run("head -c 300000 /dev/zero | tr '\\0' z");
    ASSERT_TRUE(output.has_value());
    EXPECT_EQ(*output, std::string(300000, 'z'));
}

TEST(QVSCommandRun, ZeroBytesInTheOutputAreKept) {
    EXPECT_EQ(QVSCommand::run("printf 'a\\000b\\000'"), std::string("a\0b\0", 4));
}

TEST(QVSCommandRun, PipeInTheArgumentsTakesEffect) {
    EXPECT_EQ(QVSCommand::run("echo", {"abc", "|", "tr", "a-z", "A-Z"}), "ABC\n");
    EXPECT_EQ(QVSCommand::run("echo abc | tr a-z A-Z"), "ABC\n");
}

TEST(QVSCommandRun, RedirectionInTheLineTakesEffect) {
    testing::TestFolder folder;
    const std::string target = folder.file("out.txt");
    EXPECT_EQ(QVSCommand::run("echo", {"kept", ">", "'" + target + "'"}), "");
    EXPECT_EQ(QVSCommand::run("cat", {"'" + target + "'"}), "kept\n");
}

TEST(QVSCommandRun, StandardErrorIsNotCaptured) {
    EXPECT_EQ(QVSCommand::run("echo out; ls /no/such/path 2>/dev/null"), "out\n");
    EXPECT_EQ(QVSCommand::run("exec 2>/dev/null; echo visible; echo hidden >&2"), "visible\n");
}

TEST(QVSCommandRun, CommandThatIsNotFoundGivesWhatItPrinted) {
    EXPECT_EQ(QVSCommand::run("/no/such/tool 2>/dev/null"), "");
    EXPECT_EQ(QVSCommand::run("echo before; /no/such/tool 2>/dev/null; echo after"), "before\nafter\n");
}

TEST(QVSCommandRun, ExitStatusIsNotExamined) {
    EXPECT_EQ(QVSCommand::run("echo partial; exit 3"), "partial\n");
}

TEST(QVSCommandRun, StandardInputIsEmpty) {
    EXPECT_EQ(QVSCommand::run("cat"), "");
    EXPECT_EQ(QVSCommand::run("wc -c | tr -d ' '"), "0\n");
}

TEST(QVSCommandRunProgram, EachArgumentReachesTheProgramWhole) {
    EXPECT_EQ(QVSCommand::runProgram("/usr/bin/printf", {"%s\n", "a b; echo hacked"}), "a b; echo hacked\n");
    EXPECT_EQ(QVSCommand::runProgram("/usr/bin/printf",
                                     {"[%s]", "$(id)", "`id`", "it's", "*", "a|b", "> /dev/null", "  spaced  "}),
              "[$(id)][`id`][it's][*][a|b][> /dev/null][  spaced  ]");
}

TEST(QVSCommandRunProgram, ArgumentZeroIsTheProgramPath) {
    EXPECT_EQ(QVSCommand::runProgram("/bin/sh", {"-c", "echo \"$0\""}), "/bin/sh\n");
}

TEST(QVSCommandRunProgram, NoArgumentsAndEmptyOutput) {
    const std::optional<std::string> output = QVSCommand::runProgram("/usr/bin/true");
    ASSERT_TRUE(output.has_value());
    EXPECT_EQ(*output, "");
}

TEST(QVSCommandRunProgram, OutputWithoutFinalLineBreakKeepsNone) {
    EXPECT_EQ(QVSCommand::runProgram("/usr/bin/printf", {"no break"}), "no break");
}

TEST(QVSCommandRunProgram, LongOutputComesBackExactly) {
    const std::string line(5000, 'q');
    EXPECT_EQ(QVSCommand::runProgram("/usr/bin/printf", {"%s\n%s", line, line}), line + "\n" + line);
}

TEST(QVSCommandRunProgram, StandardInputIsEmpty) {
    EXPECT_EQ(QVSCommand::runProgram("/bin/cat"), "");
}

TEST(QVSCommandRunProgram, ExitStatusIsNotExamined) {
    EXPECT_EQ(QVSCommand::runProgram("/bin/sh", {"-c", "echo partial; exit 7"}), "partial\n");
}

TEST(QVSCommandRunProgram, ProgramThatCannotBeStartedGivesNothing) {
    testing::TestFolder folder;
    const std::string notExecutable = folder.write("script", "#!/bin/sh\necho run\n");
    chmod(notExecutable.c_str(), 0644);

    EXPECT_EQ(QVSCommand::runProgram("/no/such/program"), std::nullopt);
    EXPECT_EQ(QVSCommand::runProgram(""), std::nullopt);
    EXPECT_EQ(QVSCommand::runProgram(folder.path()), std::nullopt);
    EXPECT_EQ(QVSCommand::runProgram(notExecutable), std::nullopt);
}

TEST(QVSCommandRunProgram, ProgramIsNotSearchedForInPath) {
    EXPECT_EQ(QVSCommand::runProgram("printf", {"x"}), std::nullopt);
}

int openDescriptorCount() {
    int count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1) ++count;
    }
    return count;
}

TEST(QVSCommand, LeavesNoDescriptorOpenBehind) {
    const int before = openDescriptorCount();
    for (int round = 0; round < 20; ++round) {
        QVSCommand::run("echo", {"x"});
        QVSCommand::runProgram("/usr/bin/printf", {"x"});
        QVSCommand::runProgram("/no/such/program");
    }
    EXPECT_EQ(openDescriptorCount(), before);
}

TEST(QVSCommand, SeveralThreadsRunCommandsAtOnce) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 15;
    std::vector<int> mismatches(kThreads, 0);
    std::vector<std::thread> threads;
    for (int index = 0; index < kThreads; ++index) {
        threads.emplace_back([index, &mismatches] {
            for (int round = 0; round < kRounds; ++round) {
                const std::string tag = std::to_string(index) + "-" + std::to_string(round);
                if (QVSCommand::run("echo", {"shell", tag}) != "shell " + tag + "\n") ++mismatches[index];
                if (QVSCommand::runProgram("/usr/bin/printf", {"%s", tag}) != tag) ++mismatches[index];
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (int index = 0; index < kThreads; ++index) EXPECT_EQ(mismatches[index], 0) << "thread " << index;
}

}  // namespace
}  // namespace tov
