#pragma once

// The name a network adapter is reported under, from its model and the class of its
// driver: "<model> - <class>" when both are known, else whichever is known, else "".

#include <string>

namespace tov {

// An empty text counts as unknown.
std::string networkAdapterName(const std::string& model, const std::string& className);

}  // namespace tov
