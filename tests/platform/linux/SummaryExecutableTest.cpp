// The built tov -s, run as a user would in a private namespace whose /opt and /tmp are
// fresh: it prints the summary table of a recorded machine exactly as checked in, or of
// this machine, and /opt and /tmp stay empty.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TestFolder.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

namespace fs = std::filesystem;

// A machine whose time zone is UTC, so that its time-zone text is the same on every date.
const std::string kServerCapture = (fs::path(TOV_TEST_FIXTURES) / "linux" / "server-raid").string();

constexpr int kSomethingWasCreated = 100;

bool isEmptyFolder(const char* path) {
    std::error_code error;
    return fs::is_empty(path, error) && !error;
}

// Runs tov with the arguments in the namespace, its output going to the test; answers its
// exit code, or kSomethingWasCreated when it exited 0 but left anything in /opt or /tmp.
testing::ChildResult runLeavingNothing(const std::vector<std::string>& arguments) {
    return testing::runWithTovInNamespace([&](int program) {
        const int code = testing::runOpenedProgram(program, arguments);
        if (code != 0) return code;
        return isEmptyFolder("/opt") && isEmptyFolder("/tmp") ? 0 : kSomethingWasCreated;
    });
}

class SummaryExecutable : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::privateOptAndTmpAvailable()) GTEST_SKIP() << "needs root, /opt and mount namespaces";
    }
};

TEST_F(SummaryExecutable, RecordedMachineGivesItsCheckedInSummaryAndLeavesNothing) {
    // Read through a descriptor opened before the namespace, whose empty /tmp would hide a
    // checkout under /tmp.
    const int capture = ::open(kServerCapture.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(capture, 0);
    const std::string path = "/proc/self/fd/" + std::to_string(capture) + "/.";
    const testing::ChildResult result = runLeavingNothing({"-s", "-replay", path});
    ::close(capture);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, testing::readFile(kServerCapture + "/summary.txt"));
}

TEST_F(SummaryExecutable, ThisMachineIsSummarisedAndNothingIsLeft) {
    const testing::ChildResult result = runLeavingNothing({"s"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output.rfind("Category", 0), 0u) << result.output;
}

// The same check holds the document mode to what it does: it writes its log.
TEST_F(SummaryExecutable, PrintingTheDocumentLeavesItsLog) {
    EXPECT_EQ(runLeavingNothing({"-p"}).exitCode, kSomethingWasCreated);
}

}  // namespace
}  // namespace tov
