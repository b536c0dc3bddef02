#pragma once

#include <string>

namespace tov {

// Writes one message to the system log and to standard error, for the few messages that
// cannot go to the daemon's own log file.
void writeToSystemLog(const std::string& message);

}  // namespace tov
