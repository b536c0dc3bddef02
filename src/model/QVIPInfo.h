#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVSystemInfo.h"

namespace tov {

// The machine's local and public IPv4 addresses; one record per inventory, named "IP".
class QVIPInfo : public QVRecordKind<QVIPInfo, QVSystemInfo> {
public:
    static constexpr const char* kClassName = "QVIPInfo";

    static std::shared_ptr<QVIPInfo> ipInfo();

    // True for a dotted-quad IPv4 address without leading zeros or surrounding text.
    static bool isValidIpAddress(std::optional<std::string_view> address);

    // Setters store "" in place of anything that is not a valid address.
    std::optional<std::string> localIp() const;
    void setLocalIp(std::optional<std::string_view> address);
    std::optional<std::string> publicIp() const;
    void setPublicIp(std::optional<std::string_view> address);

    std::optional<std::string> identifier() const override { return std::string("IP"); }
    // The kind test runs the other way round from the other kinds: this record must be
    // of the other record's kind.
    bool isEqual(const QVSystemInfo& other) const override;

private:
    void setAddress(std::optional<std::string_view> address, std::string_view key);
};

}  // namespace tov
