#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A battery, named by its name.
class QVIOKitBattery : public QVRecordKind<QVIOKitBattery, QVHardware> {
public:
    static constexpr const char* kClassName = "QVIOKitBattery";

    static std::shared_ptr<QVIOKitBattery> ioKitBattery();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);
    std::optional<std::string> serialNo() const;
    void setSerialNo(std::optional<std::string_view> serialNo);
    // Stored as a whole number, truncated toward zero (87.9 is kept as 87).
    float capacity() const;
    void setCapacity(float capacity);
    // Stored under "estimatedChargeRemaining".
    std::int64_t estimatedRunTime() const;
    void setEstimatedRunTime(std::int64_t estimatedRunTime);

    std::optional<std::string> identifier() const override { return name(); }
    // Name, then serial number.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
