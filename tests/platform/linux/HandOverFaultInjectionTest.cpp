// Fails, one at a time, each system call of a forced scan that writes, flushes, closes,
// links, renames, creates or removes a report file (with ENOSPC or EIO, through strace's
// fault injection) and checks after each: the stored report and the settings still read,
// the outbox holds only whole pairs, a hand-over that did not happen left an error line,
// nothing stays in /tmp, and a clean forced scan afterwards hands a whole pair over.
// Everything runs as root in a private namespace whose /opt and /tmp are fresh.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <regex>
#include <string>
#include <vector>

#include "common/Paths.h"
#include "support/DaemonLog.h"
#include "support/HandOverInvariants.h"
#include "support/HandOverScenario.h"
#include "support/StraceFaults.h"
#include "support/TestFolder.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

using testing::ChildResult;
using testing::TracedCall;

// The calls a hand-over is made of; openat only counts where it creates a file.
constexpr const char* kFaultedCalls[] = {"write",  "pwrite64", "fsync",   "fdatasync", "rename", "renameat",
                                         "renameat2", "link",  "linkat",  "close",     "mkdir",  "mkdirat",
                                         "unlink", "unlinkat", "rmdir",   "openat"};
// Enough to fail every such call of a scan today, few enough for a bounded run time.
constexpr std::size_t kMaximumFaultRuns = 150;
// Runs stop being started after this long, so that a slow machine still ends the test,
// with a failure that says so, before ctest's limit of 300 s. A run takes from a fifth of
// a second to nearly a second on the same 2-core machine, by how busy its host is.
constexpr std::chrono::seconds kTimeBudget{200};
constexpr std::size_t kMaximumLineShown = 200;

std::string faultedCallSet() {
    std::string set;
    for (const char* name : kFaultedCalls) set += (set.empty() ? "" : ",") + std::string(name);
    return set;
}

// strace -y shows each descriptor with its path; the working folder's is no report file.
std::string withoutWorkingFolder(const std::string& line) {
    static const std::regex workingFolder(R"(AT_FDCWD<[^>]*>)");
    return std::regex_replace(line, workingFolder, "AT_FDCWD");
}

bool touchesReportFiles(const TracedCall& call) {
    const std::string line = withoutWorkingFolder(call.line);
    const auto shows = [&line](const std::string& text) { return line.find(text) != std::string::npos; };
    if (call.name == "openat" && !shows("O_CREAT") && !shows("O_TMPFILE")) return false;
    return shows(Paths::componentFolder() + "/") || shows("\"/tmp/") || shows("</tmp/");
}

// The trace of one forced scan of a prepared installation, as strace -f -y writes it.
std::string traceOfForcedScan() {
    const ChildResult result = testing::runWithTovInNamespace([](int program) {
        if (!testing::prepareInstallation(program) || !testing::renameHost("tov-faulted")) return 2;
        const char* trace = "/tmp/forced-scan.trace";
        testing::runOpenedProgramUnderStrace(program, {"-f", "-y", "-o", trace, "-e", "trace=" + faultedCallSet()},
                                             {"forcefullscan"});
        std::fputs(testing::readFile(trace).c_str(), stdout);
        return 0;
    });
    return result.exitCode == 0 ? result.output : "";
}

// At most limit of calls, evenly spread over the run.
std::vector<TracedCall> spreadOver(const std::vector<TracedCall>& calls, std::size_t limit) {
    if (calls.size() <= limit) return calls;
    std::vector<TracedCall> chosen;
    for (std::size_t index = 0; index < limit; ++index) chosen.push_back(calls[index * calls.size() / limit]);
    return chosen;
}

std::vector<TracedCall> callsToFail(const std::string& trace) {
    const std::vector<TracedCall> calls = testing::tracedCalls(trace);
    if (calls.empty()) return {};
    std::vector<TracedCall> chosen;
    for (const TracedCall& call : calls) {
        // The scan's own thread; later threads count their calls apart.
        if (call.thread == calls.front().thread && touchesReportFiles(call)) chosen.push_back(call);
    }
    return spreadOver(chosen, kMaximumFaultRuns);
}

// A file whose removal failed stays where it is: after a failed removal, an archive may
// be left without its header (the header goes first) and a fresh file without its rename,
// as after a crash. The clean scan that follows must still leave only whole pairs.
testing::OutboxRule ruleAfterFailing(const TracedCall& call) {
    const bool removal = call.name == "unlink" || call.name == "unlinkat" || call.name == "rmdir";
    return removal ? testing::OutboxRule::HeadersHaveArchives : testing::OutboxRule::WholePairsOnly;
}

