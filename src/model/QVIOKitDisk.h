#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A physical disk as the device registry shows it, named by its name.
class QVIOKitDisk : public QVRecordKind<QVIOKitDisk, QVHardware> {
public:
    static constexpr const char* kClassName = "QVIOKitDisk";

    static std::shared_ptr<QVIOKitDisk> ioKitDisk();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);
    // Stored under "serialNumber".
    std::optional<std::string> serialNo() const;
    void setSerialNo(std::optional<std::string_view> serialNo);
    bool isRemovable() const;
    void setRemovable(bool removable);

    std::optional<std::string> identifier() const override { return name(); }
    // Name, serial number, then the removable flag.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
