#include "model/QVSysCtlCpu.h"

namespace tov {
namespace {

constexpr std::string_view kPhysicalCoresKey = "physicalCores";
constexpr std::string_view kLogicalCoresKey = "logicalCores";
constexpr std::string_view kInstructionSetKey = "instructionSet";
constexpr std::string_view kArchitectureKey = "architecture";
constexpr std::string_view kProcessorSpeedKey = "busSpeed";
constexpr std::string_view kL2CacheSizeKey = "l2CacheSize";
constexpr std::string_view kL3CacheSizeKey = "l3CacheSize";
constexpr std::string_view kDescriptionKey = "description";

}  // namespace

std::shared_ptr<QVSysCtlCpu> QVSysCtlCpu::sysCtlCpu() { return std::make_shared<QVSysCtlCpu>(); }

std::uint64_t QVSysCtlCpu::physicalCores() const { return valueForKey(kPhysicalCoresKey).toUInt64(); }
void QVSysCtlCpu::setPhysicalCores(std::uint64_t physicalCores) {
    setValue(kPhysicalCoresKey, Value(physicalCores));
}

std::uint64_t QVSysCtlCpu::logicalCores() const { return valueForKey(kLogicalCoresKey).toUInt64(); }
void QVSysCtlCpu::setLogicalCores(std::uint64_t logicalCores) { setValue(kLogicalCoresKey, Value(logicalCores)); }

std::uint64_t QVSysCtlCpu::instructionSet() const { return valueForKey(kInstructionSetKey).toUInt64(); }
void QVSysCtlCpu::setInstructionSet(std::uint64_t instructionSet) {
    setValue(kInstructionSetKey, Value(instructionSet));
}

std::uint64_t QVSysCtlCpu::architecture() const { return valueForKey(kArchitectureKey).toUInt64(); }
void QVSysCtlCpu::setArchitecture(std::uint64_t architecture) { setValue(kArchitectureKey, Value(architecture)); }

std::int64_t QVSysCtlCpu::processorSpeed() const { return valueForKey(kProcessorSpeedKey).toInt64(); }
void QVSysCtlCpu::setProcessorSpeed(std::int64_t processorSpeed) {
    setValue(kProcessorSpeedKey, Value(processorSpeed));
}

Value QVSysCtlCpu::l2CacheSize() const { return valueForKey(kL2CacheSizeKey); }
void QVSysCtlCpu::setL2CacheSize(const Value& size) { setCacheSize(size, kL2CacheSizeKey); }

Value QVSysCtlCpu::l3CacheSize() const { return valueForKey(kL3CacheSizeKey); }
void QVSysCtlCpu::setL3CacheSize(const Value& size) { setCacheSize(size, kL3CacheSizeKey); }

std::optional<std::string> QVSysCtlCpu::getDescription() const { return stringForKey(kDescriptionKey); }
void QVSysCtlCpu::setDescription(std::optional<std::string_view> description) {
    setStringValue(description, kDescriptionKey);
}

bool QVSysCtlCpu::isEqual(const QVSystemInfo& other) const {
    if (!otherIsOfMyKind(other)) return false;
    const auto& cpu = static_cast<const QVSysCtlCpu&>(other);
    return physicalCores() == cpu.physicalCores() && instructionSet() == cpu.instructionSet() &&
           architecture() == cpu.architecture() && processorSpeed() == cpu.processorSpeed() &&
           stringEquals(other, kDescriptionKey);
}

void QVSysCtlCpu::setCacheSize(const Value& size, std::string_view key) {
    setValue(key, size.isString() ? size : Value("0"));
}

}  // namespace tov
