#include "discovery/linux/CpuTypeCode.h"

#include <array>

namespace tov {
namespace {

constexpr std::array<std::string_view, 5> kX86Machines{"x86_64", "i386", "i486", "i586", "i686"};
constexpr std::array<std::string_view, 2> kArm64Machines{"aarch64", "arm64"};

bool isOneOf(std::string_view machine, const auto& names) {
    for (std::string_view name : names) {
        if (machine == name) return true;
    }
    return false;
}

}  // namespace

CpuTypeCode cpuTypeCodeOfType(std::uint64_t cpuType) {
    return CpuTypeCode{cpuType, cpuType == kCpuTypeX86 ? 64u : 0u};
}

CpuTypeCode cpuTypeCodeOfMachine(std::string_view machine) {
    if (isOneOf(machine, kX86Machines)) return cpuTypeCodeOfType(kCpuTypeX86);
    if (isOneOf(machine, kArm64Machines)) return cpuTypeCodeOfType(kCpuTypeArm64);
    return cpuTypeCodeOfType(0);
}

}  // namespace tov
