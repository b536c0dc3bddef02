#include "discovery/macos/QVSysCtlHardwareInfoDiscoverer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "discovery/SystemFacts.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;
using Discoverer = QVSysCtlHardwareInfoDiscoverer;

const std::vector<std::string> kHardwareProfileArgv = {"/usr/sbin/system_profiler", "-xml", "SPHardwareDataType",
                                                       "-detailLevel", "mini"};

std::shared_ptr<MemorySystemSource> macSource() {
    return std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
}

// The one record of a category.
template <class Record>
std::shared_ptr<Record> onlyRecord(const ArrayRef& category) {
    if (!category || category->size() != 1) return nullptr;
    return std::dynamic_pointer_cast<Record>(category->front().record());
}

// A hardware profile as system_profiler prints it, with one entry of the given body.
std::string hardwareProfile(const std::string& itemBody) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<array>\n<dict>\n"
           "<key>_dataType</key><string>SPHardwareDataType</string>\n<key>_items</key>\n<array>\n<dict>\n"
           "<key>_name</key><string>hardware_overview</string>\n" +
           itemBody + "</dict>\n</array>\n</dict>\n</array>\n</plist>\n";
}

std::string stringEntry(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>\n";
}

Value zone(std::int64_t offsetSeconds, const std::string& standardName) {
    DictionaryRef tree = makeDictionary();
    tree->set("identifier", "Somewhere/Zone");
    tree->set("offsetSeconds", offsetSeconds);
    tree->set("standardName", standardName);
    return Value(tree);
}

Value swapUsage(std::uint64_t total, std::uint64_t used, std::uint64_t pageSize) {
    DictionaryRef tree = makeDictionary();
    tree->set("total", total);
    tree->set("available", total - used);
    tree->set("used", used);
    tree->set("pageSize", pageSize);
    tree->set("encrypted", 1);
    return Value(tree);
}

std::optional<std::string> timeZoneText(const Value& zoneFact) {
    auto source = macSource();
    if (!zoneFact.isAbsent()) source->fact(facts::kLocalTimeZone, "", zoneFact);
    return onlyRecord<QVSysCtlTimeZone>(Discoverer(source).discoverTimezone())->timeZone();
}

std::shared_ptr<QVSysCtlMemory> memoryOf(const std::shared_ptr<MemorySystemSource>& source) {
    return onlyRecord<QVSysCtlMemory>(Discoverer(source).discoveryMemory());
}

std::shared_ptr<QVSysCtlCpu> cpuOf(const std::shared_ptr<MemorySystemSource>& source) {
    return onlyRecord<QVSysCtlCpu>(Discoverer(source).discoverCpu());
}

Dictionary vmStatCounts(const std::string& response) {
    Dictionary counts;
    Discoverer::populateDictionaryWithVmStatResponse(&counts, response);
    return counts;
}

std::shared_ptr<QVSysCtlCpu> cpuWithType(const Value& cpuType) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.cputype", cpuType);
    return cpuOf(source);
}

std::shared_ptr<QVSysCtlCpu> cpuWithBrandString(const std::string& brand) {
    auto source = macSource();
    source->fact(facts::kSysctl, "machdep.cpu.brand_string", brand);
    return cpuOf(source);
}

std::shared_ptr<QVSysCtlCpu> cpuWithProfile(const std::string& profile) {
    auto source = macSource();
    source->tool(kHardwareProfileArgv, profile);
    return cpuOf(source);
}

// --- the section ---

TEST(MacSysCtlDiscoverer, NamesTheSectionSysctlWithItsThreeCategoriesInOrder) {
    Discoverer discoverer(macSource());
    EXPECT_EQ(discoverer.sourceName(), "sysctl");
    const DictionaryRef section = discoverer.discoverInfo();
    ASSERT_EQ(section->size(), 3U);
    EXPECT_EQ(section->entries()[0].first, "timezone");
    EXPECT_EQ(section->entries()[1].first, "memory");
    EXPECT_EQ(section->entries()[2].first, "cpu");
    EXPECT_TRUE(onlyRecord<QVSysCtlTimeZone>(section->get("timezone").array()));
    EXPECT_TRUE(onlyRecord<QVSysCtlMemory>(section->get("memory").array()));
    EXPECT_TRUE(onlyRecord<QVSysCtlCpu>(section->get("cpu").array()));
}

