#include "platform/NativeFacts.h"

#include "discovery/SystemFacts.h"
#include "platform/PosixFacts.h"
#include "platform/linux/LinuxFacts.h"

namespace tov {

const FactTable& platformOnlyFacts() {
    static const FactTable functions{
        {facts::kBirthTime, birthTimeFact},
        {facts::kConsoleUser, consoleUserFact},
        {facts::kPermanentAddress, permanentAddressFact},
        {facts::kWifiNetwork, wifiNetworkFact},
    };
    return functions;
}

const char* hostPlatformName() { return "linux"; }

}  // namespace tov
