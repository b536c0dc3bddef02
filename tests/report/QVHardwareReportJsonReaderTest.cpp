#include "report/QVHardwareReportJsonReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "model/Json.h"
#include "model/QVAppKitPrinter.h"
#include "model/QVCoreAudioSound.h"
#include "model/QVCoreFoundationOperatingSystem.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitMemory.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVIOKitPointingDevice.h"
#include "model/QVIPInfo.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"
#include "report/QVHardwareReportJsonWriter.h"

namespace tov {
namespace {

using Reader = QVHardwareReportJsonReader;
using namespace std::chrono;

// What the reader takes from each list: the kind it makes and the members it reads.
struct ReadList {
    std::string section;
    std::string list;
    std::string kind;
    std::vector<std::string> keys;
};

const std::vector<ReadList>& readerTable() {
    static const std::vector<ReadList> table = {
        {"sysctl", "cpu", "QVSysCtlCpu", {"architecture", "busSpeed", "instructionSet", "physicalCores", "description"}},
        {"sysctl", "timezone", "QVSysCtlTimeZone", {"userTimezone"}},
        {"sysctl", "memory", "QVSysCtlMemory",
         {"totalPhysicalRAMBytes", "usedPhysicalRAMBytes", "totalVirtualRAMBytes", "usedVirtualRAMBytes"}},
        {"appkit", "printers", "QVAppKitPrinter", {"name", "driver"}},
        {"coreaudio", "sounds", "QVCoreAudioSound", {"name", "manufacturer"}},
        {"corefoundation", "operatingSystems", "QVCoreFoundationOperatingSystem",
         {"installDate", "lastBootTime", "build", "edition"}},
        {"diskutil", "disks", "QVDiskUtilDisk",
         {"name", "deviceName", "deviceId", "sizeBytes", "freeSpaceBytes", "fileSystem", "boot", "opticalMedia"}},
        {"iokit", "displays", "QVIOKitDisplay", {"adapterDescription", "manufacturer", "width", "height", "depth"}},
        {"iokit", "keyboards", "QVIOKitKeyboard", {"name"}},
        {"iokit", "pointingDevices", "QVIOKitPointingDevice", {"description", "manufacturer"}},
        {"iokit", "disks", "QVIOKitDisk", {"name", "serialNumber", "removable"}},
        {"iokit", "networkAdapters", "QVIOKitNetwork", {"adapterName", "manufacturer", "macAddress", "networkSpeed", "ssid"}},
        {"iokit", "batteries", "QVIOKitBattery", {"name", "serialNumber", "capacity", "estimatedChargeRemaining"}},
    };
    return table;
}

// Two filled records of every kind the reader reads (the second one's numbers and texts
// differ), with a scan-result mark that must not come back.
template <class Kind>
std::shared_ptr<Kind> marked(std::shared_ptr<Kind> record) {
    record->setScanResult(2);
    return record;
}

Value cpus() {
    auto first = marked(QVSysCtlCpu::sysCtlCpu());
    first->setPhysicalCores(8);
    first->setLogicalCores(8);
    first->setInstructionSet(12);
    first->setArchitecture(5);
    first->setProcessorSpeed(3200);
    first->setL2CacheSize(Value("4 MB"));
    first->setDescription("Apple M1");
    auto second = marked(QVSysCtlCpu::sysCtlCpu());
    second->setPhysicalCores(4);
    second->setInstructionSet(7);
    second->setArchitecture(7);
    second->setProcessorSpeed(-1);
    second->setDescription("Intel(R) Core(TM) i5-8259U CPU @ 2.30GHz");
    return Value(makeArray({first, second}));
}

Value timeZones() {
    auto first = marked(QVSysCtlTimeZone::sysCtlTimeZone());
    first->setTimeZone("(UTC+01:00) Central European Standard Time");
    auto second = marked(QVSysCtlTimeZone::sysCtlTimeZone());
    second->setTimeZone("(UTC-05:00) Eastern Standard Time");
    return Value(makeArray({first, second}));
}

Value memoryTotals() {
    auto first = marked(QVSysCtlMemory::sysCtlMemory());
    first->setTotalPhysicalMemory(17179869184u);
    first->setUsedPhysicalMemory(9000000000u);
    first->setTotalVirtualMemory(2147483648u);
    first->setUsedVirtualMemory(1000000000u);
    auto second = marked(QVSysCtlMemory::sysCtlMemory());
    second->setTotalPhysicalMemory(std::numeric_limits<std::uint64_t>::max());
    second->setUsedPhysicalMemory(0);
    second->setTotalVirtualMemory(68719476736u);
    second->setUsedVirtualMemory(34359738368u);
    return Value(makeArray({first, second}));
}

Value printers() {
    auto first = marked(QVAppKitPrinter::appKitPrinter());
    first->setName("Office_LaserJet");
    first->setDriver("HP LaserJet Series PCL 6");
    auto second = marked(QVAppKitPrinter::appKitPrinter());
    second->setName("Label_Printer");
    second->setDriver("DYMO LabelWriter 450");
    return Value(makeArray({first, second}));
}

Value sounds() {
    auto first = marked(QVCoreAudioSound::coreAudioSound());
    first->setName("MacBook Pro Speakers");
    first->setManufacturer("Apple Inc.");
    auto second = marked(QVCoreAudioSound::coreAudioSound());
    second->setName("USB Audio Device");
    second->setManufacturer("C-Media Electronics Inc.");
    return Value(makeArray({first, second}));
}

Value operatingSystemRecords() {
    auto first = marked(QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem());
    first->setOSInstallDate(sys_days{2023y / November / 2} + 7h + 45min + 10s);
    first->setOSLastBootTime(sys_days{2024y / March / 15} + 8h + 1min + 2s);
    first->setBuild("23D60");
    first->setEdition("macOS 14.3.1");
    auto second = marked(QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem());
    second->setOSInstallDate(sys_days{2021y / June / 30} + 23h + 59min + 59s);
    second->setOSLastBootTime(sys_days{2024y / January / 1} + 0h + 0min + 1s);
    second->setBuild("20G165");
    second->setEdition("macOS 11.6");
    return Value(makeArray({first, second}));
}

Value volumes() {
    auto first = marked(QVDiskUtilDisk::diskUtilDisk());
    first->setName("Macintosh HD");
    first->setDeviceName("APPLE SSD AP0512Q");
    first->setIdentifier("disk3s1");
    first->setSize(494384795648u);
    first->setFreeSpace(300000000000u);
    first->setFileSystem("APFS");
    first->setBootVolume(true);
    auto second = marked(QVDiskUtilDisk::diskUtilDisk());
    second->setName("Install DVD");
    second->setDeviceName("MATSHITA DVD-R UJ-8A8");
    second->setIdentifier("disk5");
    second->setSize(4700000000u);
    second->setFreeSpace(0);
    second->setFileSystem("UDF");
    second->setOpticalMedia(true);
    return Value(makeArray({first, second}));
}

Value displays() {
    auto first = marked(QVIOKitDisplay::iokitDisplay());
    first->setDescription("Apple M1");
    first->setManufacturer("Apple");
    first->setFrequency(60);
    first->setWidth(2560);
    first->setHeight(1600);
    first->setDepth(32);
    auto second = marked(QVIOKitDisplay::iokitDisplay());
    second->setDescription("Intel Iris Plus Graphics 655");
    second->setManufacturer("Intel");
    second->setWidth(1920);
    second->setHeight(1080);
    second->setDepth(24);
    return Value(makeArray({first, second}));
}

Value keyboards() {
    auto first = marked(QVIOKitKeyboard::ioKitKeyboard());
    first->setName("Apple Internal Keyboard / Trackpad");
    auto second = marked(QVIOKitKeyboard::ioKitKeyboard());
    second->setName("Magic Keyboard with Numeric Keypad");
    return Value(makeArray({first, second}));
}

Value pointingDevices() {
    auto first = marked(QVIOKitPointingDevice::ioKitPointingDevice());
    first->setDescription("Apple Internal Keyboard / Trackpad");
    first->setManufacturer("Apple Inc.");
    auto second = marked(QVIOKitPointingDevice::ioKitPointingDevice());
    second->setDescription("USB Optical Mouse");
    second->setManufacturer("Logitech");
    return Value(makeArray({first, second}));
}

Value disks() {
    auto first = marked(QVIOKitDisk::ioKitDisk());
    first->setName("APPLE SSD AP0512Q Media");
    first->setSerialNo("0ba0123456789abc");
    first->setRemovable(false);
    auto second = marked(QVIOKitDisk::ioKitDisk());
    second->setName("SanDisk Ultra USB 3.0 Media");
    second->setSerialNo("4C530001230815117433");
    second->setRemovable(true);
    return Value(makeArray({first, second}));
}

Value networkAdapters() {
    auto first = marked(QVIOKitNetwork::ioKitNetwork());
    first->setAdapter("en0");
    first->setVendor("Apple");
    first->setMacAddress("a4:83:e7:12:34:56");
    first->setSpeed(1200000000u);
    first->setSsid("Office");
    auto second = marked(QVIOKitNetwork::ioKitNetwork());
    second->setAdapter("en5");
    second->setVendor("Realtek");
    second->setMacAddress("00:e0:4c:68:00:01");
    second->setSpeed(1000000000u);
    second->setSsid("");
    return Value(makeArray({first, second}));
}

Value batteries() {
    auto first = marked(QVIOKitBattery::ioKitBattery());
    first->setName("bq20z451");
    first->setSerialNo("D864134A1B2Q0N4AJ");
    first->setCapacity(87.9f);
    first->setEstimatedRunTime(-1);
    auto second = marked(QVIOKitBattery::ioKitBattery());
    second->setName("Spare");
    second->setSerialNo("F5D1234");
    second->setCapacity(100.0f);
    second->setEstimatedRunTime(312);
    return Value(makeArray({first, second}));
}

RecordRef network() {
    auto record = marked(QVIPInfo::ipInfo());
    record->setLocalIp("192.168.1.20");
    record->setPublicIp("203.0.113.7");
    return record;
}

DictionaryRef dictionaryOf(std::initializer_list<std::pair<std::string_view, Value>> entries) {
    auto dictionary = makeDictionary();
    for (const auto& [key, value] : entries) dictionary->set(key, value);
    return dictionary;
}

// An inventory as a scan builds it, with every list of the reader's table and the lists
// and values the reader leaves out.
DictionaryRef fullInventory() {
    auto camera = QVIOKitCamera::ioKitCamera();
    camera->setName("FaceTime HD Camera");
    camera->setUuid("0x1a11000005ac8514");
    auto module = QVIOKitMemory::ioKitMemory();
    module->setName("BANK 0/ChannelA-DIMM0");
    module->setSize("8 GB");
    return dictionaryOf({
        {"collection", "2024-01-31T09:15:00Z"},
        {"sysctl", Value(dictionaryOf({{"timezone", timeZones()}, {"memory", memoryTotals()}, {"cpu", cpus()}}))},
        {"iokit", Value(dictionaryOf({{"serialNumbers", Value(makeArray({Value(dictionaryOf({{"serialNumber", "C02XK1ZZJG5H"}}))}))},
                                      {"displays", displays()},
                                      {"keyboards", keyboards()},
                                      {"pointingDevices", pointingDevices()},
                                      {"batteries", batteries()},
                                      {"disks", disks()},
                                      {"networkAdapters", networkAdapters()},
                                      {"camera", Value(makeArray({camera}))},
                                      {"memory", Value(makeArray({module}))}}))},
        {"appkit", Value(dictionaryOf({{"printers", printers()}}))},
        {"diskutil", Value(dictionaryOf({{"disks", volumes()}}))},
        {"operatingSystems", Value(dictionaryOf({{"osName", "macOS"}, {"systemManufacturer", "Apple Inc."},
                                                 {"username", "alice"}, {"serialNumber", "C02XK1ZZJG5H"}}))},
        {"coreaudio", Value(dictionaryOf({{"sounds", sounds()}}))},
        {"corefoundation", Value(dictionaryOf({{"operatingSystems", operatingSystemRecords()}}))},
        {"events", Value(dictionaryOf({{"Network", network()}}))},
    });
}

DictionaryRef readBack(const DictionaryRef& inventory) {
    const std::optional<std::string> text = QVHardwareReportJsonWriter::jsonContentOfHardware(inventory);
    EXPECT_TRUE(text.has_value());
    return text ? Reader::hardwareDictionaryWithJsonContent(*text) : nullptr;
}

ArrayRef listOf(const DictionaryRef& inventory, std::string_view section, std::string_view list) {
    const DictionaryRef sectionDictionary = inventory->get(section).dictionary();
    return sectionDictionary ? sectionDictionary->get(list).array() : nullptr;
}

void expectSameRecord(const QVSystemInfo& written, const QVSystemInfo& read, const std::string& kind,
                      const std::vector<std::string>& keys) {
    EXPECT_EQ(read.className(), kind);
    EXPECT_EQ(read.scanResult(), 0);
    EXPECT_TRUE(read.isEqual(written)) << read.description() << " vs " << written.description();
    EXPECT_TRUE(written.isEqual(read)) << written.description() << " vs " << read.description();
    for (const std::string& key : keys) {
        ASSERT_TRUE(read.innerDictionary()->contains(key)) << kind << " " << key;
        EXPECT_EQ(read.innerDictionary()->get(key), written.innerDictionary()->get(key))
            << kind << " " << key << ": " << read.description() << " vs " << written.description();
    }
}

TEST(QVHardwareReportJsonReader, ReadsBackEveryListOfAWrittenReportRecordByRecord) {
    const DictionaryRef inventory = fullInventory();
    const DictionaryRef read = readBack(inventory);
    ASSERT_NE(read, nullptr);

    for (const ReadList& entry : readerTable()) {
        SCOPED_TRACE(entry.section + " / " + entry.list);
        const ArrayRef written = listOf(inventory, entry.section, entry.list);
        const ArrayRef readList = listOf(read, entry.section, entry.list);
        ASSERT_NE(readList, nullptr);
        ASSERT_EQ(readList->size(), 2u);
        for (std::size_t i = 0; i < 2; ++i) {
            ASSERT_NE((*readList)[i].record(), nullptr);
            expectSameRecord(*(*written)[i].record(), *(*readList)[i].record(), entry.kind, entry.keys);
        }
    }
    const RecordRef readNetwork = read->get("events").dictionary()->get("Network").record();
    ASSERT_NE(readNetwork, nullptr);
    expectSameRecord(*inventory->get("events").dictionary()->get("Network").record(), *readNetwork, "QVIPInfo",
                     {"localIp", "publicIp"});
    EXPECT_EQ(read->get("operatingSystems"), inventory->get("operatingSystems"));
}

TEST(QVHardwareReportJsonReader, ResultHoldsExactlyTheEightSections) {
    const DictionaryRef read = readBack(fullInventory());
    ASSERT_NE(read, nullptr);
    std::vector<std::string> keys;
    for (const auto& entry : *read) keys.push_back(entry.first);
    EXPECT_EQ(keys, (std::vector<std::string>{"sysctl", "appkit", "coreaudio", "corefoundation", "diskutil", "iokit",
                                              "operatingSystems", "events"}));
}

TEST(QVHardwareReportJsonReader, LeavesOutSerialNumbersCameraAndMemoryModules) {
    const DictionaryRef read = readBack(fullInventory());
    ASSERT_NE(read, nullptr);
    const DictionaryRef iokit = read->get("iokit").dictionary();
    ASSERT_NE(iokit, nullptr);
    EXPECT_FALSE(iokit->contains("serialNumbers"));
    EXPECT_FALSE(iokit->contains("camera"));
    EXPECT_FALSE(iokit->contains("memory"));
    std::vector<std::string> lists;
    for (const auto& entry : *iokit) lists.push_back(entry.first);
    EXPECT_EQ(lists, (std::vector<std::string>{"displays", "keyboards", "pointingDevices", "disks", "networkAdapters",
                                               "batteries"}));
}

TEST(QVHardwareReportJsonReader, KeepsOnlyTheMembersItsTableNames) {
    const DictionaryRef read = readBack(fullInventory());
    ASSERT_NE(read, nullptr);
    for (const ReadList& entry : readerTable()) {
        SCOPED_TRACE(entry.section + " / " + entry.list);
        for (const Value& element : *listOf(read, entry.section, entry.list)) {
            for (const auto& [key, value] : *element.record()->innerDictionary()) {
                EXPECT_NE(std::find(entry.keys.begin(), entry.keys.end(), key), entry.keys.end()) << key;
            }
        }
    }
    const RecordRef cpu = (*listOf(read, "sysctl", "cpu"))[0].record();
    EXPECT_FALSE(cpu->innerDictionary()->contains("logicalCores"));
    EXPECT_FALSE(cpu->innerDictionary()->contains("l2CacheSize"));
    EXPECT_FALSE((*listOf(read, "iokit", "displays"))[0].record()->innerDictionary()->contains("refreshRate"));
}

TEST(QVHardwareReportJsonReader, IgnoresTheStoredCollectionTime) {
    const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(
        R"({"collection":"2024-01-31T09:15:00Z","operatingSystems":{"osName":"macOS"}})");
    ASSERT_NE(read, nullptr);
    EXPECT_FALSE(read->contains("collection"));
    EXPECT_EQ(read->size(), 8u);
}

TEST(QVHardwareReportJsonReader, ReportWithoutOperatingSystemsReadsAsNothing) {
    DictionaryRef inventory = fullInventory();
    inventory->remove("operatingSystems");
    EXPECT_EQ(readBack(inventory), nullptr);
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent("{}"), nullptr);
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(R"({"operatingSystems":null})"), nullptr);
}

