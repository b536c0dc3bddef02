#pragma once

// The name a Mac network adapter is reported under, from its registry model and class:
// "<model> - <class>" when the controller states both (an empty text counts as stated),
// else whichever it states, else "".

#include <optional>
#include <string>

namespace tov {

std::string ioKitAdapterName(const std::optional<std::string>& model, const std::optional<std::string>& className);

}  // namespace tov
