#pragma once

// The daemon's live log on the real path (inside a private namespace), read from a mark
// on, so that a test sees only the lines one run wrote.

#include <cstdint>
#include <string>
#include <vector>

namespace tov::testing {

// The size of the live log now; a mark for daemonLogSince.
std::uint64_t daemonLogSize();
// What the live log holds from mark on (all of it when it was rolled meanwhile).
std::string daemonLogSince(std::uint64_t mark);
// The error and critical lines of log text.
std::vector<std::string> errorLinesIn(const std::string& text);

}  // namespace tov::testing
