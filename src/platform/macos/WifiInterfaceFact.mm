#import <CoreWLAN/CoreWLAN.h>
#import <Foundation/Foundation.h>

#include <optional>
#include <string>

#include "common/QVSLogger.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

// CoreWLAN's classes are looked up by name at run time, never named in code: the binary
// then holds no reference to them, and a system without them has no Wi-Fi interface.

namespace tov {
namespace {

// The default Wi-Fi interface of the shared Wi-Fi client; nil without one.
CWInterface* clientInterface(Class clientClass) {
    if (![clientClass respondsToSelector:@selector(sharedWiFiClient)]) return nil;
    CWWiFiClient* client = [clientClass sharedWiFiClient];
    if (client == nil || ![client respondsToSelector:@selector(interface)]) return nil;
    return [client interface];
}

// The older class-level way to the default interface, for systems before the Wi-Fi client.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
CWInterface* classInterface(Class interfaceClass) {
    if (![interfaceClass respondsToSelector:@selector(interface)]) return nil;
    return [interfaceClass interface];
}
#pragma clang diagnostic pop

// The system's default Wi-Fi interface: the Wi-Fi client's when the class exists, else
// the interface class's own; nil when neither exists or there is no interface.
CWInterface* defaultInterface() {
    if (Class clientClass = NSClassFromString(@"CWWiFiClient")) return clientInterface(clientClass);
    if (Class interfaceClass = NSClassFromString(@"CWInterface")) return classInterface(interfaceClass);
    QVSLogger::debug("CoreWLAN is not available here.");
    return nil;
}

Value interfaceFact(CWInterface* wifi) {
    if (wifi == nil || ![wifi respondsToSelector:@selector(hardwareAddress)]) {
        QVSLogger::debug("The machine has no default Wi-Fi interface.");
        return Value();
    }
    const std::optional<std::string> address = stringOfCFString((__bridge CFTypeRef)[wifi hardwareAddress]);
    if (!address) {
        QVSLogger::debug("The default Wi-Fi interface tells no hardware address.");
        return Value();
    }
    DictionaryRef fact = makeDictionary();
    fact->set("hardwareAddress", *address);
    // nil when not associated, or when the system hides the network name from this process.
    NSString* ssid = [wifi respondsToSelector:@selector(ssid)] ? [wifi ssid] : nil;
    if (const std::optional<std::string> name = stringOfCFString((__bridge CFTypeRef)ssid)) fact->set("ssid", *name);
    return fact;
}

}  // namespace

Value wifiInterfaceFact(const std::string& /*key*/) {
    Value fact;
    @autoreleasepool {
        @try {
            fact = interfaceFact(defaultInterface());
        } @catch (NSException* exception) {
            const std::string reason = stringOfCFString((__bridge CFTypeRef)[exception reason]).value_or("");
            QVSLogger::warning("CoreWLAN failed while reading the default Wi-Fi interface: %s", reason.c_str());
            fact = Value();
        }
    }
    return fact;
}

}  // namespace tov
