#include "discovery/linux/LinuxSysCtlDiscoverer.h"

#include <gtest/gtest.h>

#include "discovery/QVDiscovererFactory.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"
#include "support/MemorySystemSource.h"
#include "support/SmbiosBytes.h"

namespace tov {
namespace {

using testing::MemoryDeviceBytes;
using testing::MemorySystemSource;

constexpr std::uint64_t kKiB = 1024;
constexpr std::uint64_t kGiB = 1024ull * 1024 * 1024;
const std::chrono::system_clock::time_point kWinter = std::chrono::system_clock::from_time_t(1768478400);
const std::chrono::system_clock::time_point kSummer = std::chrono::system_clock::from_time_t(1784116800);
constexpr const char* kCpuFolder = "/sys/devices/system/cpu/";

DictionaryRef sectionOf(const std::shared_ptr<MemorySystemSource>& source,
                        std::chrono::system_clock::time_point instant = kWinter) {
    return LinuxSysCtlDiscoverer(source, [instant] { return instant; }).discoverInfo();
}

template <class Record>
std::shared_ptr<Record> onlyRecord(const DictionaryRef& section, const char* category) {
    const ArrayRef records = section->get(category).array();
    if (!records || records->size() != 1) return nullptr;
    return std::dynamic_pointer_cast<Record>((*records)[0].record());
}

std::shared_ptr<QVSysCtlCpu> cpuOf(const std::shared_ptr<MemorySystemSource>& source) {
    return onlyRecord<QVSysCtlCpu>(sectionOf(source), "cpu");
}

std::shared_ptr<QVSysCtlMemory> memoryOf(const std::shared_ptr<MemorySystemSource>& source) {
    return onlyRecord<QVSysCtlMemory>(sectionOf(source), "memory");
}

void addCpu(MemorySystemSource& source, int cpu, int package, int core) {
    const std::string folder = kCpuFolder + std::string("cpu") + std::to_string(cpu) + "/topology/";
    source.file(folder + "physical_package_id", std::to_string(package) + "\n");
    source.file(folder + "core_id", std::to_string(core) + "\n");
}

void addCache(MemorySystemSource& source, int index, int level, const std::string& size) {
    const std::string folder = kCpuFolder + std::string("cpu0/cache/index") + std::to_string(index) + "/";
    source.file(folder + "level", std::to_string(level) + "\n");
    source.file(folder + "size", size + "\n");
}

std::string x86CpuInfo(const std::string& modelName, int processors, const std::string& megahertz) {
    std::string text;
    for (int cpu = 0; cpu < processors; ++cpu) {
        text += "processor\t: " + std::to_string(cpu) + "\nvendor_id\t: GenuineIntel\nmodel name\t: " + modelName +
                "\ncpu MHz\t\t: " + megahertz + "\n\n";
    }
    return text;
}

Value unameOf(const std::string& machine) {
    DictionaryRef uname = makeDictionary();
    uname->set("sysname", "Linux");
    uname->set("machine", machine);
    return Value(uname);
}

// A hybrid laptop: two P-cores of two threads (core ids 0 and 4) and four E-cores of one
// (8, 9, 10, 11), so 8 CPUs on 6 cores; soldered LPDDR5 in four 4 GB chips.
std::shared_ptr<MemorySystemSource> hybridLaptop() {
    auto source = std::make_shared<MemorySystemSource>();
    source->fact("uname", "", unameOf("x86_64"));
    source->link("/etc/localtime", "../usr/share/zoneinfo/America/New_York");
    source->file("/proc/cpuinfo", x86CpuInfo("13th Gen Intel(R) Core(TM) i7-1370P", 8, "400.000"));
    source->file("/proc/meminfo",
                 "MemTotal:       15990000 kB\nMemFree:  9000000 kB\nMemAvailable:   11990000 kB\n"
                 "SwapTotal:       2097148 kB\nSwapFree:        1048574 kB\n");
    source->file(kCpuFolder + std::string("online"), "0-7\n");
    const int cores[] = {0, 0, 4, 4, 8, 9, 10, 11};
    for (int cpu = 0; cpu < 8; ++cpu) addCpu(*source, cpu, 0, cores[cpu]);
    source->file(kCpuFolder + std::string("cpu0/cpufreq/base_frequency"), "1900000\n");
    source->file(kCpuFolder + std::string("cpu0/cpufreq/cpuinfo_max_freq"), "5200000\n");
    addCache(*source, 0, 1, "48K");
    addCache(*source, 1, 1, "32K");
    addCache(*source, 2, 2, "1280K");
    addCache(*source, 3, 3, "24576K");
    for (int chip = 0; chip < 4; ++chip) {
        MemoryDeviceBytes device;
        device.size = 4096;
        device.formFactor = 0x0B;
        device.memoryType = 0x23;
        source->file("/sys/firmware/dmi/entries/17-" + std::to_string(chip) + "/raw", device.bytes());
    }
    return source;
}

TEST(LinuxSysCtlDiscoverer, SectionHoldsTimezoneMemoryAndCpuInOrder) {
    LinuxSysCtlDiscoverer discoverer(hybridLaptop(), [] { return kWinter; });
    EXPECT_EQ(discoverer.sourceName(), "sysctl");
    const DictionaryRef section = discoverer.discoverInfo();
    std::vector<std::string> keys;
    for (const auto& [key, value] : *section) keys.push_back(key);
    EXPECT_EQ(keys, (std::vector<std::string>{"timezone", "memory", "cpu"}));
    EXPECT_TRUE(onlyRecord<QVSysCtlTimeZone>(section, "timezone"));
    EXPECT_TRUE(onlyRecord<QVSysCtlMemory>(section, "memory"));
    EXPECT_TRUE(onlyRecord<QVSysCtlCpu>(section, "cpu"));
}

TEST(LinuxSysCtlDiscoverer, TimeZoneTextIsTakenAtTheScanTime) {
    const auto source = hybridLaptop();
    EXPECT_EQ(onlyRecord<QVSysCtlTimeZone>(sectionOf(source, kWinter), "timezone")->timeZone(),
              "UTC-05:00 Eastern Standard Time");
    EXPECT_EQ(onlyRecord<QVSysCtlTimeZone>(sectionOf(source, kSummer), "timezone")->timeZone(),
              "UTC-04:00 Eastern Standard Time");
}

TEST(LinuxSysCtlDiscoverer, AnUnknownZoneIsTakenForUtc) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/etc/timezone", "Atlantis/Lost_City\n");
    EXPECT_EQ(onlyRecord<QVSysCtlTimeZone>(sectionOf(source), "timezone")->timeZone(),
              "UTC-00:00 Coordinated Universal Time");
}

TEST(LinuxSysCtlDiscoverer, HybridLaptopMemoryAndProcessor) {
    const auto source = hybridLaptop();
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalPhysicalMemory(), 16 * kGiB);
    EXPECT_EQ(memory->usedPhysicalMemory(), 4000000 * kKiB);
    EXPECT_EQ(memory->totalVirtualMemory(), 2097148 * kKiB);
    EXPECT_EQ(memory->usedVirtualMemory(), 1048574 * kKiB);

