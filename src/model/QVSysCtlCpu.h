#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/QVHardware.h"

namespace tov {

// The processor, named by its description.
class QVSysCtlCpu : public QVRecordKind<QVSysCtlCpu, QVHardware> {
public:
    static constexpr const char* kClassName = "QVSysCtlCpu";

    static std::shared_ptr<QVSysCtlCpu> sysCtlCpu();

    std::uint64_t physicalCores() const;
    void setPhysicalCores(std::uint64_t physicalCores);
    std::uint64_t logicalCores() const;
    void setLogicalCores(std::uint64_t logicalCores);
    // Codes of the kernel-parameter discoverer.
    std::uint64_t instructionSet() const;
    void setInstructionSet(std::uint64_t instructionSet);
    std::uint64_t architecture() const;
    void setArchitecture(std::uint64_t architecture);
    // Stored under "busSpeed".
    std::int64_t processorSpeed() const;
    void setProcessorSpeed(std::int64_t processorSpeed);

    // Cache sizes are text as the system reports it: a string value is stored as it is
    // (no trimming, no escape decoding); anything else, absence included, stores "0".
    // The getters return the stored value.
    Value l2CacheSize() const;
    void setL2CacheSize(const Value& size);
    Value l3CacheSize() const;
    void setL3CacheSize(const Value& size);

    std::optional<std::string> getDescription() const;
    void setDescription(std::optional<std::string_view> description);

    std::optional<std::string> identifier() const override { return getDescription(); }
    // Physical cores, instruction set, architecture, speed, then description; logical
    // cores and cache sizes are ignored.
    bool isEqual(const QVSystemInfo& other) const override;

private:
    void setCacheSize(const Value& size, std::string_view key);
};

}  // namespace tov
