#include "platform/NativeFacts.h"

#include "discovery/SystemFacts.h"
#include "platform/PosixFacts.h"
#include "platform/macos/MacFacts.h"

namespace tov {

const FactTable& platformOnlyFacts() {
    static const FactTable functions{
        {facts::kSysctl, sysctlFact},
        {facts::kPageSize, pageSizeFact},
        {facts::kRegistry, registryFact},
        {facts::kPowerSources, powerSourcesFact},
        {facts::kAudioDevices, audioDevicesFact},
        {facts::kWifiInterface, wifiInterfaceFact},
        {facts::kMacConsoleUser, macConsoleUserFact},
        {facts::kHostAndLocale, hostAndLocaleFact},
        {facts::kLocalTimeZone, localTimeZoneFact},
        {facts::kDirectoryUser, directoryUserFact},
        {facts::kVolumeIdentifier, volumeIdentifierFact},
        {facts::kBirthTime, birthTimeFact},
    };
    return functions;
}

const char* hostPlatformName() { return "macos"; }

}  // namespace tov
