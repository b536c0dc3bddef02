#pragma once

// A stand-in for the rest of the daemon as the scheduler sees it: it records every call in
// order, answers the memory and installation questions as the test sets them, and runs the
// test's hooks inside the calls (to hold the scan lock, or to look around while terminating).

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "app/QVScanScheduler.h"

namespace tov::testing {

class FakeSchedulerHost : public QVScanScheduler::Host {
public:
    std::atomic<bool> beyondMemory {false};
    std::atomic<bool> installed {true};
    // Run inside the calls of the same name, when set (set them before any tick runs).
    std::function<void()> onInstall;
    std::function<void()> onTerminate;

    bool lazyInstallAsDaemonWithExecutionInterval(double interval, bool runAtLoad) override {
        record("install " + std::to_string(static_cast<int>(interval)) + (runAtLoad ? " atLoad" : ""));
        if (onInstall) onInstall();
        return true;
    }
    bool isBeyondMemoryConsumptionThreshold() override {
        record("memory");
        return beyondMemory;
    }
    bool isInstalledAsDaemon() override {
        record("installed?");
        return installed;
    }
    void spawnNewAppInstance() override { record("spawn"); }
    void terminate() override {
        record("terminate");
        if (onTerminate) onTerminate();
    }

    std::vector<std::string> calls() const {
        std::lock_guard<std::mutex> guard(lock_);
        return calls_;
    }
    int count(const std::string& call) const {
        std::lock_guard<std::mutex> guard(lock_);
        int found = 0;
        for (const std::string& each : calls_) found += each == call ? 1 : 0;
        return found;
    }
    void clear() {
        std::lock_guard<std::mutex> guard(lock_);
        calls_.clear();
    }

private:
    void record(std::string call) {
        std::lock_guard<std::mutex> guard(lock_);
        calls_.push_back(std::move(call));
    }

    mutable std::mutex lock_;
    std::vector<std::string> calls_;
};

}  // namespace tov::testing
