#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A sound device, named by its name.
class QVCoreAudioSound : public QVRecordKind<QVCoreAudioSound, QVHardware> {
public:
    static constexpr const char* kClassName = "QVCoreAudioSound";

    static std::shared_ptr<QVCoreAudioSound> coreAudioSound();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);
    std::optional<std::string> manufacturer() const;
    void setManufacturer(std::optional<std::string_view> manufacturer);

    std::optional<std::string> identifier() const override { return name(); }
    // Name, then manufacturer.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
