#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A mouse or trackpad, named by its description.
class QVIOKitPointingDevice : public QVRecordKind<QVIOKitPointingDevice, QVHardware> {
public:
    static constexpr const char* kClassName = "QVIOKitPointingDevice";

    static std::shared_ptr<QVIOKitPointingDevice> ioKitPointingDevice();

    std::optional<std::string> getDescription() const;
    void setDescription(std::optional<std::string_view> description);
    std::optional<std::string> manufacturer() const;
    void setManufacturer(std::optional<std::string_view> manufacturer);

    std::optional<std::string> identifier() const override { return getDescription(); }
    // Description, then manufacturer.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