TEST(MacSysCtlDiscoverer, EachScanAsksTheMachineAgain) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.memsize", std::uint64_t{8589934592});
    Discoverer discoverer(source);
    EXPECT_EQ(onlyRecord<QVSysCtlMemory>(discoverer.discoveryMemory())->totalPhysicalMemory(), 8589934592U);
    source->fact(facts::kSysctl, "hw.memsize", std::uint64_t{17179869184});
    EXPECT_EQ(onlyRecord<QVSysCtlMemory>(discoverer.discoveryMemory())->totalPhysicalMemory(), 17179869184U);
}

// --- time zone ---

TEST(MacSysCtlDiscoverer, HalfHourEastZoneGivesMinusFiveAndItsStandardName) {
    EXPECT_EQ(timeZoneText(zone(19800, "India Standard Time")), "UTC-05:00 India Standard Time");
}

TEST(MacSysCtlDiscoverer, ZeroOffsetGivesMinusZeroAndTheName) {
    EXPECT_EQ(timeZoneText(zone(0, "Greenwich Mean Time")), "UTC-00:00 Greenwich Mean Time");
}

TEST(MacSysCtlDiscoverer, TenHoursWestGivesMinusZeroTen) {
    EXPECT_EQ(timeZoneText(zone(-36000, "Hawaii-Aleutian Standard Time")), "UTC-010:00 Hawaii-Aleutian Standard Time");
}

TEST(MacSysCtlDiscoverer, AMissingOrMistypedZoneReadsAsZeroOffsetWithoutAName) {
    EXPECT_EQ(timeZoneText(Value()), "UTC-00:00");
    EXPECT_EQ(timeZoneText(Value("Europe/Paris")), "UTC-00:00");
    DictionaryRef mistyped = makeDictionary();
    mistyped->set("offsetSeconds", "3600");
    mistyped->set("standardName", 7);
    EXPECT_EQ(timeZoneText(Value(mistyped)), "UTC-00:00");
}

// --- size texts ---

TEST(MacSysCtlDiscoverer, KilobytesLoseTheirUnit) {
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("256 KB"), "256");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString(" 512KB"), "512");
}

TEST(MacSysCtlDiscoverer, MegabytesBecomeKilobytes) {
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("4 MB"), "4096");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("6MB"), "6144");
}

TEST(MacSysCtlDiscoverer, UnitsNotInUpperCaseLeaveTheTextUnchanged) {
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("12 mb"), "12 mb");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("256 kb"), "256 kb");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("3 kB"), "3 kB");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("3 Mb"), "3 Mb");
}

TEST(MacSysCtlDiscoverer, OtherUnitsAndAbsenceStayAsTheyAre) {
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("8 GB"), "8 GB");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString(""), "");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("256 KB\n"), "256 KB\n");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString(std::nullopt), std::nullopt);
}

TEST(MacSysCtlDiscoverer, TheFirstUpperCaseUnitCutsTheText) {
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("1 KB of 2 KB"), "1");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("MB"), "0");
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("x MB"), "0");
}

TEST(MacSysCtlDiscoverer, HugeMegabyteCountsWrapInsteadOfOverflowing) {
    // The largest 64-bit count times 1024 wraps, as the platform's long does.
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("9223372036854775807 MB"), "-1024");
    // Beyond the 64-bit range the count saturates first.
    EXPECT_EQ(Discoverer::getKBValueFromSizeString("99999999999999999999999 MB"), "-1024");
}

// --- vm_stat ---

TEST(MacSysCtlDiscoverer, VmStatRunsOfBlanksSeparateTheWords) {
    const Dictionary counts = vmStatCounts(
        "Mach Virtual Memory Statistics: (page size of 4096 bytes)\n"
        "Pages free:                               12345.\n"
        "Pages active:                              1000.\n"
        "Pages  wired   down:                        500.\n"
        "Pages purgeable:                             77.\n");
    EXPECT_EQ(counts.size(), 2U);
    EXPECT_EQ(counts.get("active"), Value(1000));
    EXPECT_EQ(counts.get("wired"), Value(500));
}

TEST(MacSysCtlDiscoverer, UsedPhysicalMemoryIsActivePlusWiredPagesTimesThePageSize) {
    auto source = macSource();
    source->tool({"/usr/bin/vm_stat"}, "Pages active:   1000.\nPages wired down:    500.\n");
    source->fact(facts::kPageSize, "", 4096);
    EXPECT_EQ(memoryOf(source)->usedPhysicalMemory(), 1500U * 4096U);
}