TEST(QVHardwareReportJsonReader, TakesOperatingSystemsAsItStands) {
    const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(
        R"({"operatingSystems":{"osName":"  macOS  ","cores":8,"flags":[true,null],"nested":{"a":"b"}}})");
    ASSERT_NE(read, nullptr);
    const std::optional<Value> expected =
        parseJson(R"({"osName":"  macOS  ","cores":8,"flags":[true,null],"nested":{"a":"b"}})");
    EXPECT_EQ(read->get("operatingSystems"), *expected);

    const DictionaryRef plainText = Reader::hardwareDictionaryWithJsonContent(R"({"operatingSystems":"macOS"})");
    ASSERT_NE(plainText, nullptr);
    EXPECT_EQ(plainText->get("operatingSystems"), Value("macOS"));

    const Value section(dictionaryOf({{"osName", "macOS"}}));
    EXPECT_EQ(Reader::parseOperatingSystems(section).dictionary(), section.dictionary());
}

TEST(QVHardwareReportJsonReader, EventsWithoutNetworkGiveAnIpRecordWithEmptyAddresses) {
    const DictionaryRef read =
        Reader::hardwareDictionaryWithJsonContent(R"({"operatingSystems":{},"events":{"Other":"value"}})");
    ASSERT_NE(read, nullptr);
    const DictionaryRef events = read->get("events").dictionary();
    ASSERT_NE(events, nullptr);
    ASSERT_EQ(events->size(), 1u);
    const RecordRef record = events->get("Network").record();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->className(), std::string("QVIPInfo"));
    EXPECT_EQ(record->innerDictionary()->get("localIp"), Value(""));
    EXPECT_EQ(record->innerDictionary()->get("publicIp"), Value(""));
}

