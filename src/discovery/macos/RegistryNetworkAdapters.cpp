#include "discovery/macos/RegistryNetworkAdapters.h"

#include <memory>
#include <string>
#include <vector>

#include "discovery/EqualRecordsOnce.h"
#include "discovery/macos/IOKitAdapterName.h"
#include "discovery/macos/MacAddressText.h"
#include "discovery/macos/RegistryProperty.h"
#include "discovery/macos/RegistryServices.h"
#include "model/QVIOKitNetwork.h"

namespace tov {
namespace {

constexpr const char* kEthernetControllerMatching = "IOEthernetController";

std::shared_ptr<QVIOKitNetwork> adapterRecord(const Dictionary& properties, QVSWiFiInterface& wiFiInterface) {
    const std::string macAddress = macAddressText(properties.get("IOMACAddress"));
    std::shared_ptr<QVIOKitNetwork> adapter = QVIOKitNetwork::ioKitNetwork();
    adapter->setVendor(stringProperty(properties, "IOVendor"));
    adapter->setAdapter(ioKitAdapterName(stringProperty(properties, "IOModel"), stringProperty(properties, "IOClass")));
    adapter->setMacAddress(macAddress);
    adapter->setSpeed(properties.get("IOLinkSpeed").toUInt64());
    adapter->setSsid(wiFiInterface.ssidWithMacAddress(macAddress));
    return adapter;
}

}  // namespace

ArrayRef networkAdaptersFromRegistry(SystemSource& source, QVSWiFiInterface& wiFiInterface) {
    std::vector<std::shared_ptr<QVIOKitNetwork>> records;
    for (const DictionaryRef& service : walkedRegistryServices(source, kEthernetControllerMatching)) {
        if (const DictionaryRef properties = serviceProperties(*service)) {
            records.push_back(adapterRecord(*properties, wiFiInterface));
        }
    }
    return equalRecordsOnce(records);
}

}  // namespace tov
