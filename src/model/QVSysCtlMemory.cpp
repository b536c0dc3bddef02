#include "model/QVSysCtlMemory.h"

namespace tov {
namespace {

constexpr std::string_view kTotalPhysicalKey = "totalPhysicalRAMBytes";
constexpr std::string_view kUsedPhysicalKey = "usedPhysicalRAMBytes";
constexpr std::string_view kTotalVirtualKey = "totalVirtualRAMBytes";
constexpr std::string_view kUsedVirtualKey = "usedVirtualRAMBytes";

}  // namespace

std::shared_ptr<QVSysCtlMemory> QVSysCtlMemory::sysCtlMemory() { return std::make_shared<QVSysCtlMemory>(); }

std::uint64_t QVSysCtlMemory::totalPhysicalMemory() const { return valueForKey(kTotalPhysicalKey).toUInt64(); }
void QVSysCtlMemory::setTotalPhysicalMemory(std::uint64_t bytes) { setValue(kTotalPhysicalKey, Value(bytes)); }

std::uint64_t QVSysCtlMemory::usedPhysicalMemory() const { return valueForKey(kUsedPhysicalKey).toUInt64(); }
void QVSysCtlMemory::setUsedPhysicalMemory(std::uint64_t bytes) { setValue(kUsedPhysicalKey, Value(bytes)); }

std::uint64_t QVSysCtlMemory::totalVirtualMemory() const { return valueForKey(kTotalVirtualKey).toUInt64(); }
void QVSysCtlMemory::setTotalVirtualMemory(std::uint64_t bytes) { setValue(kTotalVirtualKey, Value(bytes)); }

std::uint64_t QVSysCtlMemory::usedVirtualMemory() const { return valueForKey(kUsedVirtualKey).toUInt64(); }
void QVSysCtlMemory::setUsedVirtualMemory(std::uint64_t bytes) { setValue(kUsedVirtualKey, Value(bytes)); }

bool QVSysCtlMemory::isEqual(const QVSystemInfo& other) const {
    if (!otherIsOfMyKind(other)) return false;
    const auto& memory = static_cast<const QVSysCtlMemory&>(other);
    return totalPhysicalMemory() == memory.totalPhysicalMemory() &&
           totalVirtualMemory() == memory.totalVirtualMemory();
}

}  // namespace tov
