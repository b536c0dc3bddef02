#include "discovery/linux/LinuxCpuTopology.h"

#include <charconv>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/linux/CpuList.h"

namespace tov {
namespace {

constexpr std::uint64_t kAttributeReadLimit = 4096;
using CorePlace = std::pair<std::int64_t, std::int64_t>;

std::string cpuPath(std::uint32_t cpu, const char* attribute) {
    return std::string(LinuxCpuTopology::kCpuFolder) + "/cpu" + std::to_string(cpu) + "/" + attribute;
}

std::optional<std::int64_t> integerAttribute(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = source.readFile(path, kAttributeReadLimit);
    if (!text) return std::nullopt;
    const std::string trimmed = trimWhitespaceAndNewlines(*text);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), number);
    if (error != std::errc() || end != trimmed.data() + trimmed.size()) return std::nullopt;
    return number;
}

// "cpu12" gives 12; "cpufreq", "cpuidle" and the like give nothing.
std::optional<std::uint32_t> cpuNumberOfFolder(const std::string& name) {
    if (!hasPrefix(name, "cpu") || name.size() == 3) return std::nullopt;
    std::uint32_t number = 0;
    const char* digits = name.data() + 3;
    const auto [end, error] = std::from_chars(digits, name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size() || number >= kCpuNumberLimit) return std::nullopt;
    return number;
}

std::vector<std::uint32_t> cpuFolders(SystemSource& source) {
    std::set<std::uint32_t> cpus;
    if (const auto names = source.listFolder(LinuxCpuTopology::kCpuFolder)) {
        for (const std::string& name : *names) {
            if (const std::optional<std::uint32_t> cpu = cpuNumberOfFolder(name)) cpus.insert(*cpu);
        }
    }
    return std::vector<std::uint32_t>(cpus.begin(), cpus.end());
}

std::vector<std::uint32_t> onlineCpusOf(SystemSource& source) {
    const std::string onlinePath = std::string(LinuxCpuTopology::kCpuFolder) + "/online";
    if (const std::optional<std::string> text = source.readFile(onlinePath, kAttributeReadLimit)) {
        std::optional<std::vector<std::uint32_t>> cpus = parseCpuList(*text);
        if (cpus && !cpus->empty()) return std::move(*cpus);
        QVSLogger::debug("%s is no CPU list; the cpu folders are counted instead.", onlinePath.c_str());
    } else {
        QVSLogger::debug("%s cannot be read; the cpu folders are counted instead.", onlinePath.c_str());
    }
    return cpuFolders(source);
}

std::set<CorePlace> sysfsCorePlaces(SystemSource& source, const std::vector<std::uint32_t>& cpus) {
    std::set<CorePlace> places;
    for (std::uint32_t cpu : cpus) {
        const std::optional<std::int64_t> package = integerAttribute(source, cpuPath(cpu, "topology/physical_package_id"));
        const std::optional<std::int64_t> core = integerAttribute(source, cpuPath(cpu, "topology/core_id"));
        if (package && core) places.emplace(*package, *core);
    }
    return places;
}

std::set<CorePlace> cpuInfoCorePlaces(const ProcCpuInfo& cpuInfo) {
    std::set<CorePlace> places;
    for (const ProcCpuInfo::Processor& processor : cpuInfo.processors) {
        if (processor.physicalId && processor.coreId) places.emplace(*processor.physicalId, *processor.coreId);
    }
    return places;
}

}  // namespace

LinuxCpuTopology LinuxCpuTopology::read(SystemSource& source, const ProcCpuInfo& cpuInfo) {
    LinuxCpuTopology topology;
    topology.onlineCpus_ = onlineCpusOf(source);
    std::set<CorePlace> places = sysfsCorePlaces(source, topology.onlineCpus_);
    if (places.empty()) {
        QVSLogger::debug("No CPU topology in %s; the cores come from /proc/cpuinfo.", kCpuFolder);
        places = cpuInfoCorePlaces(cpuInfo);
    }
    if (places.empty()) QVSLogger::debug("Neither sysfs nor /proc/cpuinfo tell the physical cores.");
    topology.physicalCores_ = places.size();
    return topology;
}

}  // namespace tov
