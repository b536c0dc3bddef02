#include "app/QVScanThread.h"

#include <system_error>

#include "common/QVSLogger.h"

namespace tov {

QVScanThread::QVScanThread(QVScanScheduler& scheduler) : QVScanThread(scheduler, nullptr) {}

QVScanThread::QVScanThread(QVScanScheduler& scheduler, TickSleep tickSleep)
    : scheduler_(scheduler), tickSleep_(std::move(tickSleep)) {}

QVScanThread::~QVScanThread() {
    cancel();
    std::thread thread;
    {
        std::lock_guard<std::mutex> guard(lock_);
        thread = std::move(thread_);
    }
    if (!thread.joinable()) return;
    // Ended from its own step (the memory guard's terminate): it cannot wait for itself.
    if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();
        return;
    }
    thread.join();
}

// The thread runs at the scheduling priority it inherits. On Linux the service unit
// already runs the whole daemon niced, which serves as the "utility" class of service;
// lowering this one thread further would starve the scans on a busy machine.
bool QVScanThread::start() {
    std::lock_guard<std::mutex> guard(lock_);
    if (thread_.joinable()) return true;
    try {
        thread_ = std::thread([this] { scanThreadMain(); });
    } catch (const std::system_error&) {
        QVSLogger::critical("new reportSavingThread error nil");
        return false;
    }
    return true;
}

void QVScanThread::cancel() {
    {
        std::lock_guard<std::mutex> guard(lock_);
        cancelled_ = true;
    }
    wake_.notify_all();
}

bool QVScanThread::isCancelled() const {
    std::lock_guard<std::mutex> guard(lock_);
    return cancelled_;
}

void QVScanThread::scanThreadMain() {
    scheduler_.setTimerSecondsCount(0);
    while (!isCancelled()) {
        // The count grows by one tick a pass, however long the step took.
        const std::uint64_t count = scheduler_.timerSecondsCount() + kTick.count();
        scheduler_.setTimerSecondsCount(count);
        QVSLogger::debug("mainthread: %llu", static_cast<unsigned long long>(count));
        scheduler_.performScanTimerLogic();
        sleepOneTick();
    }
}

void QVScanThread::sleepOneTick() {
    if (tickSleep_) {
        tickSleep_();
        return;
    }
    std::unique_lock<std::mutex> guard(lock_);
    wake_.wait_for(guard, kTick, [this] { return cancelled_; });
}

}  // namespace tov
