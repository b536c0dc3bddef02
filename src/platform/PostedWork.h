#pragma once

// The work posted to a run loop from other threads, kept in order of posting. Each
// platform's loop wakes itself after a push and runs the queue on its own thread.

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>

namespace tov {

class PostedWork {
public:
    using Callback = std::function<void()>;

    // From any thread.
    void push(Callback callback);
    // Loop thread: runs the work queued before this call, one at a time, until a stop is
    // requested; what is left (or posted meanwhile) waits for the next call. True when work
    // is waiting.
    bool runQueued(const std::atomic<bool>& stopRequested);

private:
    std::mutex mutex_;
    std::deque<Callback> queue_;  // guarded by mutex_
};

}  // namespace tov
