#include "discovery/macos/QVSysCtlHardwareInfoDiscoverer.h"

#include <cinttypes>
#include <cstdio>
#include <utility>

#include "common/StringData.h"
#include "common/TextUtils.h"
#include "discovery/SystemFacts.h"
#include "discovery/TimeZoneText.h"
#include "discovery/macos/QVSystemProfilerUtil.h"
#include "discovery/macos/QuerySysCTL.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"

namespace tov {
namespace {

constexpr const char* kActiveKey = "active";
constexpr const char* kWiredKey = "wired";
constexpr std::size_t kBrandStringBufferBytes = 256;
// CPU_TYPE_X86: the only type that is reported with the 64-bit instruction set.
constexpr std::int32_t kCpuTypeX86 = 7;
constexpr std::uint64_t kX86InstructionSet = 64;
constexpr std::uint64_t kHertzPerMegahertz = 1000000;

Value sysctlValue(SystemSource& source, const char* name) { return source.fact(facts::kSysctl, name); }

// A 32-bit parameter; wider numbers keep their low 32 bits as the kernel's int would.
std::int32_t int32Parameter(SystemSource& source, const char* name) {
    return static_cast<std::int32_t>(sysctlValue(source, name).toInt64());
}

// The fields of the swap usage that the memory totals read.
struct SwapUsage {
    std::uint64_t total = 0;
    std::uint64_t used = 0;
    std::uint32_t pageSize = 0;
};

SwapUsage swapUsage(SystemSource& source) {
    const DictionaryRef usage = sysctlValue(source, "vm.swapusage").dictionary();
    if (!usage) return {};
    return {usage->get("total").toUInt64(), usage->get("used").toUInt64(),
            static_cast<std::uint32_t>(usage->get("pageSize").toUInt64())};
}

// The swap figures are byte counts already; they are multiplied by the swap page size all
// the same, as the reports have always carried them, and pass through a double.
std::uint64_t swapProduct(std::uint64_t figure, std::uint32_t pageSize) {
    return clampedInteger<std::uint64_t>(static_cast<double>(figure * pageSize));
}

// The count's text: the words after the label joined by blanks, up to the first full
// stop; nothing when there is no full stop.
std::optional<std::string> countTextOf(const std::vector<std::string>& fields, std::size_t first) {
    std::string joined;
    for (std::size_t index = first; index < fields.size(); ++index) {
        if (index > first) joined += ' ';
        joined += fields[index];
    }
    const std::size_t stop = joined.find('.');
    if (stop == std::string::npos) return std::nullopt;
    return joined.substr(0, stop);
}

void storeCount(Dictionary& dictionary, const char* key, const std::vector<std::string>& fields, std::size_t first) {
    if (const std::optional<std::string> count = countTextOf(fields, first)) {
        dictionary.set(key, Value(leadingIntegerValue(*count)));
    }
}

// The pieces of text between the separators, the empty ones left out.
std::vector<std::string> nonEmptyComponents(std::string_view text, char separator) {
    std::vector<std::string> components;
    for (const std::string_view piece : splitAt(text, separator)) {
        if (!piece.empty()) components.emplace_back(piece);
    }
    return components;
}

// The text before the first unit, searched for in upper case only; nothing when the
// unit is written otherwise.
std::optional<std::string> numberTextBefore(const std::string& text, std::string_view unit) {
    const std::size_t position = text.find(unit);
    if (position == std::string::npos) return std::nullopt;
    return trimWhitespaceAndNewlines(std::string_view(text).substr(0, position));
}

std::string kilobytesOfMegabytes(const std::string& megabytes) {
    // Unsigned arithmetic wraps as the platform's long does, without undefined overflow.
    const auto kilobytes = static_cast<std::int64_t>(static_cast<std::uint64_t>(leadingIntegerValue(megabytes)) * 1024U);
    char text[32];
    std::snprintf(text, sizeof text, "%" PRId64, kilobytes);
    return text;
}

// The description: at most the 256 bytes of the kernel's buffer, up to the first zero
// byte, as UTF-8; nothing when those bytes are no valid UTF-8.
std::optional<std::string> brandString(SystemSource& source) {
    std::string bytes = QuerySysCTL(source, "machdep.cpu.brand_string").value_or("");
    bytes = bytes.substr(0, kBrandStringBufferBytes);
    bytes = bytes.substr(0, bytes.find('\0'));
    if (!isValidStringData(bytes)) return std::nullopt;
    return bytes;
}

// The cache sizes of the hardware profile: "" until read; a size whose key is missing
// becomes absent, which the record stores as "0".
struct CacheSizes {
    Value level2{""};
    Value level3{""};
};

// Reads one size into size. False when the value is no text: the platform raises there,
// the reading stops and the sizes not yet read keep "".
bool readCacheSize(const Dictionary& entry, const char* key, Value& size) {
    const Value value = entry.get(key);
    if (value.isAbsent()) {
        size = Value();
        return true;
    }
    const std::string* text = value.string();
    if (!text) return false;
    size = Value(*QVSysCtlHardwareInfoDiscoverer::getKBValueFromSizeString(*text));
    return true;
}

CacheSizes cacheSizes(SystemSource& source) {
    CacheSizes sizes;
    const DictionaryRef profile = QVSystemProfilerUtil::copyProfileForDataType(source, "SPHardwareDataType");
    const ArrayRef items = profile ? profile->get("_items").array() : nullptr;
    if (!items || items->empty()) return sizes;
    const DictionaryRef first = items->front().dictionary();
    if (!first) return sizes;
    if (readCacheSize(*first, "l2_cache_core", sizes.level2)) readCacheSize(*first, "l3_cache", sizes.level3);
    return sizes;
}

std::uint64_t signExtended(std::int32_t value) { return static_cast<std::uint64_t>(static_cast<std::int64_t>(value)); }

}  // namespace

QVSysCtlHardwareInfoDiscoverer::QVSysCtlHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source)
    : source_(std::move(source)) {}

