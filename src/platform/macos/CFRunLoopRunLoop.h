#pragma once

// The macOS run loop: the CFRunLoop of the thread that made it (the main thread in the
// daemon, which also serves the main dispatch queue and so the workspace's notifications).
//
// Work posted from other threads goes into a locked queue and signals one version 0 source
// (CFRunLoopSourceSignal + CFRunLoopWakeUp, both safe from any thread); the source's perform
// callback takes the queue in order, so posting order is kept without relying on the order
// in which CFRunLoopPerformBlock's blocks run. A stop request signals the same source, so
// a stop asked for before run() began still ends that run, which CFRunLoopStop alone would
// not do (it only stops a run in progress).
//
// Timers are one-shot CFRunLoopTimers; watched descriptors are CFFileDescriptors on a
// duplicate of the caller's descriptor, with the read callback enabled again after each
// call. SIGTERM is read from a kqueue (EVFILT_SIGNAL) that blockTerminationSignal opens,
// watched like any descriptor.

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <map>
#include <memory>

#include "platform/PostedWork.h"
#include "platform/RunLoop.h"

namespace tov {

class CFRunLoopRunLoop final : public RunLoop {
public:
    // Null when the loop's source could not be made (logged).
    static std::unique_ptr<CFRunLoopRunLoop> open();
    ~CFRunLoopRunLoop() override;

    bool run() override;
    void stop() override;
    void post(Callback callback) override;
    TimerId startTimer(std::chrono::milliseconds delay, Callback callback) override;
    void cancelTimer(TimerId id) override;
    // 0 when the descriptor cannot be watched, and for Priority readiness, which has no
    // meaning on macOS (logged).
    WatchId watchDescriptor(int descriptor, Readiness readiness, Callback callback) override;
    void unwatchDescriptor(WatchId id) override;
    void setTerminationHandler(Callback callback) override;

    // The CFRunLoop the loop runs, for sources that schedule themselves on it.
    CFRunLoopRef cfRunLoop() const { return runLoop_; }

private:
    // What a CoreFoundation callback is given to find its way back to the loop.
    struct Target {
        CFRunLoopRunLoop* loop;
        std::uint64_t id;
    };
    struct Timer {
        CFRunLoopTimerRef timer = nullptr;
        std::unique_ptr<Target> target;
        std::shared_ptr<Callback> callback;
    };
    struct Watch {
        CFFileDescriptorRef descriptor = nullptr;
        CFRunLoopSourceRef source = nullptr;
        std::unique_ptr<Target> target;
        std::shared_ptr<Callback> callback;
    };

    explicit CFRunLoopRunLoop(CFRunLoopRef runLoop);
    bool addPostedSource();
    void signalPostedSource();

    static void performPosted(void* info);
    static void timerFired(CFRunLoopTimerRef timer, void* info);
    static void descriptorReady(CFFileDescriptorRef descriptor, CFOptionFlags callBackTypes, void* info);

    void runPosted();
    bool armTimer(TimerId id, Timer& timer, CFAbsoluteTime fireDate);
    void runTimer(TimerId id);
    void runWatch(WatchId id);
    void runTerminationHandler();
    static void release(Timer& timer);
    static void release(Watch& watch);
    std::uint64_t nextId() { return nextId_++; }

    CFRunLoopRef runLoop_;
    CFRunLoopSourceRef postedSource_ = nullptr;

    PostedWork posted_;
    std::atomic<bool> stopRequested_{false};
    std::atomic<bool> running_{false};

    // Loop thread only.
    std::uint64_t nextId_ = 1;
    std::map<TimerId, Timer> timers_;
    std::map<WatchId, Watch> watches_;
    WatchId terminationWatch_ = 0;
    std::shared_ptr<Callback> terminationHandler_;
};

}  // namespace tov
