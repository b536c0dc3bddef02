#include "platform/ProcessInfo.h"

#include <errno.h>

namespace tov {

std::string currentProcessName() {
    return program_invocation_short_name ? std::string(program_invocation_short_name) : std::string();
}

}  // namespace tov