TEST(MacSysCtlDiscoverer, AWiredLineOfTwoWordsIsIgnored) {
    EXPECT_TRUE(vmStatCounts("Pages wired\nPages\nPages active:\n").empty());
    Dictionary counts;
    Discoverer::populateDictionaryWithFields(&counts, {"Pages", "wired"});
    Discoverer::populateDictionaryWithFields(&counts, {"Pages"});
    Discoverer::populateDictionaryWithFields(&counts, {});
    EXPECT_TRUE(counts.empty());
}

TEST(MacSysCtlDiscoverer, FieldsAfterTheLabelAreJoinedAndCutAtTheFullStop) {
    Dictionary counts;
    Discoverer::populateDictionaryWithFields(&counts, {"Pages", "active:", "12", "34.5"});
    Discoverer::populateDictionaryWithFields(&counts, {"Pages", "wired", "down:", "77.", "88."});
    EXPECT_EQ(counts.get("active"), Value(12));
    EXPECT_EQ(counts.get("wired"), Value(77));
}

TEST(MacSysCtlDiscoverer, ACountWithoutItsFullStopIsLeftOut) {
    const Dictionary counts = vmStatCounts("Pages active: 1000\nPages wired down: 5");
    EXPECT_TRUE(counts.empty());
}

TEST(MacSysCtlDiscoverer, OtherLinesAndOtherLabelsAreIgnored) {
    const Dictionary counts = vmStatCounts(
        "Pages inactive: 3.\npages active: 4.\nPages wired: 5.\nPages wired up: 6.\nPages active:\t7.\n");
    EXPECT_TRUE(counts.empty());
}

TEST(MacSysCtlDiscoverer, NothingHappensWithoutADictionaryOrText) {
    Discoverer::populateDictionaryWithVmStatResponse(nullptr, "Pages active: 1.\n");
    Discoverer::populateDictionaryWithFields(nullptr, {"Pages", "active:", "1."});
    EXPECT_TRUE(vmStatCounts("").empty());
}

TEST(MacSysCtlDiscoverer, NonNumericCountsReadAsZero) {
    const Dictionary counts = vmStatCounts("Pages active: many.\nPages wired down: -12.\n");
    EXPECT_EQ(counts.get("active"), Value(0));
    EXPECT_EQ(counts.get("wired"), Value(-12));
}

TEST(MacSysCtlDiscoverer, VmStatIsRunWithoutArguments) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.tool({"/usr/bin/vm_stat"}, "text");
    EXPECT_EQ(Discoverer::vmStatResponse(source), "text");
    ASSERT_EQ(source.toolRuns().size(), 1U);
    EXPECT_EQ(source.toolRuns()[0], std::vector<std::string>{"/usr/bin/vm_stat"});
}

TEST(MacSysCtlDiscoverer, AFailedVmStatLeavesUsedPhysicalMemoryAtZero) {
    auto source = macSource();
    source->fact(facts::kPageSize, "", 16384);
    EXPECT_EQ(Discoverer::vmStatResponse(*source), "");
    EXPECT_EQ(memoryOf(source)->usedPhysicalMemory(), 0U);
    source->tool({"/usr/bin/vm_stat"}, "");
    EXPECT_EQ(memoryOf(source)->usedPhysicalMemory(), 0U);
}

// --- memory ---

TEST(MacSysCtlDiscoverer, MemoryTotalsComeFromTheKernelParameters) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.memsize", std::uint64_t{17179869184});
    source->fact(facts::kSysctl, "vm.swapusage", swapUsage(1073741824, 268435456, 4096));
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalPhysicalMemory(), 17179869184U);
    EXPECT_EQ(memory->identifier(), "17179869184");
}

TEST(MacSysCtlDiscoverer, SwapFiguresAreMultipliedByTheSwapPageSize) {
    auto source = macSource();
    source->fact(facts::kSysctl, "vm.swapusage", swapUsage(1073741824, 268435456, 4096));
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalVirtualMemory(), 4398046511104U);
    EXPECT_EQ(memory->usedVirtualMemory(), 1099511627776U);
}

