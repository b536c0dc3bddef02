#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "common/QVSLogger.h"
#include "platform/macos/MacFacts.h"

namespace tov {

// The device number of the file system that holds what the path names, links followed
// (so "/Volumes/Macintosh HD", a link to "/", is on the start-up volume), as decimal
// text. Every mounted file system has its own device number, so two paths are on one
// volume exactly when their texts are equal.
Value volumeIdentifierFact(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        QVSLogger::debug("No volume is looked up for a path that is empty or holds a zero byte.");
        return Value();
    }
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        QVSLogger::debug("The volume of %s cannot be read: %s", path.c_str(), std::strerror(errno));
        return Value();
    }
    DictionaryRef fact = makeDictionary();
    fact->set("identifier", std::to_string(status.st_dev));
    return fact;
}

}  // namespace tov
