#include "discovery/linux/CpuTypeCode.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(CpuTypeCode, TypeSevenAloneHasTheSixtyFourBitInstructionSet) {
    EXPECT_EQ(cpuTypeCodeOfType(7).instructionSet, 64u);
    EXPECT_EQ(cpuTypeCodeOfType(7).architecture, 7u);
    EXPECT_EQ(cpuTypeCodeOfType(0x01000007).instructionSet, 0u);  // 7 with the 64-bit flag bit
    EXPECT_EQ(cpuTypeCodeOfType(12).instructionSet, 0u);
}

TEST(CpuTypeCode, MachinesMapToMacCpuTypes) {
    EXPECT_EQ(cpuTypeCodeOfMachine("x86_64").architecture, 7u);
    EXPECT_EQ(cpuTypeCodeOfMachine("x86_64").instructionSet, 64u);
    EXPECT_EQ(cpuTypeCodeOfMachine("i686").architecture, 7u);
    EXPECT_EQ(cpuTypeCodeOfMachine("aarch64").architecture, 16777228u);
    EXPECT_EQ(cpuTypeCodeOfMachine("aarch64").instructionSet, 0u);
    EXPECT_EQ(cpuTypeCodeOfMachine("riscv64").architecture, 0u);
    EXPECT_EQ(cpuTypeCodeOfMachine("armv7l").architecture, 0u);
    EXPECT_EQ(cpuTypeCodeOfMachine("").instructionSet, 0u);
}

}  // namespace
}  // namespace tov
