#include "discovery/linux/LinuxConsoleUser.h"

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "discovery/SystemFacts.h"

namespace tov {

std::string linuxConsoleUser(SystemSource& source) {
    const DictionaryRef seat = source.fact(facts::kConsoleUser, kConsoleSeat).dictionary();
    if (!seat) {
        QVSLogger::debug("No console user: the state of %s is unknown.", kConsoleSeat);
        return "";
    }
    if (!seat->get("seat").toBool()) {
        QVSLogger::debug("No console user: this machine has no %s.", kConsoleSeat);
        return "";
    }
    const Value* user = seat->find("user");
    return user && user->string() ? printableText(*user->string()) : "";
}

}  // namespace tov
