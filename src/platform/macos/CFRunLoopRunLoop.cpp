#include "platform/macos/CFRunLoopRunLoop.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/event.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "common/QVSLogger.h"

namespace tov {
namespace {

// One run of CFRunLoopRunInMode lasts until it is stopped; CFRunLoopRun itself uses 1e10 s.
constexpr CFTimeInterval kLongestRun = 1.0e10;

sigset_t terminationSignalSet() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    return set;
}

// A kqueue that records every SIGTERM sent to the process from the moment it exists. The
// kernel notes a signal for EVFILT_SIGNAL when it is sent, before it looks at the threads'
// masks or an ignored disposition, so SIGTERM stays blocked in every thread (as on Linux,
// and as the command runner's children expect: they are started with an empty mask) and is
// still seen here. The queue is not inherited by children: kqueues never are across fork,
// and it is closed at exec.
int openTerminationQueue() {
    const int queue = ::kqueue();
    if (queue < 0) {
        QVSLogger::error("The run loop cannot receive SIGTERM: kqueue: %s", std::strerror(errno));
        return -1;
    }
    ::fcntl(queue, F_SETFD, FD_CLOEXEC);
    struct kevent change {};
    EV_SET(&change, SIGTERM, EVFILT_SIGNAL, EV_ADD | EV_ENABLE, 0, 0, nullptr);
    if (::kevent(queue, &change, 1, nullptr, 0, nullptr) != 0) {
        QVSLogger::error("The run loop cannot receive SIGTERM: kevent: %s", std::strerror(errno));
        ::close(queue);
        return -1;
    }
    return queue;
}

int terminationQueue() {
    static const int queue = openTerminationQueue();
    return queue;
}

// Takes every SIGTERM the queue recorded; true when there was one.
bool takeTerminationSignals(int queue) {
    bool received = false;
    const timespec noWait{0, 0};
    for (;;) {
        struct kevent event {};
        const int count = ::kevent(queue, nullptr, 0, &event, 1, &noWait);
        if (count > 0) {
            received = received || event.filter == EVFILT_SIGNAL;
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else {
            return received;
        }
    }
}

bool isTerminationSignalBlocked() {
    sigset_t blocked;
    sigemptyset(&blocked);
    return ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked) == 0 && sigismember(&blocked, SIGTERM);
}

}  // namespace

std::unique_ptr<RunLoop> RunLoop::create() { return CFRunLoopRunLoop::open(); }

void RunLoop::blockTerminationSignal() {
    const sigset_t set = terminationSignalSet();
    const int result = ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
    if (result != 0) QVSLogger::error("SIGTERM cannot be blocked: %s", std::strerror(result));
    terminationQueue();
}

std::unique_ptr<CFRunLoopRunLoop> CFRunLoopRunLoop::open() {
    std::unique_ptr<CFRunLoopRunLoop> loop(new CFRunLoopRunLoop(CFRunLoopGetCurrent()));
    if (!loop->addPostedSource()) return nullptr;
    return loop;
}

CFRunLoopRunLoop::CFRunLoopRunLoop(CFRunLoopRef runLoop) : runLoop_(runLoop) { CFRetain(runLoop_); }

CFRunLoopRunLoop::~CFRunLoopRunLoop() {
    for (auto& entry : timers_) release(entry.second);
    for (auto& entry : watches_) release(entry.second);
    if (postedSource_ != nullptr) {
        CFRunLoopSourceInvalidate(postedSource_);
        CFRelease(postedSource_);
    }
    CFRelease(runLoop_);
}

bool CFRunLoopRunLoop::addPostedSource() {
    CFRunLoopSourceContext context{};
    context.version = 0;
    context.info = this;
    context.perform = performPosted;
    postedSource_ = CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &context);
    if (postedSource_ == nullptr) {
        QVSLogger::error("The run loop cannot be set up: its source could not be made.");
        return false;
    }
    CFRunLoopAddSource(runLoop_, postedSource_, kCFRunLoopDefaultMode);
    return true;
}

void CFRunLoopRunLoop::signalPostedSource() {
    CFRunLoopSourceSignal(postedSource_);
    CFRunLoopWakeUp(runLoop_);
}

