// tov -s run through the whole entry sequence with every daemon path below a temporary
// root: it prints the summary table and leaves the root exactly as it found it (no log,
// no settings, no report, no outbox), also when it refuses.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "app/QVSAppArgument.h"
#include "app/TovMain.h"
#include "common/Paths.h"
#include "report/QVSReport.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

namespace fs = std::filesystem;

using testing::ChildResult;

const std::string kServerCapture = (fs::path(TOV_TEST_FIXTURES) / "linux" / "server-raid").string();

TEST(SummaryArgument, ShortAndBareFormsInAnyLetterCase) {
    for (const char* form : {"-s", "s", "-S", "S"}) EXPECT_TRUE(QVSAppArgument({form}).isSummaryCall()) << form;
    for (const char* form : {"--s", "-summary", "ss", "-p"}) EXPECT_FALSE(QVSAppArgument({form}).isSummaryCall()) << form;
}

class SummaryMode : public ::testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "the entry sequence refuses to run without root";
        folder.makeFolder("tmp");
        before = entriesBelowRoot();
    }

    ChildResult run(std::vector<std::string> arguments) {
        return testing::runInChild([&] {
            Paths::setRootForTesting(folder.path());
            QVSReport::resetForTesting();
            std::vector<char*> argv{const_cast<char*>("tov")};
            for (std::string& argument : arguments) argv.push_back(argument.data());
            return runTov(static_cast<int>(argv.size()), argv.data());
        });
    }

    std::set<std::string> entriesBelowRoot() const {
        std::set<std::string> entries;
        for (const auto& entry : fs::recursive_directory_iterator(folder.path())) entries.insert(entry.path().string());
        return entries;
    }

    std::set<std::string> created() const {
        std::set<std::string> added;
        for (const std::string& entry : entriesBelowRoot()) {
            if (!before.count(entry)) added.insert(entry);
        }
        return added;
    }

    testing::TestFolder folder;
    std::set<std::string> before;
};

TEST_F(SummaryMode, CaptureGivesItsCheckedInSummaryAndCreatesNothing) {
    const ChildResult result = run({"-s", "-replay", kServerCapture});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, testing::readFile(kServerCapture + "/summary.txt"));
    EXPECT_EQ(created(), std::set<std::string>{});
}

TEST_F(SummaryMode, BareSwitchAndJoinedFolderGiveTheSameSummary) {
    const ChildResult result = run({"S", "-replay=" + kServerCapture});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, testing::readFile(kServerCapture + "/summary.txt"));
    EXPECT_EQ(created(), std::set<std::string>{});
}

// The document of the same capture writes the log, which the summary does not.
TEST_F(SummaryMode, PrintingTheDocumentInsteadWritesTheLog) {
    ASSERT_EQ(run({"-p", "-replay", kServerCapture}).exitCode, 0);
    EXPECT_TRUE(created().count(folder.path() + "/opt/Quorvel/KELD/logs/tov.log"));
}

TEST_F(SummaryMode, ThisMachineIsSummarisedWithoutCreatingAnything) {
    const ChildResult result = run({"-s"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output.rfind("Category", 0), 0u) << result.output;
    EXPECT_NE(result.output.find("\nprocessor "), std::string::npos) << result.output;
    EXPECT_EQ(created(), std::set<std::string>{});
}

TEST_F(SummaryMode, RefusalsPrintNothingAndCreateNothing) {
    const std::string capture = folder.path() + "/new-capture";
    const std::vector<std::vector<std::string>> refused{
        {"-s", "-replay", folder.path() + "/no-such-capture"},
        {"-s", "-capture", capture},
        {"-s", "-p"},
    };
    for (const auto& arguments : refused) {
        const ChildResult result = run(arguments);
        EXPECT_EQ(result.exitCode, 1) << arguments.back();
        EXPECT_EQ(result.output, "") << arguments.back();
    }
    EXPECT_EQ(created(), std::set<std::string>{});
}

}  // namespace
}  // namespace tov
