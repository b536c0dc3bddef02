#include "discovery/macos/IOKitAdapterName.h"

namespace tov {

std::string ioKitAdapterName(const std::optional<std::string>& model, const std::optional<std::string>& className) {
    if (model && className) return *model + " - " + *className;
    if (className) return *className;
    return model.value_or("");
}

}  // namespace tov
