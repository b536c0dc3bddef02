#include "platform/linux/EpollRunLoop.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "common/QVSLogger.h"

namespace tov {
namespace {

// epoll keys of the loop's own descriptors; watched descriptors and timers are numbered
// from kFirstId on, so their keys never meet these.
constexpr std::uint64_t kWakeKey = 1;
constexpr std::uint64_t kTimerKey = 2;
constexpr std::uint64_t kSignalKey = 3;
constexpr std::uint64_t kFirstId = 16;
constexpr int kEventsPerWait = 32;

sigset_t terminationSignalSet() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    return set;
}

bool addToEpoll(int epoll, int descriptor, std::uint32_t events, std::uint64_t key) {
    epoll_event event{};
    event.events = events;
    event.data.u64 = key;
    return ::epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

// Reads and forgets what a counter descriptor (eventfd, timerfd) holds.
void drainCounter(int descriptor) {
    std::uint64_t count = 0;
    while (::read(descriptor, &count, sizeof count) < 0 && errno == EINTR) {
    }
}

timespec monotonicTimespec(EpollRunLoop::Clock::time_point time) {
    const auto sinceStart = std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch());
    timespec value{};
    if (sinceStart.count() <= 0) {
        value.tv_nsec = 1;  // a zero time would disarm the timer
        return value;
    }
    value.tv_sec = static_cast<time_t>(sinceStart.count() / 1000000000);
    value.tv_nsec = static_cast<long>(sinceStart.count() % 1000000000);
    return value;
}

std::uint32_t epollEventsFor(RunLoop::Readiness readiness) {
    return readiness == RunLoop::Readiness::Priority ? EPOLLPRI : EPOLLIN;
}

}  // namespace

std::unique_ptr<RunLoop> RunLoop::create() { return EpollRunLoop::open(); }

void RunLoop::blockTerminationSignal() {
    const sigset_t set = terminationSignalSet();
    const int result = ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
    if (result != 0) QVSLogger::error("SIGTERM cannot be blocked: %s", std::strerror(result));
}

std::unique_ptr<EpollRunLoop> EpollRunLoop::open() {
    FileDescriptor epoll(::epoll_create1(EPOLL_CLOEXEC));
    FileDescriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    FileDescriptor timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!epoll.isOpen() || !wake.isOpen() || !timer.isOpen() ||
        !addToEpoll(epoll.get(), wake.get(), EPOLLIN, kWakeKey) ||
        !addToEpoll(epoll.get(), timer.get(), EPOLLIN, kTimerKey)) {
        QVSLogger::error("The run loop cannot be set up: %s", std::strerror(errno));
        return nullptr;
    }
    return std::unique_ptr<EpollRunLoop>(new EpollRunLoop(std::move(epoll), std::move(wake), std::move(timer)));
}

EpollRunLoop::EpollRunLoop(FileDescriptor epoll, FileDescriptor wake, FileDescriptor timer)
    : epoll_(std::move(epoll)), wake_(std::move(wake)), timer_(std::move(timer)), nextId_(kFirstId) {}

EpollRunLoop::~EpollRunLoop() = default;

bool EpollRunLoop::run() {
    if (running_.exchange(true)) {
        QVSLogger::error("The run loop is already running; it cannot run twice at once.");
        return false;
    }
    bool healthy = true;
    while (healthy && !stopRequested_.exchange(false)) healthy = waitAndDispatch();
    running_ = false;
    return healthy;
}

bool EpollRunLoop::waitAndDispatch() {
    epoll_event events[kEventsPerWait];
    const int count = ::epoll_wait(epoll_.get(), events, kEventsPerWait, -1);
    if (count < 0) {
        if (errno == EINTR) return true;
        QVSLogger::error("The run loop cannot wait for events: %s", std::strerror(errno));
        return false;
    }
    for (int index = 0; index < count && !stopRequested_; ++index) dispatch(events[index]);
    return true;
}

void EpollRunLoop::dispatch(const epoll_event& event) {
    switch (event.data.u64) {
        case kWakeKey: runPosted(); break;
        case kTimerKey: runDueTimers(); break;
        case kSignalKey: runTerminationHandler(); break;
        default: runWatch(event.data.u64); break;
    }
}

void EpollRunLoop::stop() {
    stopRequested_ = true;
    wake();
}

void EpollRunLoop::post(Callback callback) {
    posted_.push(std::move(callback));
    wake();
}

void EpollRunLoop::wake() {
    const std::uint64_t one = 1;
    while (::write(wake_.get(), &one, sizeof one) < 0 && errno == EINTR) {
    }
}

// Runs the work posted before this pass began; work posted by it, or left behind by a
// stop, runs in a later pass.
void EpollRunLoop::runPosted() {
    drainCounter(wake_.get());
    if (posted_.runQueued(stopRequested_)) wake();
}

