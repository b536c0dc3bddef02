#pragma once

// The macOS CPU-type code of a Linux machine, so that one collector reads the "sysctl"
// section of both platforms alike: x86 and x86-64 are CPU_TYPE_X86 (7), 64-bit Arm is
// CPU_TYPE_ARM64 (16777228), anything else 0. The instruction set is 64 for type 7 only.

#include <cstdint>
#include <string_view>

namespace tov {

inline constexpr std::uint64_t kCpuTypeX86 = 7;
inline constexpr std::uint64_t kCpuTypeArm64 = 16777228;

struct CpuTypeCode {
    std::uint64_t architecture = 0;
    std::uint64_t instructionSet = 0;
};

// The code of a CPU type as the macOS discoverer writes it: instruction set 64 when the
// type is exactly 7, else 0.
CpuTypeCode cpuTypeCodeOfType(std::uint64_t cpuType);

// From uname's machine: "x86_64", "i386" to "i686" give 7; "aarch64" and "arm64" give
// 16777228; others 0.
CpuTypeCode cpuTypeCodeOfMachine(std::string_view machine);

}  // namespace tov
