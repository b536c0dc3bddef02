#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// A printer known to the printing system, named by its queue name.
class QVAppKitPrinter : public QVRecordKind<QVAppKitPrinter, QVHardware> {
public:
    static constexpr const char* kClassName = "QVAppKitPrinter";

    static std::shared_ptr<QVAppKitPrinter> appKitPrinter();

    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);
    std::optional<std::string> driver() const;
    void setDriver(std::optional<std::string_view> driver);

    std::optional<std::string> identifier() const override { return name(); }
    // Name, then driver.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
