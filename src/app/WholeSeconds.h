#pragma once

// Turns a job interval in seconds into the whole, unsigned number of seconds a job file
// states.

namespace tov {

// Truncated towards zero; a negative or not-a-number interval gives 0 and one beyond the
// unsigned range gives its largest value.
unsigned long wholeSeconds(double interval);

}  // namespace tov