TEST(QVHardwareReportJsonReader, EmptyOrMissingEventsGiveAnEmptySection) {
    for (const char* content : {R"({"operatingSystems":{},"events":{}})", R"({"operatingSystems":{}})"}) {
        const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(content);
        ASSERT_NE(read, nullptr) << content;
        ASSERT_NE(read->get("events").dictionary(), nullptr) << content;
        EXPECT_TRUE(read->get("events").dictionary()->empty()) << content;
    }
}

TEST(QVHardwareReportJsonReader, NetworkIpAddressesGoThroughTheirSetters) {
    const DictionaryRef events = Reader::parseIPInfo(
        *parseJson(R"({"Network":{"localIp":"192.168.1.300","publicIp":"198.51.100.4"}})")->dictionary());
    ASSERT_NE(events, nullptr);
    const auto record = std::dynamic_pointer_cast<QVIPInfo>(events->get("Network").record());
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->localIp(), "");
    EXPECT_EQ(record->publicIp(), "198.51.100.4");
}

TEST(QVHardwareReportJsonReader, MissingSectionsReadAsEmptySections) {
    const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(R"({"operatingSystems":{"osName":"macOS"}})");
    ASSERT_NE(read, nullptr);
    for (const char* section : {"sysctl", "appkit", "coreaudio", "corefoundation", "diskutil", "iokit", "events"}) {
        const DictionaryRef dictionary = read->get(section).dictionary();
        ASSERT_NE(dictionary, nullptr) << section;
        EXPECT_TRUE(dictionary->empty()) << section;
    }
}

