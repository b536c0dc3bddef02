#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "model/QVSystemInfo.h"

namespace tov {

// The machine's memory totals in bytes, named by the total physical memory in decimal.
class QVSysCtlMemory : public QVRecordKind<QVSysCtlMemory, QVSystemInfo> {
public:
    static constexpr const char* kClassName = "QVSysCtlMemory";

    static std::shared_ptr<QVSysCtlMemory> sysCtlMemory();

    std::uint64_t totalPhysicalMemory() const;
    void setTotalPhysicalMemory(std::uint64_t bytes);
    std::uint64_t usedPhysicalMemory() const;
    void setUsedPhysicalMemory(std::uint64_t bytes);
    std::uint64_t totalVirtualMemory() const;
    void setTotalVirtualMemory(std::uint64_t bytes);
    std::uint64_t usedVirtualMemory() const;
    void setUsedVirtualMemory(std::uint64_t bytes);

    std::optional<std::string> identifier() const override { return std::to_string(totalPhysicalMemory()); }
    // Total physical, then total virtual memory; the used amounts are ignored.
    bool isEqual(const QVSystemInfo& other) const override;
};

}  // namespace tov