    const auto cpu = cpuOf(source);
    EXPECT_EQ(cpu->getDescription(), "13th Gen Intel(R) Core(TM) i7-1370P");
    EXPECT_EQ(cpu->physicalCores(), 6u);
    EXPECT_EQ(cpu->logicalCores(), 8u);
    EXPECT_EQ(cpu->processorSpeed(), 1900);
    EXPECT_EQ(cpu->architecture(), 7u);
    EXPECT_EQ(cpu->instructionSet(), 64u);
    EXPECT_EQ(cpu->l2CacheSize(), Value("1280"));
    EXPECT_EQ(cpu->l3CacheSize(), Value("24576"));
}

TEST(LinuxSysCtlDiscoverer, TwoSocketServerWithEmptySlots) {
    auto source = std::make_shared<MemorySystemSource>();
    source->fact("uname", "", unameOf("x86_64"));
    source->file("/proc/cpuinfo", x86CpuInfo("Intel(R) Xeon(R) CPU L5640 @ 2.27GHz", 8, "1596.000"));
    source->file("/proc/meminfo", "MemTotal: 32000000 kB\nMemAvailable: 30000000 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n");
    source->file(kCpuFolder + std::string("online"), "0-7\n");
    for (int cpu = 0; cpu < 8; ++cpu) addCpu(*source, cpu, cpu % 2, (cpu / 2) % 2 == 0 ? 0 : 10);
    for (int slot = 0; slot < 4; ++slot) {
        MemoryDeviceBytes dimm;
        dimm.size = slot % 2 == 0 ? 16384 : 0;
        source->file("/sys/firmware/dmi/entries/17-" + std::to_string(slot) + "/raw", dimm.bytes());
    }
    const auto cpu = cpuOf(source);
    EXPECT_EQ(cpu->physicalCores(), 4u);
    EXPECT_EQ(cpu->logicalCores(), 8u);
    EXPECT_EQ(cpu->processorSpeed(), 2270);
    EXPECT_EQ(cpu->l2CacheSize(), Value("0"));
    EXPECT_EQ(memoryOf(source)->totalPhysicalMemory(), 32 * kGiB);
    EXPECT_EQ(memoryOf(source)->usedVirtualMemory(), 0u);
}

