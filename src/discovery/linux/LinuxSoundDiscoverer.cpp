#include "discovery/linux/LinuxSoundDiscoverer.h"

#include <utility>
#include <vector>

#include "common/QVSLogger.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/linux/AsoundCards.h"
#include "discovery/linux/LinuxBusVendor.h"
#include "model/QVCoreAudioSound.h"

namespace tov {
namespace {

constexpr const char* kCardsPath = "/proc/asound/cards";
constexpr std::uint64_t kCardsReadLimit = 64 * 1024;

}  // namespace

LinuxSoundDiscoverer::LinuxSoundDiscoverer(std::shared_ptr<SystemSource> source,
                                           std::shared_ptr<HardwareIds> hardwareIds)
    : source_(std::move(source)), hardwareIds_(std::move(hardwareIds)) {}

DictionaryRef LinuxSoundDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kSoundsKey, discoverSoundHardware());
    return section;
}

ArrayRef LinuxSoundDiscoverer::discoverSoundHardware() {
    const std::optional<std::string> text = source_->readFile(kCardsPath, kCardsReadLimit);
    if (!text) {
        QVSLogger::debug("No sound cards: %s cannot be read.", kCardsPath);
        return makeArray();
    }
    const std::vector<AsoundCard> cards = parseAsoundCards(*text);
    if (cards.empty()) QVSLogger::debug("No sound cards are listed in %s.", kCardsPath);
    std::vector<std::shared_ptr<QVCoreAudioSound>> sounds;
    for (const AsoundCard& card : cards) {
        const std::shared_ptr<QVCoreAudioSound> sound = QVCoreAudioSound::coreAudioSound();
        sound->setName(card.name);
        sound->setManufacturer(manufacturerOfCard(card.number));
        sounds.push_back(sound);
    }
    return equalRecordsOnce(sounds);
}

std::string LinuxSoundDiscoverer::manufacturerOfCard(int number) {
    const std::string deviceLink = "/sys/class/sound/card" + std::to_string(number) + "/device";
    const std::optional<BusVendor> vendor = linuxBusVendor(*source_, deviceLink);
    if (!vendor) return "";
    return hardwareIds_->vendorName(vendor->database, vendor->vendor);
}

}  // namespace tov
