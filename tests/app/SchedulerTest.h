#pragma once

// A daemon on a temporary root as the scheduler sees it: a policy file the test writes, a
// fake rest of the daemon, one clock the test moves for the scheduler and the report
// manager alike, the real report manager fed by fake discoverers, and an outbox that the
// test collects after every tick as the collecting agent would.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/FakeSchedulerHost.h"
#include "app/QVScanScheduler.h"
#include "report/FakeDiscoverers.h"
#include "report/QVSReport.h"
#include "support/TemporaryRootTest.h"

namespace tov::testing {

struct CollectedReport {
    // Seconds since 1970 of the tick that handed the report over.
    double time = 0;
    // "full" or "delta", from the header.
    std::string scanType;
    std::string document;
};

class SchedulerTest : public TemporaryRootTest {
protected:
    static constexpr double kStart = 1706692500;  // 2024-01-31 09:15:00 UTC

    void SetUp() override;
    void TearDown() override;

    void writePolicy(const std::string& json);
    void removePolicy();

    void advance(double seconds);
    // Seconds since 1970.
    double now() const;
    double referenceDateNow() const { return now() - QVScanScheduler::kReferenceDateOffsetSeconds; }

    // One pass of the scan thread: the clock moves one tick on, the count grows by 5, the
    // step runs, and the outbox is collected.
    void tick();
    // One step with the tick count at count, the clock where it is; then the outbox is collected.
    void stepAt(std::uint64_t count);
    // Takes what reached the outbox into reports.
    void collect();

    // A machine that handed a full report over now: its inventory is stored and its last
    // full scan is now. The report is collected and forgotten.
    void seedHandedOverFullReport();

    // Replaces the display by one of another manufacturer: a change every full scan sees.
    void changeDisplay(const std::string& manufacturer);

    int logCount(const std::string& text) const;
    // The first log line holding text, or "".
    std::string logLineWith(const std::string& text) const;
    QVSReport& manager() { return QVSReport::sharedManager(); }

    FakeSchedulerHost host;
    std::shared_ptr<FakeDiscovererFactory> factory = std::make_shared<FakeDiscovererFactory>();
    std::shared_ptr<std::atomic<double>> time = std::make_shared<std::atomic<double>>(kStart);
    QVScanScheduler scheduler {host, [time = time] {
                                   return std::chrono::system_clock::time_point(
                                       std::chrono::duration_cast<std::chrono::system_clock::duration>(
                                           std::chrono::duration<double>(time->load())));
                               }};
    std::vector<CollectedReport> reports;
};

}  // namespace tov::testing
