#pragma once

// The main thread's event loop. It runs, on the thread that called run(), the callbacks of
// watched descriptors, of timers, of work posted from other threads and of SIGTERM, one at
// a time, until stop().

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace tov {

class RunLoop {
public:
    using Callback = std::function<void()>;
    using TimerId = std::uint64_t;
    using WatchId = std::uint64_t;
    // What makes a watched descriptor's callback run: data to read, or an exceptional
    // condition (a changed mount table).
    enum class Readiness { Readable, Priority };

    // The platform's loop; null when it could not be set up (logged).
    static std::unique_ptr<RunLoop> create();
    // Keeps SIGTERM from being delivered the usual way in this thread and every thread it
    // starts afterwards, so that only a loop's termination handler sees it. Called by the
    // main thread before any other thread exists.
    static void blockTerminationSignal();

    virtual ~RunLoop() = default;

    // Runs until stop() is called; false when it could not run at all (logged).
    virtual bool run() = 0;
    // From any thread: run() returns once the callback running now (if any) has returned.
    virtual void stop() = 0;
    // From any thread: runs callback on the loop's thread, in the order of posting.
    virtual void post(Callback callback) = 0;
    // Loop thread: runs callback once, delay from now; cancelTimer before then prevents it.
    virtual TimerId startTimer(std::chrono::milliseconds delay, Callback callback) = 0;
    virtual void cancelTimer(TimerId id) = 0;
    // Loop thread: runs callback whenever the descriptor is ready; the descriptor stays
    // the caller's and must be unwatched before it is closed.
    virtual WatchId watchDescriptor(int descriptor, Readiness readiness, Callback callback) = 0;
    virtual void unwatchDescriptor(WatchId id) = 0;
    // Loop thread: callback runs on the loop's thread when the process receives SIGTERM
    // (blocked beforehand with blockTerminationSignal).
    virtual void setTerminationHandler(Callback callback) = 0;
};

}  // namespace tov