// What is wrong after a forced scan under strace with options (a changed inventory to
// hand over, and perhaps a failing call), and after a clean forced scan that follows it.
std::vector<std::string> breachesAfterStracedScan(int program, const std::vector<std::string>& options,
                                                  testing::OutboxRule rule) {
    if (!testing::prepareInstallation(program) || !testing::renameHost("tov-faulted")) {
        return {"the installation could not be prepared"};
    }
    const std::uint64_t mark = testing::daemonLogSize();
    std::vector<std::string> breaches;
    const int code = testing::runOpenedProgramUnderStrace(program, options, {"forcefullscan"});
    if (code != 0) breaches.push_back("the faulted scan ended abnormally (" + std::to_string(code) + ")");
    for (const std::string& breach : testing::handOverBreaches(rule)) {
        breaches.push_back(breach);
    }
    const bool handedOver = testing::outboxHoldsReportOfMachine("tov-faulted");
    if (!handedOver && testing::errorLinesIn(testing::daemonLogSince(mark)).empty()) {
        breaches.push_back("no report was handed over and no error line says why");
    }
    for (const std::string& breach : testing::cleanScanBreaches(program)) breaches.push_back(breach);
    return breaches;
}

std::string describe(const TracedCall& call, const std::string& errorName) {
    return call.name + " #" + std::to_string(call.occurrence) + " failing with " + errorName + "  [" +
           call.line.substr(0, kMaximumLineShown) + "]";
}

class HandOverFaultInjection : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::privateOptAndTmpAvailable()) GTEST_SKIP() << "needs root, /opt and mount namespaces";
        if (!testing::straceCanInjectFaults()) GTEST_SKIP() << "needs strace, allowed to trace here";
        if (!testing::privateHostNameAvailable()) GTEST_SKIP() << "needs UTS namespaces";
    }
};

// The control: the same steps without a fault break nothing.
TEST_F(HandOverFaultInjection, WithoutAFaultAStracedForcedScanHandsItsReportOver) {
    const ChildResult result = testing::runWithTovInNamespace([](int program) {
        testing::printBreaches(
            breachesAfterStracedScan(program, {"-f", "-o", "/dev/null"}, testing::OutboxRule::WholePairsOnly));
        return 0;
    });
    ASSERT_EQ(result.exitCode, 0) << "the private namespace could not be entered";
    const std::vector<std::string> breaches = testing::breachesInOutput(result.output);
    EXPECT_TRUE(breaches.empty()) << result.output;
}

TEST_F(HandOverFaultInjection, EveryFailedCallOfAForcedScanKeepsTheReportsWholeAndIsLogged) {
    const std::vector<TracedCall> calls = callsToFail(traceOfForcedScan());
    ASSERT_GE(calls.size(), 10u) << "the trace of a forced scan shows too few calls on report files";
    const auto start = std::chrono::steady_clock::now();
    std::size_t runs = 0;
    std::size_t brokenRuns = 0;
    std::string failures;
    for (const TracedCall& call : calls) {
        if (std::chrono::steady_clock::now() - start > kTimeBudget) break;
        const std::string errorName = runs % 2 == 0 ? "ENOSPC" : "EIO";
        ++runs;
        const ChildResult result = testing::runWithTovInNamespace([&](int program) {
            const std::vector<std::string> options =
                testing::faultInjectionOptions(call.name, call.occurrence, errorName);
            testing::printBreaches(breachesAfterStracedScan(program, options, ruleAfterFailing(call)));
            return 0;
        });
        ASSERT_EQ(result.exitCode, 0) << "the private namespace could not be entered";
        const std::vector<std::string> breaches = testing::breachesInOutput(result.output);
        if (breaches.empty()) continue;
        ++brokenRuns;
        failures += describe(call, errorName) + "\n";
        for (const std::string& breach : breaches) failures += "    " + breach + "\n";
    }
    std::printf("%zu of %zu chosen calls failed in turn; %zu runs broke an invariant\n", runs, calls.size(),
                brokenRuns);
    EXPECT_EQ(runs, calls.size()) << "the time budget ran out";
    EXPECT_EQ(brokenRuns, 0u) << failures;
}

}  // namespace
}  // namespace tov