TEST(MacSysCtlDiscoverer, SwapProductsWrapInSixtyFourBitsAndPassThroughADouble) {
    auto source = macSource();
    // 2^63 × 2 wraps to 0; 2^64 - 1 becomes 2^64 as a double, which is clamped back.
    source->fact(facts::kSysctl, "vm.swapusage",
                 swapUsage(std::uint64_t{1} << 63, 0, 2));
    EXPECT_EQ(memoryOf(source)->totalVirtualMemory(), 0U);
    source->fact(facts::kSysctl, "vm.swapusage", swapUsage(std::numeric_limits<std::uint64_t>::max(), 0, 1));
    EXPECT_EQ(memoryOf(source)->totalVirtualMemory(), std::numeric_limits<std::uint64_t>::max());
    // 2^53 + 1 has no double: the product loses its last bit.
    source->fact(facts::kSysctl, "vm.swapusage", swapUsage((std::uint64_t{1} << 53) + 1, 0, 1));
    EXPECT_EQ(memoryOf(source)->totalVirtualMemory(), std::uint64_t{1} << 53);
}

TEST(MacSysCtlDiscoverer, TheSwapPageSizeIsThirtyTwoBits) {
    auto source = macSource();
    source->fact(facts::kSysctl, "vm.swapusage", swapUsage(10, 0, (std::uint64_t{1} << 32) + 3));
    EXPECT_EQ(memoryOf(source)->totalVirtualMemory(), 30U);
}

TEST(MacSysCtlDiscoverer, MissingOrMistypedMemoryFactsReadAsZero) {
    EXPECT_EQ(memoryOf(macSource())->totalPhysicalMemory(), 0U);
    EXPECT_EQ(memoryOf(macSource())->totalVirtualMemory(), 0U);
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.memsize", "16 GB");
    source->fact(facts::kSysctl, "vm.swapusage", Value(makeArray({1, 2, 3})));
    source->fact(facts::kPageSize, "", "4096");
    source->tool({"/usr/bin/vm_stat"}, "Pages active: 10.\n");
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalPhysicalMemory(), 0U);
    EXPECT_EQ(memory->usedPhysicalMemory(), 0U);
    EXPECT_EQ(memory->totalVirtualMemory(), 0U);
    EXPECT_EQ(memory->usedVirtualMemory(), 0U);
}

TEST(MacSysCtlDiscoverer, HostileMemoryNumbersStayDefined) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.memsize", 1e300);
    source->fact(facts::kPageSize, "", -1);
    source->tool({"/usr/bin/vm_stat"}, "Pages active: 9223372036854775807.\nPages wired down: 9223372036854775807.\n");
    const auto memory = memoryOf(source);
    EXPECT_EQ(memory->totalPhysicalMemory(), std::numeric_limits<std::uint64_t>::max());
    // (2^63 - 1) × 2 = 2^64 - 2 pages, times 2^64 - 1 bytes, wraps to 2.
    EXPECT_EQ(memory->usedPhysicalMemory(), 2U);
}

// --- processor ---

TEST(MacSysCtlDiscoverer, TheProcessorComesFromItsKernelParameters) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.logicalcpu", 8);
    source->fact(facts::kSysctl, "hw.physicalcpu", 4);
    source->fact(facts::kSysctl, "hw.cpufrequency", std::uint64_t{2400000000});
    source->fact(facts::kSysctl, "machdep.cpu.brand_string", "Intel(R) Core(TM) i5-8279U CPU @ 2.40GHz");
    source->fact(facts::kSysctl, "hw.cputype", 7);
    source->tool(kHardwareProfileArgv,
                 hardwareProfile(stringEntry("l2_cache_core", "256 KB") + stringEntry("l3_cache", "6 MB")));
    const auto cpu = cpuOf(source);
    EXPECT_EQ(cpu->getDescription(), "Intel(R) Core(TM) i5-8279U CPU @ 2.40GHz");
    EXPECT_EQ(cpu->logicalCores(), 8U);
    EXPECT_EQ(cpu->physicalCores(), 4U);
    EXPECT_EQ(cpu->processorSpeed(), 2400);
    EXPECT_EQ(cpu->architecture(), 7U);
    EXPECT_EQ(cpu->instructionSet(), 64U);
    EXPECT_EQ(cpu->l2CacheSize(), Value("256"));
    EXPECT_EQ(cpu->l3CacheSize(), Value("6144"));
}

TEST(MacSysCtlDiscoverer, OnlyCpuTypeSevenHasTheSixtyFourBitInstructionSet) {
    EXPECT_EQ(cpuWithType(7)->instructionSet(), 64U);
    const auto withFlag = cpuWithType(0x01000007);
    EXPECT_EQ(withFlag->instructionSet(), 0U);
    EXPECT_EQ(withFlag->architecture(), 0x01000007U);
    EXPECT_EQ(cpuWithType(12)->instructionSet(), 0U);
    const auto appleSilicon = cpuWithType(16777228);
    EXPECT_EQ(appleSilicon->instructionSet(), 0U);
    EXPECT_EQ(appleSilicon->architecture(), 16777228U);
}

