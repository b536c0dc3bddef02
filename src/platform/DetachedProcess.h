#pragma once

// Starts a program that lives on by itself: a session of its own, standard input and
// output on /dev/null, not waited for.

#include <string>
#include <vector>

namespace tov {

// False, with a log line, when the program could not be started.
bool startDetachedProcess(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace tov
