#include "platform/PostedWork.h"

#include <cstddef>
#include <utility>

namespace tov {

void PostedWork::push(Callback callback) {
    std::lock_guard<std::mutex> lock(mutex_);
    queue_.push_back(std::move(callback));
}

bool PostedWork::runQueued(const std::atomic<bool>& stopRequested) {
    std::size_t pending = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        pending = queue_.size();
    }
    for (; pending > 0 && !stopRequested; --pending) {
        Callback callback;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            callback = std::move(queue_.front());
            queue_.pop_front();
        }
        if (callback) callback();
    }
    std::lock_guard<std::mutex> lock(mutex_);
    return !queue_.empty();
}

}  // namespace tov
