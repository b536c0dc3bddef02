#include "common/SystemLog.h"

#include <syslog.h>

#include <cstdio>

namespace tov {

void writeToSystemLog(const std::string& message) {
    ::syslog(LOG_ERR, "%s", message.c_str());
    std::fprintf(stderr, "%s\n", message.c_str());
}

}  // namespace tov
