#include "discovery/macos/RegistrySerialNumber.h"

#include "discovery/macos/RegistryProperty.h"
#include "discovery/macos/RegistryServices.h"

namespace tov {

std::optional<std::string> platformSerialNumberFromRegistry(SystemSource& source) {
    const DictionaryRef service = firstRegistryService(source, "IOPlatformExpertDevice");
    if (!service) return std::nullopt;
    const DictionaryRef properties = serviceProperties(*service);
    if (!properties) return std::nullopt;
    return stringProperty(*properties, "IOPlatformSerialNumber");
}

}  // namespace tov
