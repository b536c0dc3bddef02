#include <unistd.h>

#include <cstdint>

#include "common/QVSLogger.h"
#include "platform/macos/MacFacts.h"

namespace tov {

Value pageSizeFact(const std::string&) {
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pageSize <= 0) {
        QVSLogger::debug("The memory page size cannot be read.");
        return Value();
    }
    return Value(static_cast<std::uint64_t>(pageSize));
}

}  // namespace tov
