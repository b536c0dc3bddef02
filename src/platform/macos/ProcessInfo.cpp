#include "platform/ProcessInfo.h"

#include <stdlib.h>

namespace tov {

std::string currentProcessName() {
    const char* name = getprogname();
    return name ? std::string(name) : std::string();
}

}  // namespace tov
