#include <SystemConfiguration/SystemConfiguration.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "common/QVSLogger.h"
#include "common/UserDatabase.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

namespace tov {
namespace {

// The name the system configuration store gives the console's user; none when nobody is
// logged in there or the store cannot be asked.
std::optional<std::string> consoleUser() {
    uid_t uid = 0;
    gid_t gid = 0;
    const OwnedCFReference<CFStringRef> name(SCDynamicStoreCopyConsoleUser(nullptr, &uid, &gid));
    if (!name) {
        QVSLogger::debug("The system configuration store names no console user.");
        return std::nullopt;
    }
    return stringOfCFString(name.get());
}

// The user database's name of the user; none when it has no entry.
std::optional<std::string> userName(uid_t uid) {
    std::optional<std::string> name = userNameOfId(uid);
    if (!name) QVSLogger::debug("The user %u has no name in the user database.", static_cast<unsigned>(uid));
    return name;
}

}  // namespace

Value macConsoleUserFact(const std::string& /*key*/) {
    DictionaryRef fact = makeDictionary();
    if (const std::optional<std::string> user = consoleUser()) fact->set("user", *user);
    if (const std::optional<std::string> processUser = userName(geteuid())) fact->set("processUser", *processUser);
    return fact;
}

}  // namespace tov
