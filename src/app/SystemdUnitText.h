#pragma once

// The systemd unit that runs tov as a service: the Linux counterpart of the launchd job.

#include <string>

namespace tov {

// A unit described by label that runs programPath (an absolute path) with nice level 1,
// starts it again interval seconds (truncated) after it ends, and is wanted by
// multi-user.target (started at boot) when runAtLoad.
std::string systemdUnitText(const std::string& label, const std::string& programPath, double interval,
                            bool runAtLoad);

// The program path as the one word of an ExecStart= line: in double quotes, with
// backslashes, quotes and control characters escaped, "%" doubled so that no specifier is
// expanded, and the ":" prefix that turns off variable expansion when it holds a "$".
std::string systemdExecutableWord(const std::string& programPath);

}  // namespace tov
