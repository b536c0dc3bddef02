#pragma once

// The daemon's scheduler: on every tick it decides, from the policy, the settings, its
// flags and the tick count, whether to do nothing, end the daemon for its memory, run a
// forced full scan, a delta scan, or the cheap change checks whose findings make one delta
// report. The scanning itself is the report manager's.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>

#include "app/PendingMediaFlags.h"
#include "model/Value.h"

namespace tov {

class QVScanScheduler : public PendingMediaFlags {
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    static constexpr double kDeltaScanIntervalSeconds = 7200;
    static constexpr double kShortestFullScanIntervalSeconds = 3600;
    static constexpr std::uint64_t kIpCheckSeconds = 300;
    static constexpr std::uint64_t kSystemCheckSeconds = 60;
    // Seconds from 1970-01-01 to 2001-01-01, the reference date of the delta-scan clock.
    static constexpr double kReferenceDateOffsetSeconds = 978307200;

    // What the scheduler asks of the rest of the daemon on every tick.
    class Host {
    public:
        virtual ~Host() = default;
        virtual bool lazyInstallAsDaemonWithExecutionInterval(double interval, bool runAtLoad) = 0;
        virtual bool isBeyondMemoryConsumptionThreshold() = 0;
        virtual bool isInstalledAsDaemon() = 0;
        // Starts the new instance that takes over (with the current memory threshold).
        virtual void spawnNewAppInstance() = 0;
        // Asks the application to terminate (from any thread).
        virtual void terminate() = 0;
    };

    explicit QVScanScheduler(Host& host, Clock clock = std::chrono::system_clock::now);

    // What start-up sets: the start-up scan is due, the next delta scan two hours away.
    void startup();
    // One tick; see the class comment. Skipped when another tick holds the lock.
    void performScanTimerLogic();

    // The tick count (seconds of ticks, in steps of 5) that the checks are spread over.
    void setTimerSecondsCount(std::uint64_t seconds);
    std::uint64_t timerSecondsCount() const;

    // Flags set from the main thread's events.
    void setPolicyIsChanged(bool changed);
    bool policyIsChanged() const;
    void setNeedStartupScan(bool needed);
    bool needStartupScan() const;
    void setPendingMountNotification(bool pending) override;
    bool pendingMountNotification() const override;
    void setPendingUnmountNotification(bool pending) override;
    bool pendingUnmountNotification() const override;
    // Seconds since 2001-01-01 UTC.
    double nextDeltaScanTime() const;

private:
    // Steps after the memory guard, all under the lock.
    void decideOnScan();
    // The forced full scans of a changed policy or an elapsed full-scan interval.
    bool performForcedScanIfDue();
    void performStartupScan();
    void performIntervalDeltaScan();
    // The cheap checks of this tick, reported together as one delta report.
    void performEventChecks();
    bool fullScanIntervalElapsed() const;
    void addEntries(Dictionary& collected, const DictionaryRef& changes, const char* detectedLine);

    double now() const;
    double referenceDateNow() const;

    Host& host_;
    Clock clock_;
    std::mutex scanLock_;
    std::atomic<std::uint64_t> timerSecondsCount_ {0};
    std::atomic<bool> policyIsChanged_ {false};
    std::atomic<bool> needStartupScan_ {false};
    std::atomic<bool> pendingMountNotification_ {false};
    std::atomic<bool> pendingUnmountNotification_ {false};
    std::atomic<double> nextDeltaScanTime_ {0};
};

}  // namespace tov
