#include <IOKit/IOKitLib.h>

#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "common/QVSLogger.h"
#include "discovery/macos/RegistryMatchingKey.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

namespace tov {
namespace {

// MACH_PORT_NULL asks IOKit for its default main port on every SDK: the named constant
// changed (kIOMasterPortDefault is deprecated from macOS 12, kIOMainPortDefault is new there).
constexpr mach_port_t kDefaultMainPort = MACH_PORT_NULL;
// The class whose services carry the USB serial number searched for above them.
constexpr const char* kBlockStorageClass = "IOBlockStorageDevice";

// An IOKit object handle released when it goes out of scope.
class OwnedIOObject {
public:
    explicit OwnedIOObject(io_object_t object) : object_(object) {}
    OwnedIOObject(const OwnedIOObject&) = delete;
    OwnedIOObject& operator=(const OwnedIOObject&) = delete;
    ~OwnedIOObject() {
        if (object_ != IO_OBJECT_NULL) IOObjectRelease(object_);
    }
    io_object_t get() const { return object_; }

private:
    io_object_t object_;
};

// Sets key to a 32-bit number in the matching dictionary; false when the number cannot be made.
bool setNumber(CFMutableDictionaryRef dictionary, CFStringRef key, SInt32 value) {
    const OwnedCFReference<CFNumberRef> number(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &value));
    if (!number) return false;
    CFDictionarySetValue(dictionary, key, number.get());
    return true;
}

// The matching dictionary of the class, with the HID usage pair when the key names one.
OwnedCFReference<CFMutableDictionaryRef> matchingDictionary(const RegistryMatchingKey& key) {
    OwnedCFReference<CFMutableDictionaryRef> dictionary(IOServiceMatching(key.className.c_str()));
    if (!dictionary || !key.usagePage || !key.usage) return dictionary;
    if (!setNumber(dictionary.get(), CFSTR("PrimaryUsagePage"), *key.usagePage) ||
        !setNumber(dictionary.get(), CFSTR("PrimaryUsage"), *key.usage)) {
        return {};
    }
    return dictionary;
}

std::optional<std::string> pathOf(io_registry_entry_t service) {
    io_string_t path{};
    if (IORegistryEntryGetPath(service, kIOServicePlane, path) != KERN_SUCCESS) return std::nullopt;
    return std::string(path, strnlen(path, sizeof path));
}

Value propertiesOf(io_registry_entry_t service) {
    CFMutableDictionaryRef properties = nullptr;
    const kern_return_t result = IORegistryEntryCreateCFProperties(service, &properties, kCFAllocatorDefault, 0);
    const OwnedCFReference<CFMutableDictionaryRef> owned(properties);
    if (result != KERN_SUCCESS || !owned) return Value();
    Value tree = valueOfCFType(owned.get());
    return tree.isDictionary() ? tree : Value();
}

// "USB Serial Number" of the service or the first of its ancestors that has one.
Value usbSerialNumberAbove(io_registry_entry_t service) {
    const OwnedCFReference<CFTypeRef> found(IORegistryEntrySearchCFProperty(
        service, kIOServicePlane, CFSTR("USB Serial Number"), kCFAllocatorDefault,
        kIORegistryIterateRecursively | kIORegistryIterateParents));
    return valueOfCFType(found.get());
}

Value serviceEntry(io_registry_entry_t service, bool withUsbSerialNumber) {
    DictionaryRef entry = makeDictionary();
    if (std::optional<std::string> path = pathOf(service)) entry->set("path", std::move(*path));
    Value properties = propertiesOf(service);
    if (!properties.isAbsent()) entry->set("properties", std::move(properties));
    if (withUsbSerialNumber) {
        Value serial = usbSerialNumberAbove(service);
        if (!serial.isAbsent()) entry->set("usbSerialNumber", std::move(serial));
    }
    return entry;
}

}  // namespace

Value registryFact(const std::string& matching) {
    const std::optional<RegistryMatchingKey> key = parseRegistryMatchingKey(matching);
    if (!key) {
        QVSLogger::debug("The registry matching \"%s\" is not a class name with an optional usage pair.",
                         matching.c_str());
        return Value();
    }
    OwnedCFReference<CFMutableDictionaryRef> dictionary = matchingDictionary(*key);
    if (!dictionary) {
        QVSLogger::debug("No registry matching can be made for %s.", matching.c_str());
        return Value();
    }
    io_iterator_t iterator = IO_OBJECT_NULL;
    // The call consumes one reference of the matching dictionary, whatever its result: it
    // is given one of its own, and the owner here releases the first.
    CFRetain(dictionary.get());
    const kern_return_t result = IOServiceGetMatchingServices(kDefaultMainPort, dictionary.get(), &iterator);
    const OwnedIOObject services(iterator);
    if (result != KERN_SUCCESS || iterator == IO_OBJECT_NULL) {
        QVSLogger::debug("The registry has no services matching %s (%d).", matching.c_str(), result);
        return Value();
    }
    const bool withUsbSerialNumber = key->className == kBlockStorageClass;
    ArrayRef entries = makeArray();
    while (const io_object_t next = IOIteratorNext(services.get())) {
        const OwnedIOObject service(next);
        entries->push_back(serviceEntry(service.get(), withUsbSerialNumber));
    }
    return entries;
}

}  // namespace tov