DictionaryRef QVSysCtlHardwareInfoDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kTimezoneKey, discoverTimezone());
    section->set(kMemoryKey, discoveryMemory());
    section->set(kCpuKey, discoverCpu());
    return section;
}

ArrayRef QVSysCtlHardwareInfoDiscoverer::discoverTimezone() {
    const DictionaryRef zone = source_->fact(facts::kLocalTimeZone).dictionary();
    const std::int64_t offsetSeconds = zone ? zone->get("offsetSeconds").toInt64() : 0;
    const Value standardName = zone ? zone->get("standardName") : Value();
    auto record = QVSysCtlTimeZone::sysCtlTimeZone();
    record->setTimeZone(
        timeZoneStringWithTimeZone(offsetSeconds, standardName.isString() ? *standardName.string() : ""));
    return makeArray({Value(record)});
}

ArrayRef QVSysCtlHardwareInfoDiscoverer::discoveryMemory() {
    const std::uint64_t physicalBytes = sysctlValue(*source_, "hw.memsize").toUInt64();
    const std::uint64_t pageSize = source_->fact(facts::kPageSize).toUInt64();
    const SwapUsage swap = swapUsage(*source_);
    Dictionary pageCounts;
    populateDictionaryWithVmStatResponse(&pageCounts, vmStatResponse(*source_));
    const std::uint64_t activePages = pageCounts.get(kActiveKey).toUInt64();
    const std::uint64_t wiredPages = pageCounts.get(kWiredKey).toUInt64();

    auto record = QVSysCtlMemory::sysCtlMemory();
    record->setTotalPhysicalMemory(physicalBytes);
    record->setUsedPhysicalMemory((wiredPages + activePages) * pageSize);
    record->setTotalVirtualMemory(swapProduct(swap.total, swap.pageSize));
    record->setUsedVirtualMemory(swapProduct(swap.used, swap.pageSize));
    return makeArray({Value(record)});
}

ArrayRef QVSysCtlHardwareInfoDiscoverer::discoverCpu() {
    // A count below 1 made the platform ask the process's processor count, which never
    // reached the record: the record keeps the parameter's value.
    const std::int32_t logicalCores = int32Parameter(*source_, "hw.logicalcpu");
    const std::int32_t physicalCores = int32Parameter(*source_, "hw.physicalcpu");
    const std::uint64_t frequency = sysctlValue(*source_, "hw.cpufrequency").toUInt64();
    const std::optional<std::string> description = brandString(*source_);
    const std::int32_t cpuType = int32Parameter(*source_, "hw.cputype");
    const CacheSizes caches = cacheSizes(*source_);

    auto record = QVSysCtlCpu::sysCtlCpu();
    record->setDescription(description);
    record->setPhysicalCores(signExtended(physicalCores));
    record->setLogicalCores(signExtended(logicalCores));
    record->setProcessorSpeed(static_cast<std::int64_t>(frequency / kHertzPerMegahertz));
    record->setArchitecture(signExtended(cpuType));
    record->setInstructionSet(cpuType == kCpuTypeX86 ? kX86InstructionSet : 0);
    record->setL2CacheSize(caches.level2);
    record->setL3CacheSize(caches.level3);
    return makeArray({Value(record)});
}

std::optional<std::string> QVSysCtlHardwareInfoDiscoverer::getKBValueFromSizeString(
    const std::optional<std::string>& size) {
    if (!size) return size;
    // Only ASCII letters upper-case to K, B or M, so the ASCII upper case tells the unit.
    const std::string upper = asciiUppercase(*size);
    if (hasSuffix(upper, "KB")) return numberTextBefore(*size, "KB").value_or(*size);
    if (hasSuffix(upper, "MB")) {
        const std::optional<std::string> megabytes = numberTextBefore(*size, "MB");
        return megabytes ? kilobytesOfMegabytes(*megabytes) : *size;
    }
    return size;
}

std::string QVSysCtlHardwareInfoDiscoverer::vmStatResponse(SystemSource& source) {
    return source.runTool({kVmStatPath}).value_or("");
}

void QVSysCtlHardwareInfoDiscoverer::populateDictionaryWithVmStatResponse(Dictionary* dictionary,
                                                                          const std::string& response) {
    if (!dictionary || response.empty()) return;
    for (const std::string& line : nonEmptyComponents(response, '\n')) {
        populateDictionaryWithFields(dictionary, nonEmptyComponents(line, ' '));
    }
}

void QVSysCtlHardwareInfoDiscoverer::populateDictionaryWithFields(Dictionary* dictionary,
                                                                  const std::vector<std::string>& fields) {
    if (!dictionary || fields.size() < 2) return;
    if (fields[0] == "Pages" && fields[1] == "active:") storeCount(*dictionary, kActiveKey, fields, 2);
    if (fields[0] == "Pages" && fields[1] == "wired" && fields.size() > 2 && fields[2] == "down:") {
        storeCount(*dictionary, kWiredKey, fields, 3);
    }
}

}  // namespace tov
