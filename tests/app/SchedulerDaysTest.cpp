// Three days of a new installation, tick by tick, on a clock the test moves: the reports
// that reach the outbox, in order, as the machine's facts change at known times.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/SchedulerTest.h"

namespace tov {
namespace {

using testing::SchedulerTest;

constexpr std::uint64_t kTicks = 3 * 24 * 3600 / 5;
constexpr double kHour = 3600;

struct Expected {
    double time;
    std::string scanType;
    // A text the document holds.
    std::string holds;
};

std::string vendor(int number) { return "Vendor " + std::to_string(number); }

class SchedulerDaysTest : public SchedulerTest {};

TEST_F(SchedulerDaysTest, ThreeDaysOfTicksMakeFullReportsByTheIntervalAndDeltaReportsInBetween) {
    writePolicy(R"({"FullScanIntervalHours": 24, "EventDrivenScan": true})");
    scheduler.startup();
    for (std::uint64_t tick = 1; tick <= kTicks; ++tick) {
        const double elapsed = static_cast<double>(tick) * 5;
        // The display changes half way between two interval delta scans.
        if (static_cast<std::uint64_t>(elapsed + kHour) % 7200 == 0) {
            changeDisplay(vendor(static_cast<int>((elapsed + kHour) / 7200)));
        }
        if (tick == 6001) factory->section("operatingSystems").set("username", "bob");
        this->tick();
        ASSERT_EQ(scheduler.timerSecondsCount(), tick * 5);
    }

    std::vector<Expected> expected;
    // A new installation's first scan is only stored; the next tick's full report goes out,
    // and a full scan follows every 24 hours of it.
    expected.push_back({kStart + 10, "full", "Color LCD"});
    expected.push_back({kStart + 10 + 24 * kHour, "full", vendor(12)});
    expected.push_back({kStart + 10 + 48 * kHour, "full", vendor(24)});
    // Each interval delta scan is due 7200 s after the tick that made the previous one, so
    // with 5 s ticks they fall 7205 s apart. The scans just after a full scan find nothing new.
    for (int scan = 1; kStart + 7205.0 * scan <= now(); ++scan) {
        if (scan == 12 || scan == 24) continue;
        expected.push_back({kStart + 7205.0 * scan, "delta", vendor(scan)});
    }
    // The user change, found by the first one-minute check after it.
    expected.push_back({kStart + 30060, "delta", "bob"});
    std::sort(expected.begin(), expected.end(),
              [](const Expected& left, const Expected& right) { return left.time < right.time; });

    ASSERT_EQ(reports.size(), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index) {
        SCOPED_TRACE("report " + std::to_string(index));
        EXPECT_DOUBLE_EQ(reports[index].time - kStart, expected[index].time - kStart);
        EXPECT_EQ(reports[index].scanType, expected[index].scanType);
        EXPECT_NE(reports[index].document.find(expected[index].holds), std::string::npos);
    }
    EXPECT_EQ(logCount("Force full scan, FullScanIntervalHours..."), 4);
    EXPECT_EQ(logCount("Interval delta scan..."), 35);
    EXPECT_EQ(logCount("Username,DeviceName and SerialNumber change detected."), 1);
    EXPECT_EQ(logCount("Will detect IPs changes shortly..."), static_cast<int>(kTicks / 60));
    EXPECT_FALSE(logHas("Startup"));
    EXPECT_FALSE(logHas("Scan in progress"));
}

}  // namespace
}  // namespace tov
