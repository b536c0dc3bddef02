#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVSystemInfo.h"

namespace tov {

// The user's time zone, named and told apart by its text.
class QVSysCtlTimeZone : public QVRecordKind<QVSysCtlTimeZone, QVSystemInfo> {
public:
    static constexpr const char* kClassName = "QVSysCtlTimeZone";

    static std::shared_ptr<QVSysCtlTimeZone> sysCtlTimeZone();

    std::optional<std::string> timeZone() const;
    void setTimeZone(std::optional<std::string_view> timeZone);

    std::optional<std::string> identifier() const override { return timeZone(); }
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