TEST(MacSysCtlDiscoverer, ThirtyTwoBitParametersAreSignExtended) {
    EXPECT_EQ(cpuWithType(-1)->architecture(), std::numeric_limits<std::uint64_t>::max());
    // A wider number keeps its low 32 bits: 2^32 + 7 is type 7.
    const auto wide = cpuWithType((std::int64_t{1} << 32) + 7);
    EXPECT_EQ(wide->architecture(), 7U);
    EXPECT_EQ(wide->instructionSet(), 64U);
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.physicalcpu", -2);
    EXPECT_EQ(cpuOf(source)->physicalCores(), std::numeric_limits<std::uint64_t>::max() - 1);
}

TEST(MacSysCtlDiscoverer, ALogicalCountBelowOneIsKept) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.logicalcpu", 0);
    source->fact(facts::kSysctl, "hw.physicalcpu", 4);
    EXPECT_EQ(cpuOf(source)->logicalCores(), 0U);
}

TEST(MacSysCtlDiscoverer, SpeedIsTheFrequencyInWholeMegahertz) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.cpufrequency", std::uint64_t{2599999999});
    EXPECT_EQ(cpuOf(source)->processorSpeed(), 2599);
    source->fact(facts::kSysctl, "hw.cpufrequency", std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(cpuOf(source)->processorSpeed(), 18446744073709);
}

TEST(MacSysCtlDiscoverer, AppleSiliconWithoutFrequencyOrCachesGivesZeros) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.cputype", 16777228);
    source->fact(facts::kSysctl, "machdep.cpu.brand_string", "Apple M1 Pro");
    source->tool(kHardwareProfileArgv,
                 hardwareProfile(stringEntry("chip_type", "Apple M1 Pro") + stringEntry("machine_model", "MacBookPro18,3")));
    const auto cpu = cpuOf(source);
    EXPECT_EQ(cpu->processorSpeed(), 0);
    EXPECT_EQ(cpu->getDescription(), "Apple M1 Pro");
    // Missing keys give absent sizes, which the record stores as "0".
    EXPECT_EQ(cpu->l2CacheSize(), Value("0"));
    EXPECT_EQ(cpu->l3CacheSize(), Value("0"));
}

TEST(MacSysCtlDiscoverer, MissingProcessorFactsReadAsZeroOrEmpty) {
    const auto cpu = cpuOf(macSource());
    EXPECT_EQ(cpu->getDescription(), "");
    EXPECT_EQ(cpu->logicalCores(), 0U);
    EXPECT_EQ(cpu->physicalCores(), 0U);
    EXPECT_EQ(cpu->processorSpeed(), 0);
    EXPECT_EQ(cpu->architecture(), 0U);
    EXPECT_EQ(cpu->instructionSet(), 0U);
}

TEST(MacSysCtlDiscoverer, MistypedProcessorFactsReadAsZeroOrEmpty) {
    auto source = macSource();
    source->fact(facts::kSysctl, "hw.logicalcpu", "8");
    source->fact(facts::kSysctl, "hw.physicalcpu", Value(makeDictionary()));
    source->fact(facts::kSysctl, "hw.cpufrequency", "2.4 GHz");
    source->fact(facts::kSysctl, "machdep.cpu.brand_string", 42);
    source->fact(facts::kSysctl, "hw.cputype", "7");
    const auto cpu = cpuOf(source);
    EXPECT_EQ(cpu->logicalCores(), 0U);
    EXPECT_EQ(cpu->physicalCores(), 0U);
    EXPECT_EQ(cpu->processorSpeed(), 0);
    EXPECT_EQ(cpu->getDescription(), "");
    EXPECT_EQ(cpu->instructionSet(), 0U);
}

TEST(MacSysCtlDiscoverer, ABrandStringIsReadToAtMostTwoHundredFiftySixBytes) {
    const std::string exact(256, 'A');
    EXPECT_EQ(cpuWithBrandString(exact)->getDescription(), exact);
    EXPECT_EQ(cpuWithBrandString(exact + "BEYOND")->getDescription(), exact);
}