TEST(LinuxSysCtlDiscoverer, ArmBoardWithoutDmi) {
    auto source = std::make_shared<MemorySystemSource>();
    source->fact("uname", "", unameOf("aarch64"));
    source->file("/proc/cpuinfo",
                 "processor\t: 0\nCPU implementer\t: 0x41\nCPU part\t: 0xd08\n\n"
                 "processor\t: 1\nCPU implementer\t: 0x41\nCPU part\t: 0xd08\n\n"
                 "Model\t\t: Raspberry Pi 4 Model B Rev 1.4\n");
    source->file("/proc/meminfo", "MemTotal: 3880000 kB\nMemAvailable: 3000000 kB\nSwapTotal: 102396 kB\nSwapFree: 102396 kB\n");
    source->file("/sys/firmware/devicetree/base/model", std::string("Raspberry Pi 4 Model B Rev 1.4") + '\0');
    source->file(kCpuFolder + std::string("online"), "0-1\n");
    addCpu(*source, 0, 0, 0);
    addCpu(*source, 1, 0, 1);
    source->file(kCpuFolder + std::string("cpu0/cpufreq/cpuinfo_max_freq"), "1500000\n");
    addCache(*source, 0, 1, "32K");
    addCache(*source, 1, 2, "1024K");

    const auto cpu = cpuOf(source);
    EXPECT_EQ(cpu->getDescription(), "Raspberry Pi 4 Model B Rev 1.4");
    EXPECT_EQ(cpu->architecture(), 16777228u);
    EXPECT_EQ(cpu->instructionSet(), 0u);
    EXPECT_EQ(cpu->physicalCores(), 2u);
    EXPECT_EQ(cpu->processorSpeed(), 1500);
    EXPECT_EQ(cpu->l2CacheSize(), Value("1024"));
    EXPECT_EQ(cpu->l3CacheSize(), Value("0"));
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalPhysicalMemory(), 3880000 * kKiB);
    EXPECT_EQ(memory->usedPhysicalMemory(), 880000 * kKiB);
    EXPECT_EQ(memory->usedVirtualMemory(), 0u);
}

TEST(LinuxSysCtlDiscoverer, VirtualMachineWithoutCpufreqTruncatesCpuMhz) {
    auto source = std::make_shared<MemorySystemSource>();
    source->fact("uname", "", unameOf("x86_64"));
    source->file("/proc/cpuinfo", x86CpuInfo("Intel Core Processor (Skylake, IBRS)", 2, "2095.076"));
    source->folder(kCpuFolder + std::string("cpu0"));
    source->folder(kCpuFolder + std::string("cpu1"));
    EXPECT_EQ(cpuOf(source)->processorSpeed(), 2095);
    EXPECT_EQ(cpuOf(source)->logicalCores(), 2u);
}

