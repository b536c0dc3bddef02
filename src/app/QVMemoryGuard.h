#pragma once

// The daemon's memory ceiling: its own resident size measured against a threshold, and the
// hand-off to a fresh instance of itself when launchd or systemd will not start one.

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace tov {

class QVMemoryGuard {
public:
    static constexpr std::int64_t kDefaultMemoryThreshold = 0x6400000;  // 100 MiB
    static constexpr std::int64_t kMaximumMemoryThreshold = 0x40000000;  // 1 GiB
    // Resident bytes of this process.
    using Measure = std::function<double()>;
    // Waits the given number of seconds.
    using Sleep = std::function<void(double seconds)>;

    // The measure defaults to QVAppDaemonUtil::memoryConsumptionOfCurrentProcess, the sleep
    // to a plain sleep of the calling thread.
    QVMemoryGuard();
    explicit QVMemoryGuard(Measure measure);
    QVMemoryGuard(Measure measure, Sleep sleep);

    void setMemoryThreshold(std::int64_t threshold);
    std::int64_t memoryThreshold() const;
    // Set once before the run loop starts, read later by the scheduler's thread.
    void setExecutablePath(const std::string& path);
    const std::string& executablePath() const;

    bool isBeyondMemoryConsumptionThreshold();
    // Starts executablePath with "-re" and "-mm=<threshold>", detached, then waits 2 s.
    void spawnNewAppInstanceWithMemoryThreshold(std::int64_t threshold);

private:
    Measure measure_;
    Sleep sleep_;
    std::atomic<std::int64_t> memoryThreshold_ {kDefaultMemoryThreshold};
    std::string executablePath_;
};

}  // namespace tov
