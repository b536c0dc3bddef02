#pragma once

// Waiting for a file that another process makes. The deadline only bounds a failure: the
// wait ends as soon as the file is there.

#include <chrono>
#include <string>

namespace tov::testing {

constexpr std::chrono::seconds kGenerousDeadline{60};

// True once something stands at path; false when the deadline passed first.
bool waitForFile(const std::string& path, std::chrono::seconds deadline = kGenerousDeadline);

}  // namespace tov::testing