TEST(LinuxSysCtlDiscoverer, WithoutUnameTheCpuInfoFormTellsTheArchitecture) {
    auto x86 = std::make_shared<MemorySystemSource>();
    x86->file("/proc/cpuinfo", x86CpuInfo("AMD Ryzen 5 1600 Six-Core Processor", 1, "3200.000"));
    EXPECT_EQ(cpuOf(x86)->architecture(), 7u);
    EXPECT_EQ(cpuOf(x86)->instructionSet(), 64u);
    auto arm = std::make_shared<MemorySystemSource>();
    arm->file("/proc/cpuinfo", "processor\t: 0\nCPU implementer\t: 0x41\n");
    EXPECT_EQ(cpuOf(arm)->architecture(), 0u);
    EXPECT_EQ(cpuOf(arm)->instructionSet(), 0u);
}

TEST(LinuxSysCtlDiscoverer, GarbageMemInfoFallsBackToZerosOrTheModules) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/proc/meminfo", "MemTotal: ???\n\x01\x02\x03 garbage\nSwapTotal: many kB");
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalPhysicalMemory(), 0u);
    EXPECT_EQ(memory->usedPhysicalMemory(), 0u);
    EXPECT_EQ(memory->totalVirtualMemory(), 0u);
    MemoryDeviceBytes dimm;
    dimm.size = 8192;
    source->file("/sys/firmware/dmi/entries/17-0/raw", dimm.bytes());
    EXPECT_EQ(memoryOf(source)->totalPhysicalMemory(), 8 * kGiB);
}

TEST(LinuxSysCtlDiscoverer, OversizeProcFilesAreLeftOutAndTheRestStays) {
    auto source = hybridLaptop();
    source->file("/proc/meminfo", "MemTotal: 1 kB\n" + std::string(2 * 1024 * 1024, ' '));
    source->file("/proc/cpuinfo", std::string(9 * 1024 * 1024, 'x'));
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalPhysicalMemory(), 16 * kGiB);
    EXPECT_EQ(memory->usedPhysicalMemory(), 0u);
    const auto cpu = cpuOf(source);
    EXPECT_EQ(cpu->getDescription(), "");
    EXPECT_EQ(cpu->physicalCores(), 6u);
    EXPECT_EQ(cpu->processorSpeed(), 1900);
}

TEST(LinuxSysCtlDiscoverer, AnEmptyMachineGivesTheThreeRecordsWithZeros) {
    const DictionaryRef section = sectionOf(std::make_shared<MemorySystemSource>());
    EXPECT_EQ(onlyRecord<QVSysCtlTimeZone>(section, "timezone")->timeZone(), "UTC-00:00 Coordinated Universal Time");
    EXPECT_EQ(onlyRecord<QVSysCtlMemory>(section, "memory")->totalPhysicalMemory(), 0u);
    const auto cpu = onlyRecord<QVSysCtlCpu>(section, "cpu");
    EXPECT_EQ(cpu->getDescription(), "");
    EXPECT_EQ(cpu->logicalCores(), 0u);
    EXPECT_EQ(cpu->processorSpeed(), 0);
    EXPECT_EQ(cpu->architecture(), 0u);
}

TEST(LinuxSysCtlDiscoverer, TheFactoryMakesItForLinuxMachines) {
    QVDiscovererFactory::Options options;
    options.persistAddresses = false;
    QVDiscovererFactory factory(hybridLaptop(), options);
    for (const auto& discoverer : factory.sectionDiscoverers()) {
        if (discoverer->sourceName() != "sysctl") continue;
        EXPECT_NE(dynamic_cast<LinuxSysCtlDiscoverer*>(discoverer.get()), nullptr);
        EXPECT_EQ(discoverer->discoverInfo()->size(), 3u);
    }
}

}  // namespace
}  // namespace tov