bool CFRunLoopRunLoop::run() {
    if (running_.exchange(true)) {
        QVSLogger::error("The run loop is already running; it cannot run twice at once.");
        return false;
    }
    if (CFRunLoopGetCurrent() != runLoop_) {
        QVSLogger::error("The run loop runs only on the thread that made it.");
        running_ = false;
        return false;
    }
    bool healthy = true;
    while (healthy && !stopRequested_.exchange(false)) {
        // The loop's own source is always there, so "finished" (no sources left) means
        // the run loop was taken apart under us.
        if (CFRunLoopRunInMode(kCFRunLoopDefaultMode, kLongestRun, false) == kCFRunLoopRunFinished) {
            QVSLogger::error("The run loop has nothing left to wait for.");
            healthy = false;
        }
    }
    running_ = false;
    return healthy;
}

void CFRunLoopRunLoop::stop() {
    stopRequested_ = true;
    signalPostedSource();
}

void CFRunLoopRunLoop::post(Callback callback) {
    posted_.push(std::move(callback));
    signalPostedSource();
}

void CFRunLoopRunLoop::performPosted(void* info) { static_cast<CFRunLoopRunLoop*>(info)->runPosted(); }

// Runs the work posted before this pass began, unless a stop is asked for: then the run
// ends and what is left runs when the loop runs again.
void CFRunLoopRunLoop::runPosted() {
    const bool workLeft = posted_.runQueued(stopRequested_);
    if (stopRequested_) CFRunLoopStop(runLoop_);
    if (workLeft) CFRunLoopSourceSignal(postedSource_);
}

RunLoop::TimerId CFRunLoopRunLoop::startTimer(std::chrono::milliseconds delay, Callback callback) {
    const TimerId id = nextId();
    Timer& timer = timers_[id];
    timer.target = std::make_unique<Target>(Target{this, id});
    timer.callback = std::make_shared<Callback>(std::move(callback));
    const CFTimeInterval seconds = static_cast<CFTimeInterval>(std::max<std::int64_t>(delay.count(), 0)) / 1000.0;
    if (!armTimer(id, timer, CFAbsoluteTimeGetCurrent() + seconds)) {
        timers_.erase(id);
        return 0;
    }
    return id;
}

bool CFRunLoopRunLoop::armTimer(TimerId id, Timer& timer, CFAbsoluteTime fireDate) {
    CFRunLoopTimerContext context{};
    context.version = 0;
    context.info = timer.target.get();
    timer.timer = CFRunLoopTimerCreate(kCFAllocatorDefault, fireDate, 0, 0, 0, timerFired, &context);
    if (timer.timer == nullptr) {
        QVSLogger::error("The run loop's timer %llu cannot be made.", static_cast<unsigned long long>(id));
        return false;
    }
    CFRunLoopAddTimer(runLoop_, timer.timer, kCFRunLoopDefaultMode);
    return true;
}

void CFRunLoopRunLoop::cancelTimer(TimerId id) {
    const auto timer = timers_.find(id);
    if (timer == timers_.end()) return;
    release(timer->second);
    timers_.erase(timer);
}

void CFRunLoopRunLoop::timerFired(CFRunLoopTimerRef, void* info) {
    const Target target = *static_cast<const Target*>(info);
    target.loop->runTimer(target.id);
}

// A timer due while a stop is asked for is armed again at once, so it runs first when the
// loop runs again. The callback is held here while it runs, so it may cancel its own timer.
void CFRunLoopRunLoop::runTimer(TimerId id) {
    const auto timer = timers_.find(id);
    if (timer == timers_.end()) return;
    if (stopRequested_) {
        release(timer->second);
        if (!armTimer(id, timer->second, CFAbsoluteTimeGetCurrent())) timers_.erase(timer);
        return;
    }
    const std::shared_ptr<Callback> callback = timer->second.callback;
    release(timer->second);
    timers_.erase(timer);
    if (*callback) (*callback)();
}

