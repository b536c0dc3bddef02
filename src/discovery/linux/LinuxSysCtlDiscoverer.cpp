#include "discovery/linux/LinuxSysCtlDiscoverer.h"

#include <optional>
#include <string>
#include <utility>

#include "common/QVSLogger.h"
#include "discovery/TimeZoneText.h"
#include "discovery/formats/SmbiosMemoryDevice.h"
#include "discovery/linux/CpuTypeCode.h"
#include "discovery/linux/LinuxCpuCaches.h"
#include "discovery/linux/LinuxCpuDescription.h"
#include "discovery/linux/LinuxCpuSpeed.h"
#include "discovery/linux/LinuxCpuTopology.h"
#include "discovery/linux/LinuxMemoryTotals.h"
#include "discovery/linux/LinuxSmbiosEntries.h"
#include "discovery/linux/LinuxTimeZoneId.h"
#include "discovery/linux/LinuxUname.h"
#include "discovery/linux/ProcCpuInfo.h"
#include "discovery/linux/ProcMemInfo.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"

namespace tov {
namespace {

constexpr const char* kMemInfoPath = "/proc/meminfo";
constexpr const char* kCpuInfoPath = "/proc/cpuinfo";
constexpr std::uint64_t kMemInfoReadLimit = 64 * 1024;
// About 1.5 KB per CPU on x86: room for several thousand CPUs.
constexpr std::uint64_t kCpuInfoReadLimit = 8 * 1024 * 1024;

std::string readProcText(SystemSource& source, const char* path, std::uint64_t limit) {
    std::optional<std::string> text = source.readFile(path, limit);
    if (!text) {
        QVSLogger::debug("%s cannot be read (missing or larger than %llu bytes); its values are left at 0.", path,
                         static_cast<unsigned long long>(limit));
        return "";
    }
    return std::move(*text);
}

ZoneAtInstant zoneOf(const std::string& zoneId, std::chrono::system_clock::time_point instant) {
    if (std::optional<ZoneAtInstant> zone = zoneAtInstant(zoneId, instant)) return std::move(*zone);
    QVSLogger::debug("The time-zone database does not know \"%s\"; UTC is taken.", zoneId.c_str());
    return zoneAtInstant(kUtcZoneId, instant).value_or(ZoneAtInstant{});
}

CpuTypeCode cpuTypeCodeOf(SystemSource& source, const ProcCpuInfo& cpuInfo) {
    const std::optional<std::string> machine = unameField(source, "machine");
    if (machine && !machine->empty()) return cpuTypeCodeOfMachine(*machine);
    QVSLogger::debug("No uname machine; the processor type is told by /proc/cpuinfo.");
    return cpuTypeCodeOfType(cpuInfo.looksX86() ? kCpuTypeX86 : 0);
}

Value cacheValue(const std::optional<std::string>& kilobytes) { return kilobytes ? Value(*kilobytes) : Value(); }

}  // namespace

LinuxSysCtlDiscoverer::LinuxSysCtlDiscoverer(std::shared_ptr<SystemSource> source, Clock clock)
    : source_(std::move(source)), clock_(std::move(clock)) {}

DictionaryRef LinuxSysCtlDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kTimezoneKey, discoverTimezone());
    section->set(kMemoryKey, discoveryMemory());
    section->set(kCpuKey, discoverCpu());
    return section;
}

ArrayRef LinuxSysCtlDiscoverer::discoverTimezone() {
    const ZoneAtInstant zone = zoneOf(linuxTimeZoneId(*source_), clock_());
    auto record = QVSysCtlTimeZone::sysCtlTimeZone();
    record->setTimeZone(timeZoneStringWithTimeZone(zone.offsetSeconds, zone.standardName));
    return makeArray({Value(record)});
}

ArrayRef LinuxSysCtlDiscoverer::discoveryMemory() {
    const ProcMemInfo memInfo = parseProcMemInfo(readProcText(*source_, kMemInfoPath, kMemInfoReadLimit));
    const std::optional<std::uint64_t> installed =
        installedMemoryBytes(smbiosEntriesOfType(*source_, SmbiosMemoryDevice::kType));
    if (!installed) QVSLogger::debug("No installed memory sizes in SMBIOS; MemTotal is the total.");
    const LinuxMemoryTotals totals = linuxMemoryTotals(installed, memInfo);

    auto record = QVSysCtlMemory::sysCtlMemory();
    record->setTotalPhysicalMemory(totals.totalPhysical);
    record->setUsedPhysicalMemory(totals.usedPhysical);
    record->setTotalVirtualMemory(totals.totalSwap);
    record->setUsedVirtualMemory(totals.usedSwap);
    return makeArray({Value(record)});
}

ArrayRef LinuxSysCtlDiscoverer::discoverCpu() {
    const ProcCpuInfo cpuInfo = parseProcCpuInfo(readProcText(*source_, kCpuInfoPath, kCpuInfoReadLimit));
    const LinuxCpuTopology topology = LinuxCpuTopology::read(*source_, cpuInfo);
    const std::uint32_t firstCpu = topology.onlineCpus().empty() ? 0 : topology.onlineCpus().front();
    const CpuTypeCode type = cpuTypeCodeOf(*source_, cpuInfo);
    const LinuxCpuCaches caches = linuxCpuCaches(*source_, firstCpu);

    auto record = QVSysCtlCpu::sysCtlCpu();
    record->setDescription(linuxCpuDescription(*source_, cpuInfo, type.architecture == kCpuTypeX86));
    record->setPhysicalCores(topology.physicalCores());
    record->setLogicalCores(topology.logicalCores());
    record->setProcessorSpeed(nominalCpuMegahertz(*source_, firstCpu, cpuInfo));
    record->setArchitecture(type.architecture);
    record->setInstructionSet(type.instructionSet);
    record->setL2CacheSize(cacheValue(caches.level2));
    record->setL3CacheSize(cacheValue(caches.level3));
    return makeArray({Value(record)});
}

}  // namespace tov
