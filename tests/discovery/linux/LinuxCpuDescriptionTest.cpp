#include "discovery/linux/LinuxCpuDescription.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"
#include "support/SmbiosBytes.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

// A device-tree property: the text with its terminating NUL.
std::string property(const std::string& text) { return text + '\0'; }

ProcCpuInfo namedCpu(const std::string& modelName) {
    ProcCpuInfo info;
    info.processors.emplace_back();
    info.processors.back().modelName = modelName;
    return info;
}

TEST(LinuxCpuDescription, X86TakesTheModelName) {
    MemorySystemSource source;
    source.file("/sys/firmware/dmi/entries/4-0/raw", testing::smbiosProcessorBytes("Firmware Name"));
    EXPECT_EQ(linuxCpuDescription(source, namedCpu("13th Gen Intel(R) Core(TM) i7-1370P"), true),
              "13th Gen Intel(R) Core(TM) i7-1370P");
}

TEST(LinuxCpuDescription, X86WithoutModelNameFallsBackToTheFirmware) {
    MemorySystemSource source;
    source.file("/sys/firmware/dmi/entries/4-0/raw", testing::smbiosProcessorBytes("Intel(R) Xeon(R) CPU L5640"));
    EXPECT_EQ(linuxCpuDescription(source, ProcCpuInfo{}, true), "Intel(R) Xeon(R) CPU L5640");
}

TEST(LinuxCpuDescription, ArmPrefersTheSmbiosProcessorVersion) {
    MemorySystemSource source;
    source.file("/sys/firmware/dmi/entries/4-0/raw", testing::smbiosProcessorBytes("Not Specified"));
    source.file("/sys/firmware/dmi/entries/4-1/raw", testing::smbiosProcessorBytes("Ampere(R) Altra(R) Processor"));
    source.file("/proc/device-tree/model", property("Some Board"));
    EXPECT_EQ(linuxCpuDescription(source, ProcCpuInfo{}, false), "Ampere(R) Altra(R) Processor");
}

TEST(LinuxCpuDescription, ArmWithoutDmiTakesTheDeviceTreeModelWithoutItsNul) {
    MemorySystemSource source;
    source.file("/sys/firmware/devicetree/base/model", property("Raspberry Pi 4 Model B Rev 1.4"));
    EXPECT_EQ(linuxCpuDescription(source, ProcCpuInfo{}, false), "Raspberry Pi 4 Model B Rev 1.4");
    source.file("/proc/device-tree/model", property("Proc Tree Board"));
    EXPECT_EQ(linuxCpuDescription(source, ProcCpuInfo{}, false), "Proc Tree Board");
}

TEST(LinuxCpuDescription, ArmFallsBackToTheCpuInfoBoardModelThenTheModelName) {
    MemorySystemSource source;
    source.file("/proc/device-tree/model", property(""));
    ProcCpuInfo info = namedCpu("ARMv7 Processor rev 4 (v7l)");
    EXPECT_EQ(linuxCpuDescription(source, info, false), "ARMv7 Processor rev 4 (v7l)");
    info.boardModel = "Raspberry Pi 3 Model B Rev 1.2";
    EXPECT_EQ(linuxCpuDescription(source, info, false), "Raspberry Pi 3 Model B Rev 1.2");
}

TEST(LinuxCpuDescription, ControlCharactersAndInvalidUtf8AreCleaned) {
    MemorySystemSource source;
    source.file("/proc/device-tree/model", property("Board\x1b[2J \xff"));
    EXPECT_EQ(linuxCpuDescription(source, ProcCpuInfo{}, false), "Board[2J \xEF\xBF\xBD");
}

TEST(LinuxCpuDescription, NothingKnownIsEmpty) {
    MemorySystemSource source;
    EXPECT_EQ(linuxCpuDescription(source, ProcCpuInfo{}, false), "");
    EXPECT_EQ(linuxCpuDescription(source, ProcCpuInfo{}, true), "");
}

}  // namespace
}  // namespace tov