TEST(MacSysCtlDiscoverer, ABrandStringEndsAtItsFirstZeroByte) {
    EXPECT_EQ(cpuWithBrandString(std::string("Intel\0garbage", 13))->getDescription(), "Intel");
    EXPECT_EQ(cpuWithBrandString(std::string("\0Intel", 6))->getDescription(), "");
}

TEST(MacSysCtlDiscoverer, ABrandStringThatIsNoUtf8GivesAnEmptyDescription) {
    EXPECT_EQ(cpuWithBrandString("Intel \xff Core")->getDescription(), "");
    // A character cut by the end of the buffer.
    EXPECT_EQ(cpuWithBrandString(std::string(255, 'A') + "\xc3\xa9")->getDescription(), "");
    EXPECT_EQ(cpuWithBrandString(std::string(254, 'A') + "\xc3\xa9")->getDescription(),
              std::string(254, 'A') + "\xc3\xa9");
}

TEST(MacSysCtlDiscoverer, TheHardwareProfileIsAskedAtTheMiniDetailLevel) {
    auto source = macSource();
    cpuOf(source);
    EXPECT_NE(std::find(source->toolRuns().begin(), source->toolRuns().end(), kHardwareProfileArgv),
              source->toolRuns().end());
}

TEST(MacSysCtlDiscoverer, WithoutAHardwareProfileBothCacheSizesAreEmpty) {
    const auto cpu = cpuOf(macSource());
    EXPECT_EQ(cpu->l2CacheSize(), Value(""));
    EXPECT_EQ(cpu->l3CacheSize(), Value(""));
    const auto garbage = cpuWithProfile("not a property list");
    EXPECT_EQ(garbage->l2CacheSize(), Value(""));
    EXPECT_EQ(garbage->l3CacheSize(), Value(""));
}

TEST(MacSysCtlDiscoverer, AProfileWithoutItemsLeavesBothCacheSizesEmpty) {
    const std::string noItems =
        "<plist version=\"1.0\"><array><dict><key>_dataType</key><string>SPHardwareDataType</string></dict></array></plist>";
    const std::string emptyItems = "<plist version=\"1.0\"><array><dict><key>_items</key><array/></dict></array></plist>";
    const std::string itemsNotAnArray =
        "<plist version=\"1.0\"><array><dict><key>_items</key><string>x</string></dict></array></plist>";
    const std::string itemNotADictionary =
        "<plist version=\"1.0\"><array><dict><key>_items</key><array><string>x</string></array></dict></array></plist>";
    for (const std::string& profile : {noItems, emptyItems, itemsNotAnArray, itemNotADictionary}) {
        const auto cpu = cpuWithProfile(profile);
        EXPECT_EQ(cpu->l2CacheSize(), Value("")) << profile;
        EXPECT_EQ(cpu->l3CacheSize(), Value("")) << profile;
    }
}

TEST(MacSysCtlDiscoverer, AMissingCacheKeyGivesZeroForThatSizeOnly) {
    const auto cpu = cpuWithProfile(hardwareProfile(stringEntry("l2_cache_core", "512 KB")));
    EXPECT_EQ(cpu->l2CacheSize(), Value("512"));
    EXPECT_EQ(cpu->l3CacheSize(), Value("0"));
}

TEST(MacSysCtlDiscoverer, CacheSizesInOtherUnitsAreKeptAsText) {
    const auto cpu = cpuWithProfile(hardwareProfile(stringEntry("l2_cache_core", "1 GB") + stringEntry("l3_cache", "12 mb")));
    EXPECT_EQ(cpu->l2CacheSize(), Value("1 GB"));
    EXPECT_EQ(cpu->l3CacheSize(), Value("12 mb"));
}

TEST(MacSysCtlDiscoverer, ASizeThatIsNoTextStopsTheReadingWhereItStands) {
    const auto l2Number =
        cpuWithProfile(hardwareProfile("<key>l2_cache_core</key><integer>262144</integer>\n" + stringEntry("l3_cache", "4 MB")));
    EXPECT_EQ(l2Number->l2CacheSize(), Value(""));
    EXPECT_EQ(l2Number->l3CacheSize(), Value(""));
    const auto l3Number =
        cpuWithProfile(hardwareProfile(stringEntry("l2_cache_core", "256 KB") + "<key>l3_cache</key><true/>\n"));
    EXPECT_EQ(l3Number->l2CacheSize(), Value("256"));
    EXPECT_EQ(l3Number->l3CacheSize(), Value(""));
}

}  // namespace
}  // namespace tov
