// Hands arbitrary bytes to the /proc/meminfo and /proc/cpuinfo readers. Whatever the
// text, reading must end, stay within the processor bound and keep names printable.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "common/PrintableText.h"
#include "discovery/linux/CpuList.h"
#include "discovery/linux/ProcCpuInfo.h"
#include "discovery/linux/ProcMemInfo.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    tov::parseProcMemInfo(text);

    const tov::ProcCpuInfo cpuInfo = tov::parseProcCpuInfo(text);
    if (cpuInfo.processors.size() > tov::ProcCpuInfo::kMaximumProcessors) std::abort();
    const std::string name = cpuInfo.firstModelName();
    if (tov::printableText(name) != name) std::abort();
    if (tov::printableText(cpuInfo.boardModel) != cpuInfo.boardModel) std::abort();

    if (const auto cpus = tov::parseCpuList(text)) {
        for (std::uint32_t cpu : *cpus) {
            if (cpu >= tov::kCpuNumberLimit) std::abort();
        }
    }
    return 0;
}