TEST(QVHardwareReportJsonReader, EmptySectionsStayEmptyAndMissingListsOfOtherSectionsBecomeEmptyArrays) {
    const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(
        R"({"operatingSystems":{},"appkit":{},"sysctl":{"cpu":[{"description":"Apple M1"}]},"iokit":{"camera":[]}})");
    ASSERT_NE(read, nullptr);
    EXPECT_TRUE(read->get("appkit").dictionary()->empty());

    const DictionaryRef sysctl = read->get("sysctl").dictionary();
    ASSERT_EQ(sysctl->size(), 3u);
    EXPECT_EQ(sysctl->get("cpu").array()->size(), 1u);
    EXPECT_TRUE(sysctl->get("timezone").array()->empty());
    EXPECT_TRUE(sysctl->get("memory").array()->empty());

    const DictionaryRef iokit = read->get("iokit").dictionary();
    ASSERT_EQ(iokit->size(), 6u);
    for (const auto& [list, records] : *iokit) EXPECT_TRUE(records.array()->empty()) << list;
}

TEST(QVHardwareReportJsonReader, MissingMembersGiveEmptyTextAndZeroAndFalse) {
    const DictionaryRef sysctl = Reader::parseSysCtl(*parseJson(R"({"cpu":[{}],"memory":[{}]})")->dictionary());
    ASSERT_NE(sysctl, nullptr);
    EXPECT_EQ(Value((*sysctl->get("cpu").array())[0].record()->innerDictionary()),
              *parseJson(R"({"architecture":0,"busSpeed":0,"instructionSet":0,"physicalCores":0,"description":""})"));
    const DictionaryRef diskutil = Reader::parseDiskUtil(*parseJson(R"({"disks":[{}]})")->dictionary());
    ASSERT_NE(diskutil, nullptr);
    EXPECT_EQ(Value((*diskutil->get("disks").array())[0].record()->innerDictionary()),
              *parseJson(R"({"boot":false,"opticalMedia":false,"fileSystem":"","name":"","deviceName":"",
                             "deviceId":"","sizeBytes":0,"freeSpaceBytes":0})"));
}

