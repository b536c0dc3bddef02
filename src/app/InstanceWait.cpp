#include "app/InstanceWait.h"

namespace tov {

// A poll that finds no other instance ends the wait at once; there is no poll after the
// last sleep.
bool waitForOtherInstances(const std::function<std::int64_t()>& count, const std::function<void()>& sleep) {
    for (int poll = 0; poll < kInstanceWaitPolls; ++poll) {
        if (count() == 0) return true;
        sleep();
    }
    return false;
}

}  // namespace tov
