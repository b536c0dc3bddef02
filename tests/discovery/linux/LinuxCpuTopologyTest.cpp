#include "discovery/linux/LinuxCpuTopology.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

void addCpu(MemorySystemSource& source, int cpu, int package, int core) {
    const std::string folder = "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/topology/";
    source.file(folder + "physical_package_id", std::to_string(package) + "\n");
    source.file(folder + "core_id", std::to_string(core) + "\n");
}

TEST(LinuxCpuTopology, HybridCoresCountDistinctPairsNotTheHighestId) {
    // Two P-cores of two threads (core ids 0 and 8), four E-cores of one (16 to 19).
    MemorySystemSource source;
    source.file("/sys/devices/system/cpu/online", "0-7\n");
    const int cores[] = {0, 0, 8, 8, 16, 17, 18, 19};
    for (int cpu = 0; cpu < 8; ++cpu) addCpu(source, cpu, 0, cores[cpu]);
    const LinuxCpuTopology topology = LinuxCpuTopology::read(source, ProcCpuInfo{});
    EXPECT_EQ(topology.logicalCores(), 8u);
    EXPECT_EQ(topology.physicalCores(), 6u);
}

TEST(LinuxCpuTopology, TwoSocketsWithTheSameCoreIdsCountTwice) {
    MemorySystemSource source;
    source.file("/sys/devices/system/cpu/online", "0-7");
    for (int cpu = 0; cpu < 8; ++cpu) addCpu(source, cpu, cpu % 2, (cpu / 2) % 2);
    const LinuxCpuTopology topology = LinuxCpuTopology::read(source, ProcCpuInfo{});
    EXPECT_EQ(topology.logicalCores(), 8u);
    EXPECT_EQ(topology.physicalCores(), 4u);
}

TEST(LinuxCpuTopology, OfflineCpusAreLeftOut) {
    MemorySystemSource source;
    source.file("/sys/devices/system/cpu/online", "0,2-3\n");
    for (int cpu = 0; cpu < 4; ++cpu) addCpu(source, cpu, 0, cpu);
    const LinuxCpuTopology topology = LinuxCpuTopology::read(source, ProcCpuInfo{});
    EXPECT_EQ(topology.onlineCpus(), (std::vector<std::uint32_t>{0, 2, 3}));
    EXPECT_EQ(topology.physicalCores(), 3u);
}

TEST(LinuxCpuTopology, WithoutAnOnlineListTheCpuFoldersAreCounted) {
    MemorySystemSource source;
    for (int cpu = 0; cpu < 3; ++cpu) addCpu(source, cpu, 0, cpu);
    source.folder("/sys/devices/system/cpu/cpufreq");
    source.folder("/sys/devices/system/cpu/cpuidle");
    source.file("/sys/devices/system/cpu/online", "garbage");
    const LinuxCpuTopology topology = LinuxCpuTopology::read(source, ProcCpuInfo{});
    EXPECT_EQ(topology.logicalCores(), 3u);
    EXPECT_EQ(topology.physicalCores(), 3u);
}

TEST(LinuxCpuTopology, WithoutSysfsTopologyCpuInfoTellsTheCores) {
    MemorySystemSource source;
    source.file("/sys/devices/system/cpu/online", "0-3\n");
    ProcCpuInfo cpuInfo;
    for (int cpu = 0; cpu < 4; ++cpu) {
        ProcCpuInfo::Processor processor;
        processor.physicalId = 0;
        processor.coreId = cpu / 2;
        cpuInfo.processors.push_back(processor);
    }
    const LinuxCpuTopology topology = LinuxCpuTopology::read(source, cpuInfo);
    EXPECT_EQ(topology.logicalCores(), 4u);
    EXPECT_EQ(topology.physicalCores(), 2u);
}

TEST(LinuxCpuTopology, NothingKnownGivesZero) {
    MemorySystemSource source;
    const LinuxCpuTopology topology = LinuxCpuTopology::read(source, ProcCpuInfo{});
    EXPECT_EQ(topology.logicalCores(), 0u);
    EXPECT_EQ(topology.physicalCores(), 0u);
}

TEST(LinuxCpuTopology, ALinkLoopInTheTopologyIsAMissingAttribute) {
    MemorySystemSource source;
    source.file("/sys/devices/system/cpu/online", "0-1\n");
    addCpu(source, 0, 0, 0);
    source.link("/sys/devices/system/cpu/cpu1/topology", "loop");
    source.link("/sys/devices/system/cpu/cpu1/loop", "topology");
    const LinuxCpuTopology topology = LinuxCpuTopology::read(source, ProcCpuInfo{});
    EXPECT_EQ(topology.logicalCores(), 2u);
    EXPECT_EQ(topology.physicalCores(), 1u);
}

}  // namespace
}  // namespace tov