TEST(QVHardwareReportJsonReader, ConvertsMembersOfUnexpectedTypesWithoutFailing) {
    const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(R"({"operatingSystems":{},
        "sysctl":{"cpu":[{"architecture":-1.5,"busSpeed":-2400,"instructionSet":1e300,"physicalCores":true,
                          "description":42}],
                  "memory":[{"totalPhysicalRAMBytes":"8589934592","usedPhysicalRAMBytes":8.9e9,
                             "totalVirtualRAMBytes":18446744073709551615,"usedVirtualRAMBytes":null}]},
        "iokit":{"batteries":[{"name":["bq20z451"],"serialNumber":{"a":1},"capacity":1e300,
                               "estimatedChargeRemaining":-1e300}],
                 "displays":[{"adapterDescription":"Apple M1","width":-5.0,"height":3000000000,"depth":24.9}],
                 "disks":[{"removable":1}]},
        "diskutil":{"disks":[{"boot":"true","opticalMedia":0.5,"sizeBytes":12.75,"freeSpaceBytes":-3e5}]}})");
    ASSERT_NE(read, nullptr);

    const auto cpu = std::dynamic_pointer_cast<QVSysCtlCpu>((*listOf(read, "sysctl", "cpu"))[0].record());
    ASSERT_NE(cpu, nullptr);
    EXPECT_EQ(cpu->architecture(), 0u);
    EXPECT_EQ(cpu->processorSpeed(), -2400);
    EXPECT_EQ(cpu->instructionSet(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(cpu->physicalCores(), 1u);
    EXPECT_EQ(cpu->getDescription(), "");

    const auto memory = std::dynamic_pointer_cast<QVSysCtlMemory>((*listOf(read, "sysctl", "memory"))[0].record());
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(memory->totalPhysicalMemory(), 0u);
    EXPECT_EQ(memory->usedPhysicalMemory(), 8900000000u);
    EXPECT_EQ(memory->totalVirtualMemory(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(memory->usedVirtualMemory(), 0u);

    const auto battery = std::dynamic_pointer_cast<QVIOKitBattery>((*listOf(read, "iokit", "batteries"))[0].record());
    ASSERT_NE(battery, nullptr);
    EXPECT_EQ(battery->name(), "");
    EXPECT_EQ(battery->serialNo(), "");
    EXPECT_EQ(battery->innerDictionary()->get("capacity"), Value(std::numeric_limits<std::int32_t>::max()));
    EXPECT_EQ(battery->estimatedRunTime(), std::numeric_limits<std::int64_t>::min());

    const auto display = std::dynamic_pointer_cast<QVIOKitDisplay>((*listOf(read, "iokit", "displays"))[0].record());
    ASSERT_NE(display, nullptr);
    EXPECT_EQ(display->width(), 0);
    EXPECT_EQ(display->height(), 3000000000);
    EXPECT_EQ(display->depth(), 24);

    const auto disk = std::dynamic_pointer_cast<QVIOKitDisk>((*listOf(read, "iokit", "disks"))[0].record());
    ASSERT_NE(disk, nullptr);
    EXPECT_TRUE(disk->isRemovable());

    const auto volume = std::dynamic_pointer_cast<QVDiskUtilDisk>((*listOf(read, "diskutil", "disks"))[0].record());
    ASSERT_NE(volume, nullptr);
    EXPECT_FALSE(volume->isBootVolume());
    EXPECT_TRUE(volume->isOpticalMedia());
    EXPECT_EQ(volume->size(), 12u);
    EXPECT_EQ(volume->freeSpace(), 0u);
}

TEST(QVHardwareReportJsonReader, NegativeBatteryCapacityIsCutTowardZero) {
    const DictionaryRef iokit = Reader::parseIOKit(
        *parseJson(R"({"batteries":[{"capacity":-0.5},{"capacity":-1e300},{"capacity":99.99}]})")->dictionary());
    ASSERT_NE(iokit, nullptr);
    const ArrayRef batteries = iokit->get("batteries").array();
    ASSERT_EQ(batteries->size(), 3u);
    EXPECT_EQ((*batteries)[0].record()->innerDictionary()->get("capacity"), Value(0));
    EXPECT_EQ((*batteries)[1].record()->innerDictionary()->get("capacity"), Value(std::numeric_limits<std::int32_t>::min()));
    EXPECT_EQ((*batteries)[2].record()->innerDictionary()->get("capacity"), Value(99));
}

TEST(QVHardwareReportJsonReader, FillsRecordsThroughTheirSettersAndDropsTheStoredMark) {
    const DictionaryRef iokit = Reader::parseIOKit(
        *parseJson(R"({"keyboards":[{"name":"  Magic Keyboard\n","scan-result":3,"$class":"QVIOKitCamera"}]})")->dictionary());
    ASSERT_NE(iokit, nullptr);
    const RecordRef keyboard = (*iokit->get("keyboards").array())[0].record();
    EXPECT_EQ(keyboard->className(), std::string("QVIOKitKeyboard"));
    EXPECT_EQ(keyboard->scanResult(), 0);
    EXPECT_EQ(Value(keyboard->innerDictionary()), *parseJson(R"({"name":"Magic Keyboard"})"));
}

TEST(QVHardwareReportJsonReader, MissingContentReadsAsNothing) {
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(std::nullopt), nullptr);
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(""), nullptr);
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent("   \n"), nullptr);
}

