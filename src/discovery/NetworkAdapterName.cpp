#include "discovery/NetworkAdapterName.h"

namespace tov {

std::string networkAdapterName(const std::string& model, const std::string& className) {
    if (!model.empty() && !className.empty()) return model + " - " + className;
    return className.empty() ? model : className;
}

}  // namespace tov
