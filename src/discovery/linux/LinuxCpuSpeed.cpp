#include "discovery/linux/LinuxCpuSpeed.h"

#include <charconv>
#include <string>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "model/Value.h"

namespace tov {
namespace {

constexpr std::uint64_t kAttributeReadLimit = 4096;
constexpr std::int64_t kKilohertzPerMegahertz = 1000;
// A clock above 1 THz is no clock: such a text is taken for garbage.
constexpr std::int64_t kMostMegahertz = 1000 * 1000;

std::optional<std::int64_t> cpufreqMegahertz(SystemSource& source, std::uint32_t cpu, const char* attribute) {
    const std::string path = "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/cpufreq/" + attribute;
    const std::optional<std::string> text = source.readFile(path, kAttributeReadLimit);
    if (!text) return std::nullopt;
    const std::string trimmed = trimWhitespaceAndNewlines(*text);
    std::int64_t kilohertz = 0;
    const auto [end, error] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), kilohertz);
    if (error != std::errc() || end != trimmed.data() + trimmed.size() || kilohertz <= 0) return std::nullopt;
    const std::int64_t megahertz = kilohertz / kKilohertzPerMegahertz;
    if (megahertz > kMostMegahertz) return std::nullopt;
    return megahertz;
}

std::optional<std::int64_t> cpuInfoMegahertz(const ProcCpuInfo& cpuInfo) {
    const std::optional<double> megahertz = cpuInfo.firstMegahertz();
    if (!megahertz || !(*megahertz > 0) || *megahertz > kMostMegahertz) return std::nullopt;
    return clampedInteger<std::int64_t>(*megahertz);
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

std::optional<std::int64_t> megahertzInModelName(std::string_view modelName) {
    const std::size_t at = modelName.rfind('@');
    if (at == std::string_view::npos) return std::nullopt;
    std::string_view rest = modelName.substr(at + 1);
    while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
    // Whole gigahertz, then up to three decimals as megahertz, counted digit by digit so
    // that 2.27 gives exactly 2270.
    std::int64_t megahertz = 0;
    std::size_t digits = 0;
    for (; digits < rest.size() && isDigit(rest[digits]) && digits < 4; ++digits) {
        megahertz = megahertz * 10 + (rest[digits] - '0');
    }
    if (digits == 0) return std::nullopt;
    megahertz *= 1000;
    rest.remove_prefix(digits);
    if (!rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        std::int64_t scale = 100;
        while (!rest.empty() && isDigit(rest.front())) {
            megahertz += (rest.front() - '0') * scale;
            scale /= 10;
            rest.remove_prefix(1);
        }
    }
    if (!hasPrefix(rest, "GHz")) return std::nullopt;
    return megahertz;
}

std::int64_t nominalCpuMegahertz(SystemSource& source, std::uint32_t cpu, const ProcCpuInfo& cpuInfo) {
    if (const auto base = cpufreqMegahertz(source, cpu, "base_frequency")) return *base;
    if (const auto named = megahertzInModelName(cpuInfo.firstModelName())) return *named;
    if (const auto maximum = cpufreqMegahertz(source, cpu, "cpuinfo_max_freq")) return *maximum;
    if (const auto current = cpuInfoMegahertz(cpuInfo)) return *current;
    QVSLogger::debug("No processor clock: neither cpufreq nor /proc/cpuinfo tell it.");
    return 0;
}

}  // namespace tov
