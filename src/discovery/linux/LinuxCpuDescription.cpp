#include "discovery/linux/LinuxCpuDescription.h"

#include <array>
#include <optional>
#include <string_view>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/formats/SmbiosProcessor.h"
#include "discovery/linux/LinuxSmbiosEntries.h"

namespace tov {
namespace {

constexpr std::uint64_t kModelReadLimit = 4096;
constexpr std::array<const char*, 2> kDeviceTreeModelPaths{"/proc/device-tree/model",
                                                           "/sys/firmware/devicetree/base/model"};
constexpr std::array<std::string_view, 4> kPlaceholders{"Not Specified", "Unknown", "To Be Filled By O.E.M.",
                                                        "Default string"};

bool isPlaceholder(std::string_view text) {
    for (std::string_view placeholder : kPlaceholders) {
        if (equalsIgnoringCase(text, placeholder)) return true;
    }
    return false;
}

std::optional<std::string> smbiosProcessorName(SystemSource& source) {
    for (const std::string& raw : smbiosEntriesOfType(source, kSmbiosProcessorType)) {
        std::optional<std::string> version = smbiosProcessorVersion(raw);
        if (version && !isPlaceholder(*version)) return version;
    }
    return std::nullopt;
}

// The device tree's model property ends with a NUL, which printableText drops.
std::optional<std::string> deviceTreeModel(SystemSource& source) {
    for (const char* path : kDeviceTreeModelPaths) {
        if (const std::optional<std::string> bytes = source.readFile(path, kModelReadLimit)) {
            std::string model = printableText(*bytes);
            if (!model.empty()) return model;
        }
    }
    return std::nullopt;
}

std::optional<std::string> unlessEmpty(std::string text) {
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<std::string> armName(SystemSource& source, const ProcCpuInfo& cpuInfo) {
    if (auto name = smbiosProcessorName(source)) return name;
    if (auto name = deviceTreeModel(source)) return name;
    if (auto name = unlessEmpty(cpuInfo.boardModel)) return name;
    return unlessEmpty(cpuInfo.firstModelName());
}

std::optional<std::string> x86Name(SystemSource& source, const ProcCpuInfo& cpuInfo) {
    if (auto name = unlessEmpty(cpuInfo.firstModelName())) return name;
    return smbiosProcessorName(source);
}

}  // namespace

std::string linuxCpuDescription(SystemSource& source, const ProcCpuInfo& cpuInfo, bool x86) {
    const std::optional<std::string> name = x86 ? x86Name(source, cpuInfo) : armName(source, cpuInfo);
    if (!name) {
        QVSLogger::debug("No processor name in /proc/cpuinfo, the firmware or the device tree.");
        return "";
    }
    return *name;
}

}  // namespace tov
