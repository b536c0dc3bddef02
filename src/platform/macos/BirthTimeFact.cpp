#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "common/QVSLogger.h"
#include "platform/macos/MacFacts.h"

namespace tov {

// The file's own creation time (a link is not followed). File systems that record none
// give the epoch, 0, there, as stat(2) says, which counts as no birth time.
Value birthTimeFact(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        QVSLogger::debug("No birth time is read for a path that is empty or holds a zero byte.");
        return Value();
    }
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        QVSLogger::debug("The birth time of %s cannot be read: %s", path.c_str(), std::strerror(errno));
        return Value();
    }
    if (status.st_birthtime == 0) {
        QVSLogger::debug("The file system of %s does not record birth times.", path.c_str());
        return Value();
    }
    DictionaryRef fact = makeDictionary();
    fact->set("seconds", static_cast<std::int64_t>(status.st_birthtime));
    return fact;
}

}  // namespace tov
