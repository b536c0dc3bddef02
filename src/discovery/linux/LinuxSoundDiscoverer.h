#pragma once

// The "coreaudio" section on Linux: the ALSA sound cards, as
// { "sounds": [QVCoreAudioSound ...] } with name = the card's name and manufacturer = the
// vendor name of the card's PCI or USB device ("" for a card of no such device). Equal
// records appear once, in card order.

#include <memory>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"

namespace tov {

class LinuxSoundDiscoverer : public QVSystemInfoDiscoverer {
public:
    static constexpr const char* kSoundsKey = "sounds";

    LinuxSoundDiscoverer(std::shared_ptr<SystemSource> source, std::shared_ptr<HardwareIds> hardwareIds);

    std::string sourceName() const override { return "coreaudio"; }
    DictionaryRef discoverInfo() override;

    ArrayRef discoverSoundHardware();

private:
    std::string manufacturerOfCard(int number);

    std::shared_ptr<SystemSource> source_;
    std::shared_ptr<HardwareIds> hardwareIds_;
};

}  // namespace tov
