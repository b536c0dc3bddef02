#pragma once

// The Linux run loop: one epoll set over an eventfd (work posted and stop requests from
// other threads), a timerfd armed for the earliest timer (CLOCK_MONOTONIC), a signalfd for
// SIGTERM once a termination handler is set, and the descriptors callers watch. Every
// descriptor it opens is closed at exec, since the daemon runs tools.

#include <sys/epoll.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "common/FileDescriptor.h"
#include "platform/PostedWork.h"
#include "platform/RunLoop.h"

namespace tov {

class EpollRunLoop final : public RunLoop {
public:
    using Clock = std::chrono::steady_clock;  // CLOCK_MONOTONIC, as the timerfd

    // Null when a descriptor of the loop could not be made (logged).
    static std::unique_ptr<EpollRunLoop> open();
    ~EpollRunLoop() override;

    bool run() override;
    void stop() override;
    void post(Callback callback) override;
    TimerId startTimer(std::chrono::milliseconds delay, Callback callback) override;
    void cancelTimer(TimerId id) override;
    // 0 when the descriptor cannot be watched (logged).
    WatchId watchDescriptor(int descriptor, Readiness readiness, Callback callback) override;
    void unwatchDescriptor(WatchId id) override;
    void setTerminationHandler(Callback callback) override;

private:
    struct Watch {
        FileDescriptor duplicate;  // the loop's own copy, so the caller's number may be reused
        std::shared_ptr<Callback> callback;
    };
    struct Timer {
        Clock::time_point deadline;
        std::shared_ptr<Callback> callback;
    };

    EpollRunLoop(FileDescriptor epoll, FileDescriptor wake, FileDescriptor timer);

    bool waitAndDispatch();
    void dispatch(const epoll_event& event);
    void runPosted();
    // Makes the waiting loop run its posted work (and see a stop request).
    void wake();
    void runDueTimers();
    void runTerminationHandler();
    void runWatch(WatchId id);
    void armTimer();
    bool openSignalDescriptor();
    std::uint64_t nextId() { return nextId_++; }

    FileDescriptor epoll_;
    FileDescriptor wake_;
    FileDescriptor timer_;
    FileDescriptor signal_;

    PostedWork posted_;
    std::atomic<bool> stopRequested_{false};
    std::atomic<bool> running_{false};

    // Loop thread only.
    std::uint64_t nextId_;
    std::map<TimerId, Timer> timers_;
    std::set<std::pair<Clock::time_point, TimerId>> deadlines_;
    std::map<WatchId, Watch> watches_;
    std::shared_ptr<Callback> terminationHandler_;
};

}  // namespace tov
