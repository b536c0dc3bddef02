#include "app/QVMemoryGuard.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <thread>
#include <utility>
#include <vector>

#include "app/QVAppDaemonUtil.h"
#include "common/QVSLogger.h"
#include "platform/DetachedProcess.h"

namespace tov {
namespace {

constexpr double kPauseAfterSpawn = 2.0;  // seconds

void sleepSeconds(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

// The measure in whole bytes, cut towards zero; a measure below zero or not a number is 0.
std::uint64_t wholeBytes(double measure) {
    if (!(measure >= 0)) return 0;
    if (measure >= std::ldexp(1.0, 64)) return std::numeric_limits<std::uint64_t>::max();
    return static_cast<std::uint64_t>(measure);
}

}  // namespace

QVMemoryGuard::QVMemoryGuard() : QVMemoryGuard(&QVAppDaemonUtil::memoryConsumptionOfCurrentProcess) {}

QVMemoryGuard::QVMemoryGuard(Measure measure) : QVMemoryGuard(std::move(measure), &sleepSeconds) {}

QVMemoryGuard::QVMemoryGuard(Measure measure, Sleep sleep) : measure_(std::move(measure)), sleep_(std::move(sleep)) {}

void QVMemoryGuard::setMemoryThreshold(std::int64_t threshold) {
    const std::int64_t stored = std::min(threshold, kMaximumMemoryThreshold);
    memoryThreshold_ = stored;
    QVSLogger::debug("Applying memory threshold set to [%lld]", static_cast<long long>(stored));
}

std::int64_t QVMemoryGuard::memoryThreshold() const {
    return memoryThreshold_;
}

void QVMemoryGuard::setExecutablePath(const std::string& path) {
    executablePath_ = path;
}

const std::string& QVMemoryGuard::executablePath() const {
    return executablePath_;
}

// The comparison is unsigned, so a negative threshold is never exceeded.
bool QVMemoryGuard::isBeyondMemoryConsumptionThreshold() {
    const std::uint64_t consumption = wholeBytes(measure_());
    const std::int64_t threshold = memoryThreshold_;
    if (consumption <= static_cast<std::uint64_t>(threshold)) return false;
    QVSLogger::warning("Memory Consumption[%llu] is Beyond Threshold[%lld].", static_cast<unsigned long long>(consumption),
                       static_cast<long long>(threshold));
    return true;
}

// The new instance is started with "-re", not "re", so it waits for this one to end; it
// is not waited for here, so this one can end after the pause.
void QVMemoryGuard::spawnNewAppInstanceWithMemoryThreshold(std::int64_t threshold) {
    const std::vector<std::string> arguments{"-re", "-mm=" + std::to_string(threshold)};
    startDetachedProcess(executablePath_, arguments);
    sleep_(kPauseAfterSpawn);
}

}  // namespace tov
