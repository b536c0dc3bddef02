#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// One memory module, named by its slot name. Every property is text as the system reports
// it, size and speed with their units.
class QVIOKitMemory : public QVRecordKind<QVIOKitMemory, QVHardware> {
public:
    static constexpr const char* kClassName = "QVIOKitMemory";

    static std::shared_ptr<QVIOKitMemory> ioKitMemory();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);
    // Stored under "serialnumber", in lower case.
    std::optional<std::string> serialNumber() const;
    void setSerialNumber(std::optional<std::string_view> serialNumber);
    std::optional<std::string> partNumber() const;
    void setPartNumber(std::optional<std::string_view> partNumber);
    std::optional<std::string> size() const;
    void setSize(std::optional<std::string_view> size);
    std::optional<std::string> speed() const;
    void setSpeed(std::optional<std::string_view> speed);
    std::optional<std::string> status() const;
    void setStatus(std::optional<std::string_view> status);
    std::optional<std::string> type() const;
    void setType(std::optional<std::string_view> type);
    std::optional<std::string> manufacturer() const;
    void setManufacturer(std::optional<std::string_view> manufacturer);

    std::optional<std::string> identifier() const override { return name(); }
    // Both must carry the same non-empty name.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
