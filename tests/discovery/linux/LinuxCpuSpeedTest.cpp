#include "discovery/linux/LinuxCpuSpeed.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

constexpr const char* kCpufreq = "/sys/devices/system/cpu/cpu0/cpufreq/";

ProcCpuInfo cpuInfoOf(const std::string& modelName, std::optional<double> megahertz) {
    ProcCpuInfo info;
    ProcCpuInfo::Processor processor;
    processor.modelName = modelName;
    processor.megahertz = megahertz;
    info.processors.push_back(processor);
    return info;
}

TEST(LinuxCpuSpeed, BaseFrequencyComesFirst) {
    MemorySystemSource source;
    source.file(std::string(kCpufreq) + "base_frequency", "1900000\n");
    source.file(std::string(kCpufreq) + "cpuinfo_max_freq", "5200000\n");
    EXPECT_EQ(nominalCpuMegahertz(source, 0, cpuInfoOf("Intel(R) Xeon(R) CPU L5640 @ 2.27GHz", 400.0)), 1900);
}

TEST(LinuxCpuSpeed, ThenTheModelNameClock) {
    MemorySystemSource source;
    source.file(std::string(kCpufreq) + "cpuinfo_max_freq", "5200000\n");
    EXPECT_EQ(nominalCpuMegahertz(source, 0, cpuInfoOf("Intel(R) Xeon(R) CPU L5640 @ 2.27GHz", 1596.0)), 2270);
}

TEST(LinuxCpuSpeed, ThenTheMaximumFrequencyOfCpufreq) {
    MemorySystemSource source;
    source.file(std::string(kCpufreq) + "cpuinfo_max_freq", "1800000\n");
    EXPECT_EQ(nominalCpuMegahertz(source, 0, cpuInfoOf("", std::nullopt)), 1800);
}

TEST(LinuxCpuSpeed, WithoutCpufreqTheCpuMhzIsTruncated) {
    MemorySystemSource source;
    EXPECT_EQ(nominalCpuMegahertz(source, 0, cpuInfoOf("AMD EPYC 7B12", 2249.998)), 2249);
}

TEST(LinuxCpuSpeed, NothingKnownOrGarbageGivesZero) {
    MemorySystemSource source;
    source.file(std::string(kCpufreq) + "base_frequency", "fast\n");
    source.file(std::string(kCpufreq) + "cpuinfo_max_freq", "-1\n");
    EXPECT_EQ(nominalCpuMegahertz(source, 0, ProcCpuInfo{}), 0);
    EXPECT_EQ(nominalCpuMegahertz(source, 0, cpuInfoOf("", -5.0)), 0);
    EXPECT_EQ(nominalCpuMegahertz(source, 0, cpuInfoOf("", 1e300)), 0);
}

TEST(LinuxCpuSpeed, ModelNameClockTexts) {
    EXPECT_EQ(megahertzInModelName("Intel(R) Core(TM) i7-8650U CPU @ 1.90GHz"), 1900);
    EXPECT_EQ(megahertzInModelName("Intel(R) Xeon(R) CPU L5640 @ 2.27GHz"), 2270);
    EXPECT_EQ(megahertzInModelName("Some CPU @ 3GHz"), 3000);
    EXPECT_EQ(megahertzInModelName("Some CPU @ 2.1234GHz"), 2123);
    EXPECT_FALSE(megahertzInModelName("13th Gen Intel(R) Core(TM) i7-1370P"));
    EXPECT_FALSE(megahertzInModelName("Some CPU @ 800MHz"));
    EXPECT_FALSE(megahertzInModelName("Some CPU @ GHz"));
    EXPECT_FALSE(megahertzInModelName("Some CPU @ 99999999999999GHz"));
}

}  // namespace
}  // namespace tov