TEST(QVHardwareReportJsonReader, MalformedDocumentsReadAsNothing) {
    for (const char* content : {
             R"({"operatingSystems":{})",                               // unclosed
             R"({"operatingSystems":{},})",                             // trailing comma
             R"({'operatingSystems':{}})",                              // not JSON quotes
             R"([{"operatingSystems":{}}])",                            // root array
             R"("operatingSystems")",                                   // root string
             "42",                                                      // root number
             "null",                                                    // root null
             R"({"operatingSystems":{}} trailing)",                     // trailing garbage
             R"({"operatingSystems":{}}{"operatingSystems":{}})",       // a second root
             "{\"operatingSystems\":{\"osName\":\"\xff\xfe\"}}",        // not UTF-8
         }) {
        EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(content), nullptr) << content;
    }
}

TEST(QVHardwareReportJsonReader, ReadsNestingUpToTheMaximumDepthAndNothingDeeper) {
    // The document object is the first level; the arrays under "operatingSystems" the rest.
    const auto document = [](int arrays) {
        return R"({"operatingSystems":)" + std::string(arrays, '[') + std::string(arrays, ']') + "}";
    };
    EXPECT_NE(Reader::hardwareDictionaryWithJsonContent(document(kMaximumJsonDepth - 1)), nullptr);
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(document(kMaximumJsonDepth)), nullptr);
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(document(1000000)), nullptr);
}

