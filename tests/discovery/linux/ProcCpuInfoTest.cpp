#include "discovery/linux/ProcCpuInfo.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

constexpr const char* kTwoX86Threads =
    "processor\t: 0\n"
    "vendor_id\t: GenuineIntel\n"
    "model name\t: Intel(R) Xeon(R) CPU E5-2620 v4 @ 2.10GHz\n"
    "cpu MHz\t\t: 1200.512\n"
    "physical id\t: 1\n"
    "core id\t\t: 3\n"
    "flags\t\t: fpu vme de pse\n"
    "\n"
    "processor\t: 1\n"
    "vendor_id\t: GenuineIntel\n"
    "model name\t: Intel(R) Xeon(R) CPU E5-2620 v4 @ 2.10GHz\n"
    "cpu MHz\t\t: 2100.000\n"
    "physical id\t: 1\n"
    "core id\t\t: 4\n"
    "\n";

constexpr const char* kArmBoard =
    "processor\t: 0\n"
    "BogoMIPS\t: 108.00\n"
    "CPU implementer\t: 0x41\n"
    "CPU architecture: 8\n"
    "CPU part\t: 0xd08\n"
    "\n"
    "processor\t: 1\n"
    "BogoMIPS\t: 108.00\n"
    "CPU implementer\t: 0x41\n"
    "CPU part\t: 0xd08\n"
    "\n"
    "Hardware\t: BCM2835\n"
    "Revision\t: c03114\n"
    "Model\t\t: Raspberry Pi 4 Model B Rev 1.4\n";

TEST(ProcCpuInfo, ReadsX86Blocks) {
    const ProcCpuInfo info = parseProcCpuInfo(kTwoX86Threads);
    ASSERT_EQ(info.processors.size(), 2u);
    EXPECT_EQ(info.firstModelName(), "Intel(R) Xeon(R) CPU E5-2620 v4 @ 2.10GHz");
    EXPECT_EQ(info.processors[0].vendorId, "GenuineIntel");
    EXPECT_DOUBLE_EQ(*info.firstMegahertz(), 1200.512);
    EXPECT_EQ(info.processors[0].physicalId, 1);
    EXPECT_EQ(info.processors[1].coreId, 4);
    EXPECT_TRUE(info.looksX86());
    EXPECT_EQ(info.boardModel, "");
}

TEST(ProcCpuInfo, ReadsArmBlocksAndTheBoardLinesAfterThem) {
    const ProcCpuInfo info = parseProcCpuInfo(kArmBoard);
    ASSERT_EQ(info.processors.size(), 2u);
    EXPECT_EQ(info.processors[1].implementer, "0x41");
    EXPECT_EQ(info.firstModelName(), "");
    EXPECT_FALSE(info.firstMegahertz());
    EXPECT_EQ(info.boardModel, "Raspberry Pi 4 Model B Rev 1.4");
    EXPECT_EQ(info.hardware, "BCM2835");
    EXPECT_FALSE(info.looksX86());
}

TEST(ProcCpuInfo, ThirtyTwoBitArmModelNamesAreNotTakenForX86) {
    const ProcCpuInfo info = parseProcCpuInfo(
        "processor\t: 0\nmodel name\t: ARMv7 Processor rev 4 (v7l)\nCPU implementer\t: 0x41\n\n");
    EXPECT_EQ(info.firstModelName(), "ARMv7 Processor rev 4 (v7l)");
    EXPECT_FALSE(info.looksX86());
}

TEST(ProcCpuInfo, ATextWithoutFinalLineBreakKeepsItsLastLine) {
    const ProcCpuInfo info = parseProcCpuInfo("processor\t: 0\nmodel name\t: Last Line CPU");
    ASSERT_EQ(info.processors.size(), 1u);
    EXPECT_EQ(info.firstModelName(), "Last Line CPU");
}

TEST(ProcCpuInfo, ThreeBytesOrGarbageGiveNoProcessors) {
    EXPECT_TRUE(parseProcCpuInfo("pro").processors.empty());
    EXPECT_TRUE(parseProcCpuInfo(std::string("\0\xff\n::\n", 6)).processors.empty());
    EXPECT_FALSE(parseProcCpuInfo("").looksX86());
}

TEST(ProcCpuInfo, BadNumbersStayUnknownAndNamesArePrintable) {
    const ProcCpuInfo info = parseProcCpuInfo(
        "processor : 0\ncpu MHz : fast\ncore id : 3x\nphysical id : \nmodel name : Odd\x07 CPU\xff\n");
    ASSERT_EQ(info.processors.size(), 1u);
    EXPECT_FALSE(info.processors[0].megahertz);
    EXPECT_FALSE(info.processors[0].coreId);
    EXPECT_FALSE(info.processors[0].physicalId);
    EXPECT_EQ(info.firstModelName(), "Odd CPU\xEF\xBF\xBD");
}

TEST(ProcCpuInfo, ProcessorCountIsBounded) {
    std::string text;
    for (std::size_t i = 0; i < ProcCpuInfo::kMaximumProcessors + 5; ++i) text += "processor : 0\n";
    EXPECT_EQ(parseProcCpuInfo(text).processors.size(), ProcCpuInfo::kMaximumProcessors);
}

}  // namespace
}  // namespace tov
