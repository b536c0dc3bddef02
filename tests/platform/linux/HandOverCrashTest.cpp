// Kills forced scans with SIGKILL at random instants spread over their run time, as a
// crash or a power cut would, and checks after each: the stored report and the settings
// still read, every header in the outbox has a whole archive, and a clean forced scan
// afterwards hands a whole pair over and leaves only whole pairs. Everything runs as root
// in a private namespace whose /opt and /tmp are fresh.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "support/HandOverInvariants.h"
#include "support/HandOverScenario.h"
#include "support/KilledRun.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

using std::chrono::microseconds;
using testing::ChildResult;

constexpr int kCrashes = 200;
// A run that ended before its instant (a loaded machine oversleeps) is not a crash; it is
// checked all the same, and another instant is drawn, up to this many runs.
constexpr int kMaximumRuns = 2 * kCrashes;
constexpr int kTimedRuns = 5;
// Runs stop being started after this long, so that a slow machine still ends the test
// before ctest's limit of 300 s. A sanitized run takes from a tenth of a second to half a
// second, by how busy the host is.
constexpr std::chrono::seconds kTimeBudget{200};

// The shortest wall time of a forced scan that hands a report over, in a prepared
// installation (the least disturbed by other work on the machine); zero when it could
// not be measured.
microseconds forcedScanTime() {
    const ChildResult result = testing::runWithTovInNamespace([](int program) {
        if (!testing::prepareInstallation(program)) return 2;
        std::vector<long long> times;
        for (int run = 0; run < kTimedRuns; ++run) {
            if (!testing::renameHost("tov-timed-" + std::to_string(run))) return 3;
            times.push_back(testing::timeOfOpenedProgram(program, {"forcefullscan"}).count());
        }
        std::printf("%lld\n", *std::min_element(times.begin(), times.end()));
        return 0;
    });
    if (result.exitCode != 0) return microseconds(0);
    return microseconds(std::max(0LL, std::stoll(result.output)));
}

// gtest's own seed when one is given, else a fresh one in gtest's range (1 to 99999), so
// that a failing series can be repeated with --gtest_random_seed.
unsigned crashSeed() {
    const int flag = GTEST_FLAG_GET(random_seed);
    return flag != 0 ? static_cast<unsigned>(flag) : std::random_device()() % 99999 + 1;
}

struct CrashOutcome {
    bool killed = false;
    std::vector<std::string> breaches;
};

CrashOutcome crashAfter(microseconds delay) {
    const ChildResult result = testing::runWithTovInNamespace([delay](int program) {
        if (!testing::prepareInstallation(program) || !testing::renameHost("tov-crashed")) return 2;
        const bool killed = testing::runOpenedProgramKilledAfter(program, {"forcefullscan"}, delay);
        std::printf("%s\n", killed ? "killed" : "ended");
        testing::printBreaches(testing::handOverBreaches(testing::OutboxRule::HeadersHaveArchives));
        testing::printBreaches(testing::cleanScanBreaches(program));
        return 0;
    });
    CrashOutcome outcome;
    if (result.exitCode != 0) {
        outcome.breaches.push_back("the private namespace or the installation could not be prepared");
        return outcome;
    }
    outcome.killed = result.output.starts_with("killed\n");
    outcome.breaches = testing::breachesInOutput(result.output);
    return outcome;
}

class HandOverCrash : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::privateOptAndTmpAvailable()) GTEST_SKIP() << "needs root, /opt and mount namespaces";
    }
};

TEST_F(HandOverCrash, AForcedScanKilledAtAnyInstantLosesNothingAndBreaksNoPair) {
    const microseconds runTime = forcedScanTime();
    ASSERT_GT(runTime.count(), 0) << "a forced scan could not be timed";
    const unsigned seed = crashSeed();
    std::mt19937 random(seed);
    // Half the instants anywhere in the run, half in its last third, where the report is
    // stored and handed over after the machine has been read.
    std::uniform_int_distribution<long long> anywhere(0, runTime.count());
    std::uniform_int_distribution<long long> lastThird(runTime.count() * 2 / 3, runTime.count());
    const auto start = std::chrono::steady_clock::now();
    int runs = 0;
    int killed = 0;
    int brokenRuns = 0;
    std::string failures;
    const auto withinBudget = [&start] { return std::chrono::steady_clock::now() - start < kTimeBudget; };
    for (; killed < kCrashes && runs < kMaximumRuns && withinBudget(); ++runs) {
        const microseconds delay(runs % 2 == 0 ? anywhere(random) : lastThird(random));
        const CrashOutcome outcome = crashAfter(delay);
        if (outcome.killed) ++killed;
        if (outcome.breaches.empty()) continue;
        ++brokenRuns;
        failures += "killed after " + std::to_string(delay.count()) + " us" +
                    (outcome.killed ? "" : " (it had ended)") + "\n";
        for (const std::string& breach : outcome.breaches) failures += "    " + breach + "\n";
    }
    const std::string figures = std::to_string(runs) + " runs with a scan time of " +
                                std::to_string(runTime.count()) + " us, " + std::to_string(killed) +
                                " killed before their end; seed " + std::to_string(seed) +
                                " (repeat with --gtest_random_seed=" + std::to_string(seed) + ")";
    std::printf("%s\n", figures.c_str());
    // Most of the crashes must happen, or the test would only watch whole scans.
    EXPECT_GE(killed, kCrashes / 2) << figures;
    EXPECT_EQ(brokenRuns, 0) << figures << "\n" << failures;
}

}  // namespace
}  // namespace tov
