#include "discovery/macos/QVCoreAudioHardwareDiscoverer.h"

#include <string_view>
#include <utility>
#include <vector>

#include "discovery/EqualRecordsOnce.h"
#include "discovery/SystemFacts.h"
#include "model/QVCoreAudioSound.h"

namespace tov {
namespace {

// The text under key; null when the read failed (no such key, or no text).
const std::string* textUnder(const Dictionary& device, std::string_view key) {
    const Value* value = device.find(key);
    return value ? value->string() : nullptr;
}

// The sound of one device entry; null when its name or manufacturer could not be read.
std::shared_ptr<QVCoreAudioSound> soundOf(const Value& entry) {
    const DictionaryRef device = entry.dictionary();
    if (!device) return nullptr;
    const std::string* name = textUnder(*device, "name");
    const std::string* manufacturer = textUnder(*device, "manufacturer");
    if (!name || !manufacturer) return nullptr;
    auto sound = QVCoreAudioSound::coreAudioSound();
    sound->setName(*name);
    sound->setManufacturer(*manufacturer);
    return sound;
}

}  // namespace

QVCoreAudioHardwareDiscoverer::QVCoreAudioHardwareDiscoverer(std::shared_ptr<SystemSource> source)
    : source_(std::move(source)) {}

DictionaryRef QVCoreAudioHardwareDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kSoundsKey, discoverSoundHardware());
    return section;
}

ArrayRef QVCoreAudioHardwareDiscoverer::discoverSoundHardware() {
    const ArrayRef devices = source_->fact(facts::kAudioDevices).array();
    if (!devices) return makeArray();
    std::vector<std::shared_ptr<QVCoreAudioSound>> sounds;
    for (const Value& entry : *devices) {
        if (std::shared_ptr<QVCoreAudioSound> sound = soundOf(entry)) sounds.push_back(std::move(sound));
    }
    return equalRecordsOnce(sounds);
}

}  // namespace tov