TEST(QVHardwareReportJsonReader, ElementsThatAreNotObjectsReadAsNothing) {
    for (const char* content : {
             R"({"operatingSystems":{},"iokit":{"keyboards":["Magic Keyboard"]}})",
             R"({"operatingSystems":{},"iokit":{"keyboards":[{"name":"a"},42]}})",
             R"({"operatingSystems":{},"sysctl":{"cpu":[[]]}})",
             R"({"operatingSystems":{},"appkit":{"printers":[null]}})",
             R"({"operatingSystems":{},"corefoundation":{"operatingSystems":[true]}})",
         }) {
        EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(content), nullptr) << content;
    }
}

TEST(QVHardwareReportJsonReader, SectionsListsAndNetworkOfTheWrongTypeReadAsNothing) {
    for (const char* content : {
             R"({"operatingSystems":{},"sysctl":[{}]})",
             R"({"operatingSystems":{},"iokit":"text"})",
             R"({"operatingSystems":{},"events":[{"Network":{}}]})",
             R"({"operatingSystems":{},"iokit":{"keyboards":{"name":"Magic Keyboard"}}})",
             R"({"operatingSystems":{},"diskutil":{"disks":7}})",
             R"({"operatingSystems":{},"events":{"Network":"10.0.0.1"}})",
             R"({"operatingSystems":{},"events":{"Network":[]}})",
         }) {
        EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(content), nullptr) << content;
    }
}

