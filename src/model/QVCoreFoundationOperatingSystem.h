#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVSystemInfo.h"

namespace tov {

// The operating system: its install date, last boot, build and edition. Dates are kept as
// UTC text (see UtcDateText.h); the record is named by the install date's raw text.
class QVCoreFoundationOperatingSystem : public QVRecordKind<QVCoreFoundationOperatingSystem, QVSystemInfo> {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    static constexpr const char* kClassName = "QVCoreFoundationOperatingSystem";

    static std::shared_ptr<QVCoreFoundationOperatingSystem> coreFoundationOperatingSystem();

    // Nothing when the stored text is empty or is not a UTC date.
    std::optional<TimePoint> osInstallDate() const;
    void setOSInstallDate(TimePoint installDate);
    void setOSInstallDateAsString(std::optional<std::string_view> installDate);
    std::optional<TimePoint> osLastBootTime() const;
    void setOSLastBootTime(TimePoint lastBootTime);
    void setOSLastBootTimeAsString(std::optional<std::string_view> lastBootTime);

    std::optional<std::string> build() const;
    void setBuild(std::optional<std::string_view> build);
    std::optional<std::string> edition() const;
    void setEdition(std::optional<std::string_view> edition);

    std::optional<std::string> identifier() const override;
    // Install date (the same instant), then build, then edition. Without a valid install
    // date a record equals no record, itself included.
    bool isEqual(const QVSystemInfo& other) const override;

private:
    std::optional<TimePoint> dateForKey(std::string_view key) const;
};

}  // namespace tov