RunLoop::WatchId CFRunLoopRunLoop::watchDescriptor(int descriptor, Readiness readiness, Callback callback) {
    if (readiness == Readiness::Priority) {
        QVSLogger::error("The run loop cannot watch descriptor %d for exceptional conditions: macOS has none to report.",
                         descriptor);
        return 0;
    }
    // The loop's own copy, so the caller's number may be reused; CoreFoundation closes it.
    const int duplicate = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    if (duplicate < 0) {
        QVSLogger::error("The run loop cannot watch descriptor %d: %s", descriptor, std::strerror(errno));
        return 0;
    }
    const WatchId id = nextId();
    Watch watch;
    watch.target = std::make_unique<Target>(Target{this, id});
    watch.callback = std::make_shared<Callback>(std::move(callback));
    CFFileDescriptorContext context{};
    context.version = 0;
    context.info = watch.target.get();
    watch.descriptor = CFFileDescriptorCreate(kCFAllocatorDefault, duplicate, true, descriptorReady, &context);
    if (watch.descriptor == nullptr) {
        ::close(duplicate);
        QVSLogger::error("The run loop cannot watch descriptor %d: CFFileDescriptorCreate failed.", descriptor);
        return 0;
    }
    watch.source = CFFileDescriptorCreateRunLoopSource(kCFAllocatorDefault, watch.descriptor, 0);
    if (watch.source == nullptr) {
        release(watch);
        QVSLogger::error("The run loop cannot watch descriptor %d: it has no run loop source.", descriptor);
        return 0;
    }
    CFRunLoopAddSource(runLoop_, watch.source, kCFRunLoopDefaultMode);
    CFFileDescriptorEnableCallBacks(watch.descriptor, kCFFileDescriptorReadCallBack);
    watches_.emplace(id, std::move(watch));
    return id;
}

void CFRunLoopRunLoop::unwatchDescriptor(WatchId id) {
    const auto watch = watches_.find(id);
    if (watch == watches_.end()) return;
    release(watch->second);
    watches_.erase(watch);
}

void CFRunLoopRunLoop::descriptorReady(CFFileDescriptorRef, CFOptionFlags, void* info) {
    const Target target = *static_cast<const Target*>(info);
    target.loop->runWatch(target.id);
}

// A CFFileDescriptor calls back once per enabling: the read callback is enabled again
// after the callback (unless it unwatched the descriptor), and without running it while a
// stop is asked for, so a descriptor still ready calls back when the loop runs again.
void CFRunLoopRunLoop::runWatch(WatchId id) {
    const auto watch = watches_.find(id);
    if (watch == watches_.end()) return;
    if (!stopRequested_) {
        const std::shared_ptr<Callback> callback = watch->second.callback;
        if (*callback) (*callback)();
    }
    const auto still = watches_.find(id);
    if (still != watches_.end()) CFFileDescriptorEnableCallBacks(still->second.descriptor, kCFFileDescriptorReadCallBack);
}

void CFRunLoopRunLoop::setTerminationHandler(Callback callback) {
    terminationHandler_ = std::make_shared<Callback>(std::move(callback));
    if (!isTerminationSignalBlocked()) {
        QVSLogger::warning("SIGTERM is not blocked in this thread: it ends the process without the run loop's handler.");
    }
    if (terminationWatch_ != 0) return;
    const int queue = terminationQueue();
    if (queue < 0) return;  // logged when it was opened
    terminationWatch_ = watchDescriptor(queue, Readiness::Readable, [this] { runTerminationHandler(); });
}

void CFRunLoopRunLoop::runTerminationHandler() {
    if (!takeTerminationSignals(terminationQueue())) return;
    QVSLogger::debug("SIGTERM received.");
    const std::shared_ptr<Callback> handler = terminationHandler_;
    if (handler && *handler) (*handler)();
}

void CFRunLoopRunLoop::release(Timer& timer) {
    if (timer.timer == nullptr) return;
    CFRunLoopTimerInvalidate(timer.timer);
    CFRelease(timer.timer);
    timer.timer = nullptr;
}

// The source goes first, then the descriptor, which closes the loop's copy of it.
void CFRunLoopRunLoop::release(Watch& watch) {
    if (watch.source != nullptr) {
        CFRunLoopSourceInvalidate(watch.source);
        CFRelease(watch.source);
        watch.source = nullptr;
    }
    if (watch.descriptor != nullptr) {
        CFFileDescriptorInvalidate(watch.descriptor);
        CFRelease(watch.descriptor);
        watch.descriptor = nullptr;
    }
}

}  // namespace tov