TEST(QVHardwareReportJsonReader, NullSectionIsOfTheWrongType) {
    for (const char* content : {R"({"operatingSystems":{},"sysctl":null})", R"({"operatingSystems":{},"events":null})"}) {
        EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(content), nullptr) << content;
    }
}

TEST(QVHardwareReportJsonReader, NullListReadsAsMissing) {
    const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(
        R"({"operatingSystems":{},"iokit":{"keyboards":null,"displays":[]}})");
    ASSERT_NE(read, nullptr);
    ASSERT_NE(read->get("iokit").dictionary()->get("keyboards").array(), nullptr);
    EXPECT_TRUE(read->get("iokit").dictionary()->get("keyboards").array()->empty());
}

TEST(QVHardwareReportJsonReader, EmptySectionOfEitherShapeReadsAsAnEmptySection) {
    for (const char* shape : {"[]", "{}"}) {
        const std::string content = std::string(R"({"operatingSystems":{},"sysctl":)") + shape +
                                    R"(,"iokit":)" + shape + R"(,"events":)" + shape + "}";
        const DictionaryRef read = Reader::hardwareDictionaryWithJsonContent(content);
        ASSERT_NE(read, nullptr) << content;
        for (const char* section : {"sysctl", "iokit", "events"}) {
            const DictionaryRef dictionary = read->get(section).dictionary();
            ASSERT_NE(dictionary, nullptr) << content << " " << section;
            EXPECT_TRUE(dictionary->empty()) << content << " " << section;
        }
    }
}

TEST(QVHardwareReportJsonReader, SectionReadersGiveEmptyDictionariesForEmptySections) {
    const Dictionary empty;
    for (DictionaryRef (*reader)(const Dictionary&) :
         {&Reader::parseSysCtl, &Reader::parseAppKit, &Reader::parseCoreAudio, &Reader::parseCoreFoundation,
          &Reader::parseDiskUtil, &Reader::parseIOKit, &Reader::parseIPInfo}) {
        const DictionaryRef section = reader(empty);
        ASSERT_NE(section, nullptr);
        EXPECT_TRUE(section->empty());
    }
}

TEST(QVHardwareReportJsonReader, ReadsTheFullReportsInventoryButNotTheWrappedDocument) {
    const DictionaryRef inventory = fullInventory();
    const std::optional<std::string> wrapped =
        QVHardwareReportJsonWriter::jsonContentOfHardware(dictionaryOf({{"HWInventory", Value(inventory)}}));
    ASSERT_TRUE(wrapped.has_value());
    EXPECT_EQ(Reader::hardwareDictionaryWithJsonContent(*wrapped), nullptr);
    EXPECT_NE(readBack(inventory), nullptr);
}

}  // namespace
}  // namespace tov
