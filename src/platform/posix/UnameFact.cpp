#include <sys/utsname.h>

#include "platform/PosixFacts.h"

namespace tov {

Value unameFact(const std::string&) {
    struct utsname names {};
    if (uname(&names) != 0) return Value();
    DictionaryRef fact = makeDictionary();
    fact->set("sysname", names.sysname);
    fact->set("nodename", names.nodename);
    fact->set("release", names.release);
    fact->set("version", names.version);
    fact->set("machine", names.machine);
    return fact;
}

}  // namespace tov
