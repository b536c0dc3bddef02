#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "common/QVSLogger.h"
#include "platform/linux/LinuxFacts.h"

namespace tov {

Value birthTimeFact(const std::string& path) {
    struct statx status {};
    if (path.empty() || statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME, &status) != 0) {
        QVSLogger::debug("The birth time of %s cannot be read: %s", path.c_str(), std::strerror(errno));
        return Value();
    }
    if (!(status.stx_mask & STATX_BTIME)) {
        QVSLogger::debug("The file system of %s does not record birth times.", path.c_str());
        return Value();
    }
    DictionaryRef fact = makeDictionary();
    fact->set("seconds", static_cast<std::int64_t>(status.stx_btime.tv_sec));
    return fact;
}

}  // namespace tov
