#include <sys/statvfs.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "common/QVSLogger.h"
#include "platform/PosixFacts.h"

namespace tov {

Value fileSystemStatisticsFact(const std::string& mountPath) {
    struct statvfs statistics {};
    if (mountPath.empty() || statvfs(mountPath.c_str(), &statistics) != 0) {
        QVSLogger::debug("The file system at %s cannot be examined: %s", mountPath.c_str(), std::strerror(errno));
        return Value();
    }
    DictionaryRef fact = makeDictionary();
    fact->set("blockSize", static_cast<std::uint64_t>(statistics.f_frsize));
    fact->set("totalBlocks", static_cast<std::uint64_t>(statistics.f_blocks));
    fact->set("freeBlocks", static_cast<std::uint64_t>(statistics.f_bfree));
    fact->set("availableBlocks", static_cast<std::uint64_t>(statistics.f_bavail));
    return fact;
}

}  // namespace tov
