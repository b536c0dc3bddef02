#pragma once

#include <optional>
#include <string>

#include "app/QVSAppArgument.h"

namespace tov {

constexpr const char* kDefaultLogLevel = "INFORMATION";

// The trimmed text of the debug trigger file. Only a regular file owned by root counts:
// anything else at the path (another user's file, a symbolic link, a folder, a FIFO) is
// as if there were no file, and gives nothing. "" when root's file is empty, unreadable
// or not ASCII.
std::optional<std::string> readDebugTriggerText(const std::string& path);

// The level for the logger: the trigger file's text when the trigger counts (even an
// empty one), else the "-ll" argument, else the default.
std::string chooseLogLevel(const QVSAppArgument& arguments, const std::string& debugTriggerPath);

}  // namespace tov
