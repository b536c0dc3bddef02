#include "discovery/linux/LinuxKernelWordBits.h"

#include <gtest/gtest.h>

#include "discovery/SystemFacts.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

TEST(LinuxKernelWordBitsTest, SixtyFourBitMachines) {
    for (const char* machine : {"x86_64", "aarch64", "arm64", "ppc64le", "s390x", "riscv64", "mips64"}) {
        EXPECT_EQ(kernelWordBitsOfMachine(machine), 64U) << machine;
    }
}

TEST(LinuxKernelWordBitsTest, ThirtyTwoBitMachines) {
    for (const char* machine : {"i386", "i686", "armv7l", "armv6l", "mips", "ppc"}) {
        EXPECT_EQ(kernelWordBitsOfMachine(machine), 32U) << machine;
    }
}

TEST(LinuxKernelWordBitsTest, ReadsTheUnameFactAndAssumesSixtyFourWithoutIt) {
    testing::MemorySystemSource source;
    EXPECT_EQ(linuxKernelWordBits(source), 64U);
    DictionaryRef names = makeDictionary();
    names->set("machine", std::string("i686"));
    source.fact(facts::kUname, "", Value(names));
    EXPECT_EQ(linuxKernelWordBits(source), 32U);
}

}  // namespace
}  // namespace tov
