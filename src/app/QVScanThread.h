#pragma once

// The scan thread: every 5 seconds it adds 5 to the scheduler's tick count and runs one
// scheduling step, until it is cancelled. Cancelling is noticed after the current sleep
// (which it cuts short) and never stops a step half way.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "app/QVScanScheduler.h"

namespace tov {

class QVScanThread {
public:
    static constexpr std::chrono::seconds kTick {5};

    // What waits between two steps in place of the 5-second sleep (tests inject one).
    using TickSleep = std::function<void()>;

    explicit QVScanThread(QVScanScheduler& scheduler);
    QVScanThread(QVScanScheduler& scheduler, TickSleep tickSleep);
    // Cancels and waits for the thread to end.
    ~QVScanThread();
    QVScanThread(const QVScanThread&) = delete;
    QVScanThread& operator=(const QVScanThread&) = delete;

    // Starts the thread (once); false, with "new reportSavingThread error nil" at critical
    // level, when it could not be started.
    bool start();
    // Asks the thread to end after its current sleep; does not wait.
    void cancel();
    bool isCancelled() const;

    // The thread's body: ticks until cancelled. sleep waits one tick unless cancelled.
    void scanThreadMain();

private:
    void sleepOneTick();

    QVScanScheduler& scheduler_;
    TickSleep tickSleep_;
    mutable std::mutex lock_;
    std::condition_variable wake_;
    bool cancelled_ = false;
    std::thread thread_;
};

}  // namespace tov
