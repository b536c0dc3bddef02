#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A graphics adapter with its current display mode; named by its description.
class QVIOKitDisplay : public QVRecordKind<QVIOKitDisplay, QVHardware> {
public:
    static constexpr const char* kClassName = "QVIOKitDisplay";

    static std::shared_ptr<QVIOKitDisplay> iokitDisplay();

    std::optional<std::string> getDescription() const;
    void setDescription(std::optional<std::string_view> description);
    std::optional<std::string> manufacturer() const;
    void setManufacturer(std::optional<std::string_view> manufacturer);
    // Refresh rate in Hz.
    std::int64_t frequency() const;
    void setFrequency(std::int64_t frequency);
    // Pixels.
    std::int64_t width() const;
    void setWidth(std::int64_t width);
    std::int64_t height() const;
    void setHeight(std::int64_t height);
    // Bits per pixel.
    std::int64_t depth() const;
    void setDepth(std::int64_t depth);

    std::optional<std::string> identifier() const override { return getDescription(); }
    // Description, then manufacturer; the mode is ignored.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
