#pragma once

// The native facts that only macOS answers (SystemFacts.h gives their shapes). Each
// adapter turns the framework's objects into a value tree and decides nothing else.

#include <string>

#include "model/Value.h"

namespace tov {

// sysctlbyname of the parameter named in key.
Value sysctlFact(const std::string& name);
// sysconf(_SC_PAGESIZE).
Value pageSizeFact(const std::string& key);
// The device registry's services matching the class (and HID usage pair) in key.
Value registryFact(const std::string& matching);
// IOPSCopyPowerSourcesInfo's descriptions.
Value powerSourcesFact(const std::string& key);
// CoreAudio's devices with their input-scope name and manufacturer.
Value audioDevicesFact(const std::string& key);
// CoreWLAN's default Wi-Fi interface (Objective-C++).
Value wifiInterfaceFact(const std::string& key);
// The system configuration store's console user and this process's user.
Value macConsoleUserFact(const std::string& key);
// The host's localized name and the current locale.
Value hostAndLocaleFact(const std::string& key);
// The local time zone.
Value localTimeZoneFact(const std::string& key);
// The directory's user record named in key (OpenDirectory, Objective-C++).
Value directoryUserFact(const std::string& userName);
// The identifier of the volume that holds the path in key.
Value volumeIdentifierFact(const std::string& path);
// The creation date of the path in key.
Value birthTimeFact(const std::string& path);

}  // namespace tov
