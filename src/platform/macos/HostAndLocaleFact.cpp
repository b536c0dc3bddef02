#include <CoreFoundation/CoreFoundation.h>
#include <SystemConfiguration/SystemConfiguration.h>

#include <optional>
#include <string>

#include "common/QVSLogger.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

namespace tov {
namespace {

// The computer name of the Sharing settings, which is the current host's localized name.
// Read from the system configuration store rather than through the host object, which
// resolves the host's addresses and can wait on the network.
std::optional<std::string> localizedHostName() {
    const OwnedCFReference<CFStringRef> name(SCDynamicStoreCopyComputerName(nullptr, nullptr));
    if (!name) {
        QVSLogger::debug("The system configuration store has no computer name.");
        return std::nullopt;
    }
    return stringOfCFString(name.get());
}

// The current locale's identifier ("en_US").
std::optional<std::string> currentLocaleIdentifier() {
    const OwnedCFReference<CFLocaleRef> locale(CFLocaleCopyCurrent());
    if (!locale) return std::nullopt;
    return stringOfCFString(CFLocaleGetIdentifier(locale.get()));
}

}  // namespace

Value hostAndLocaleFact(const std::string& /*key*/) {
    DictionaryRef fact = makeDictionary();
    if (const std::optional<std::string> name = localizedHostName()) fact->set("localizedName", *name);
    if (const std::optional<std::string> identifier = currentLocaleIdentifier()) {
        fact->set("localeIdentifier", *identifier);
    } else {
        QVSLogger::debug("The current locale has no identifier.");
    }
    return fact;
}

}  // namespace tov
