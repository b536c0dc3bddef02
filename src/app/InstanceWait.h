#pragma once

// The wait of a starting daemon for other instances of tov to end.

#include <cstdint>
#include <functional>

namespace tov {

constexpr int kInstanceWaitPolls = 19;

// Polls count up to 19 times, sleeping after each poll that found another instance; true
// as soon as a poll finds none, false when all 19 did. sleep waits half a second.
bool waitForOtherInstances(const std::function<std::int64_t()>& count, const std::function<void()>& sleep);

}  // namespace tov
