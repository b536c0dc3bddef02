#include <CoreAudio/CoreAudio.h>

#include <optional>
#include <string>
#include <vector>

#include "common/QVSLogger.h"
#include "platform/macos/CoreFoundationValue.h"
#include "platform/macos/MacFacts.h"

namespace tov {
namespace {

// The main element, 0: kAudioObjectPropertyElementMain from macOS 12 on, formerly
// kAudioObjectPropertyElementMaster (deprecated there); the number builds on every SDK.
constexpr AudioObjectPropertyElement kMainElement = 0;

// The identifiers of the system's audio devices in its list order; nothing when the list
// cannot be read.
std::optional<std::vector<AudioObjectID>> deviceList() {
    const AudioObjectPropertyAddress address{kAudioHardwarePropertyDevices, kAudioObjectPropertyScopeGlobal,
                                             kMainElement};
    UInt32 size = 0;
    if (AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &address, 0, nullptr, &size) != noErr) {
        return std::nullopt;
    }
    std::vector<AudioObjectID> devices(size / sizeof(AudioObjectID));
    if (devices.empty()) return devices;
    UInt32 read = static_cast<UInt32>(devices.size() * sizeof(AudioObjectID));
    if (AudioObjectGetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, &read, devices.data()) != noErr) {
        return std::nullopt;
    }
    devices.resize(read / sizeof(AudioObjectID));
    return devices;
}

// A string property of the device in the input scope; nothing when the read fails.
std::optional<std::string> inputText(AudioObjectID device, AudioObjectPropertySelector selector) {
    const AudioObjectPropertyAddress address{selector, kAudioObjectPropertyScopeInput, kMainElement};
    CFStringRef text = nullptr;
    UInt32 size = sizeof text;
    const OSStatus status = AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, &text);
    // The caller owns the string the property gives.
    const OwnedCFReference<CFStringRef> owned(text);
    if (status != noErr || size != sizeof text) return std::nullopt;
    return stringOfCFString(owned.get());
}

Value deviceEntry(AudioObjectID device) {
    DictionaryRef entry = makeDictionary();
    if (std::optional<std::string> name = inputText(device, kAudioObjectPropertyName)) entry->set("name", *name);
    if (std::optional<std::string> maker = inputText(device, kAudioObjectPropertyManufacturer)) {
        entry->set("manufacturer", *maker);
    }
    return entry;
}

}  // namespace

Value audioDevicesFact(const std::string&) {
    const std::optional<std::vector<AudioObjectID>> devices = deviceList();
    if (!devices) {
        QVSLogger::debug("The audio device list cannot be read.");
        return Value();
    }
    ArrayRef entries = makeArray();
    for (const AudioObjectID device : *devices) entries->push_back(deviceEntry(device));
    return entries;
}

}  // namespace tov
