#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <string>
#include <thread>

#include "common/QVSCommand.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using namespace std::chrono_literals;
using RunEnd = QVSCommand::RunEnd;

TEST(QVSCommandLimits, AToolWithinItsLimitsGivesItsWholeOutput) {
    RunEnd end = RunEnd::NotStarted;
    EXPECT_EQ(QVSCommand::runProgramWithLimits("/bin/echo", {"a b", "c"}, 10s, 1024, &end), "a b c\n");
    EXPECT_EQ(end, RunEnd::Finished);
}

TEST(QVSCommandLimits, AHungToolIsEndedWithEverythingItStartedAndGivesNothing) {
    testing::TestFolder folder;
    const std::string marker = folder.file("grandchild.pid");
    RunEnd end = RunEnd::Finished;
    const auto started = std::chrono::steady_clock::now();
    // The shell starts a sleeping grandchild that keeps the output pipe open.
    const auto output = QVSCommand::runProgramWithLimits(
        "/bin/sh", {"-c", "sleep 30 & echo $! > " + marker + "; echo partial; wait"}, 500ms, 1024, &end);
    EXPECT_LT(std::chrono::steady_clock::now() - started, 10s);
    EXPECT_FALSE(output.has_value());
    EXPECT_EQ(end, RunEnd::TimedOut);
    const pid_t grandchild = std::stoi(testing::readFile(marker));
    // The grandchild was killed with its group; a zombie left for init is gone shortly.
    for (int attempt = 0; attempt < 100 && kill(grandchild, 0) == 0; ++attempt) {
        std::this_thread::sleep_for(20ms);
    }
    EXPECT_NE(kill(grandchild, 0), 0);
}

TEST(QVSCommandLimits, AToolPrintingTooMuchIsEndedAndGivesNothing) {
    RunEnd end = RunEnd::Finished;
    EXPECT_FALSE(QVSCommand::runProgramWithLimits("/bin/cat", {"/dev/zero"}, 10s, 100000, &end).has_value());
    EXPECT_EQ(end, RunEnd::OutputTooLarge);
}

TEST(QVSCommandLimits, AMissingProgramIsNotStarted) {
    RunEnd end = RunEnd::Finished;
    EXPECT_FALSE(QVSCommand::runProgramWithLimits("/nonexistent/tool", {}, 1s, 10, &end).has_value());
    EXPECT_EQ(end, RunEnd::NotStarted);
}

}  // namespace
}  // namespace tov
