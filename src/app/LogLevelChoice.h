#pragma once

#include <optional>
#include <string>

#include "app/QVSAppArgument.h"

namespace tov {

constexpr const char* kDefaultLogLevel = "INFORMATION";

// The trimmed text of the debug trigger file: nothing when the file does not exist, ""
// when it exists but is empty, unreadable, not ASCII or a symbolic link.
std::optional<std::string> readDebugTriggerText(const std::string& path);

// The level for the logger: the trigger file's text when the file exists (even an empty
// one), else the "-ll" argument, else the default.
std::string chooseLogLevel(const QVSAppArgument& arguments, const std::string& debugTriggerPath);

}  // namespace tov
