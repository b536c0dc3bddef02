#include "app/WholeSeconds.h"

#include <cmath>
#include <limits>

namespace tov {

unsigned long wholeSeconds(double interval) {
    constexpr unsigned long kLargest = std::numeric_limits<unsigned long>::max();
    if (std::isnan(interval) || interval <= 0) return 0;
    // The largest value converts to a double that is one beyond it.
    if (interval >= static_cast<double>(kLargest)) return kLargest;
    return static_cast<unsigned long>(interval);
}

}  // namespace tov
