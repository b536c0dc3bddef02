#include "discovery/linux/LinuxKernelWordBits.h"

#include <array>
#include <optional>
#include <string>

#include "common/TextUtils.h"
#include "discovery/linux/LinuxUname.h"

namespace tov {
namespace {

// Machine names of 32-bit kernels other than i?86 and arm* (whose 64-bit forms are
// x86_64, aarch64 and arm64).
constexpr std::array<std::string_view, 11> kThirtyTwoBitMachines{
    "mips", "mipsel", "ppc", "powerpc", "s390", "sparc", "m68k", "riscv32", "parisc", "sh4", "microblaze"};

bool isIntel32(std::string_view machine) {
    return machine.size() == 4 && machine[0] == 'i' && machine[1] >= '3' && machine[1] <= '6' &&
           machine.substr(2) == "86";
}

bool isArm32(std::string_view machine) { return hasPrefix(machine, "arm") && machine != "arm64"; }

}  // namespace

unsigned kernelWordBitsOfMachine(std::string_view machine) {
    if (isIntel32(machine) || isArm32(machine)) return 32;
    for (std::string_view name : kThirtyTwoBitMachines) {
        if (machine == name) return 32;
    }
    return 64;
}

unsigned linuxKernelWordBits(SystemSource& source) {
    const std::optional<std::string> machine = unameField(source, "machine");
    return machine ? kernelWordBitsOfMachine(*machine) : 64;
}

}  // namespace tov
