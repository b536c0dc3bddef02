#include "platform/ProcessId.h"

#include <unistd.h>

namespace tov {

long currentProcessId() {
    return static_cast<long>(::getpid());
}

}  // namespace tov
