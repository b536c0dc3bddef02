#pragma once

// The "coreaudio" section: { "sounds": [QVCoreAudioSound ...] }, one record per audio
// device whose name and manufacturer could both be read, in the system's device order,
// equal devices once (the first kept).

#include <memory>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"

namespace tov {

class QVCoreAudioHardwareDiscoverer : public QVSystemInfoDiscoverer {
public:
    static constexpr const char* kSourceName = "coreaudio";
    static constexpr const char* kSoundsKey = "sounds";

    explicit QVCoreAudioHardwareDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return kSourceName; }
    DictionaryRef discoverInfo() override;

    // [] when the device list cannot be read or is empty.
    ArrayRef discoverSoundHardware();

private:
    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