RunLoop::TimerId EpollRunLoop::startTimer(std::chrono::milliseconds delay, Callback callback) {
    const TimerId id = nextId();
    const Clock::time_point deadline = Clock::now() + std::max(delay, std::chrono::milliseconds(0));
    timers_[id] = Timer{deadline, std::make_shared<Callback>(std::move(callback))};
    deadlines_.emplace(deadline, id);
    if (deadlines_.begin()->second == id) armTimer();
    return id;
}

void EpollRunLoop::cancelTimer(TimerId id) {
    const auto timer = timers_.find(id);
    if (timer == timers_.end()) return;
    const bool wasFirst = deadlines_.begin()->second == id;
    deadlines_.erase({timer->second.deadline, id});
    timers_.erase(timer);
    if (wasFirst) armTimer();
}

void EpollRunLoop::armTimer() {
    itimerspec setting{};
    if (!deadlines_.empty()) setting.it_value = monotonicTimespec(deadlines_.begin()->first);
    if (::timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME, &setting, nullptr) != 0) {
        QVSLogger::error("The run loop's timer cannot be set: %s", std::strerror(errno));
    }
}

// Runs, in deadline order, the timers due when the pass began; a timer started or cancelled
// by one of them is taken into account at once.
void EpollRunLoop::runDueTimers() {
    drainCounter(timer_.get());
    const Clock::time_point now = Clock::now();
    std::vector<TimerId> due;
    for (auto deadline = deadlines_.begin(); deadline != deadlines_.end() && deadline->first <= now; ++deadline) {
        due.push_back(deadline->second);
    }
    for (const TimerId id : due) {
        if (stopRequested_) break;
        const auto timer = timers_.find(id);
        if (timer == timers_.end()) continue;
        const std::shared_ptr<Callback> callback = timer->second.callback;
        deadlines_.erase({timer->second.deadline, id});
        timers_.erase(timer);
        if (*callback) (*callback)();
    }
    armTimer();
}

RunLoop::WatchId EpollRunLoop::watchDescriptor(int descriptor, Readiness readiness, Callback callback) {
    FileDescriptor duplicate(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    const WatchId id = nextId();
    if (!duplicate.isOpen() || !addToEpoll(epoll_.get(), duplicate.get(), epollEventsFor(readiness), id)) {
        QVSLogger::error("The run loop cannot watch descriptor %d: %s", descriptor, std::strerror(errno));
        return 0;
    }
    watches_.emplace(id, Watch{std::move(duplicate), std::make_shared<Callback>(std::move(callback))});
    return id;
}

void EpollRunLoop::unwatchDescriptor(WatchId id) {
    const auto watch = watches_.find(id);
    if (watch == watches_.end()) return;
    ::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, watch->second.duplicate.get(), nullptr);
    watches_.erase(watch);
}

// The callback is held here while it runs, so it may unwatch its own descriptor.
void EpollRunLoop::runWatch(WatchId id) {
    const auto watch = watches_.find(id);
    if (watch == watches_.end()) return;  // unwatched by an earlier callback of this pass
    const std::shared_ptr<Callback> callback = watch->second.callback;
    if (*callback) (*callback)();
}

void EpollRunLoop::setTerminationHandler(Callback callback) {
    terminationHandler_ = std::make_shared<Callback>(std::move(callback));
    if (!signal_.isOpen()) openSignalDescriptor();
    sigset_t blocked;
    sigemptyset(&blocked);
    if (::pthread_sigmask(SIG_BLOCK, nullptr, &blocked) == 0 && !sigismember(&blocked, SIGTERM)) {
        QVSLogger::warning("SIGTERM is not blocked in this thread: it ends the process without the run loop's handler.");
    }
}

bool EpollRunLoop::openSignalDescriptor() {
    const sigset_t set = terminationSignalSet();
    FileDescriptor signal(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signal.isOpen() || !addToEpoll(epoll_.get(), signal.get(), EPOLLIN, kSignalKey)) {
        QVSLogger::error("The run loop cannot receive SIGTERM: %s", std::strerror(errno));
        return false;
    }
    signal_ = std::move(signal);
    return true;
}

void EpollRunLoop::runTerminationHandler() {
    signalfd_siginfo information{};
    bool received = false;
    for (;;) {
        const ssize_t count = ::read(signal_.get(), &information, sizeof information);
        if (count == static_cast<ssize_t>(sizeof information)) {
            QVSLogger::debug("SIGTERM received from process %u.", information.ssi_pid);
            received = true;
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else {
            break;
        }
    }
    const std::shared_ptr<Callback> handler = terminationHandler_;
    if (received && handler && *handler) (*handler)();
}

}  // namespace tov
