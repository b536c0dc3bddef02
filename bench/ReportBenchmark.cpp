// Writing, reading back and comparing an inventory of 1,000 records: the work of every
// full scan of a machine with many devices.

#include <benchmark/benchmark.h>

#include <string>

#include "model/QVAppKitPrinter.h"
#include "model/QVCoreAudioSound.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVIOKitPointingDevice.h"
#include "model/QVIPInfo.h"
#include "report/QVCollectionUtil.h"
#include "report/QVHardwareReportJsonReader.h"
#include "report/QVHardwareReportJsonWriter.h"

namespace tov {
namespace {

constexpr int kRecordsPerList = 125;  // eight lists: 1,000 records

std::string numbered(const char* prefix, int number) { return prefix + std::to_string(number); }

DictionaryRef section(std::initializer_list<std::pair<const char*, ArrayRef>> lists) {
    DictionaryRef dictionary = makeDictionary();
    for (const auto& [name, records] : lists) dictionary->set(name, Value(records));
    return dictionary;
}

// An inventory of eight lists of records; generation changes the manufacturer of every
// tenth display and adds nothing else.
DictionaryRef inventoryOfOneThousandRecords(int generation) {
    ArrayRef displays = makeArray(), keyboards = makeArray(), pointers = makeArray(), ioKitDisks = makeArray();
    ArrayRef adapters = makeArray(), volumes = makeArray(), printers = makeArray(), sounds = makeArray();
    for (int number = 0; number < kRecordsPerList; ++number) {
        const auto display = QVIOKitDisplay::iokitDisplay();
        display->setDescription(numbered("Display ", number));
        display->setManufacturer(number % 10 == 0 && generation > 0 ? "Changed Maker" : "Maker");
        display->setWidth(2560);
        display->setHeight(1440);
        display->setDepth(32);
        displays->push_back(Value(display));
        const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
        keyboard->setName(numbered("Keyboard ", number));
        keyboards->push_back(Value(keyboard));
        const auto pointer = QVIOKitPointingDevice::ioKitPointingDevice();
        pointer->setDescription(numbered("Mouse ", number));
        pointer->setManufacturer("Logi");
        pointers->push_back(Value(pointer));
        const auto disk = QVIOKitDisk::ioKitDisk();
        disk->setName(numbered("SSD ", number));
        disk->setSerialNo(numbered("S", number));
        ioKitDisks->push_back(Value(disk));
        const auto adapter = QVIOKitNetwork::ioKitNetwork();
        adapter->setAdapter(numbered("en", number));
        adapter->setVendor("Broadcom");
        adapter->setMacAddress(numbered("00:11:22:33:44:", number));
        adapter->setSpeed(1000);
        adapters->push_back(Value(adapter));
        const auto volume = QVDiskUtilDisk::diskUtilDisk();
        volume->setName(numbered("Volume ", number));
        volume->setIdentifier(numbered("disk", number));
        volume->setSize(500000000000);
        volume->setFreeSpace(200000000000);
        volume->setFileSystem("apfs");
        volumes->push_back(Value(volume));
        const auto printer = QVAppKitPrinter::appKitPrinter();
        printer->setName(numbered("Printer ", number));
        printer->setDriver("IPP Everywhere");
        printers->push_back(Value(printer));
        const auto sound = QVCoreAudioSound::coreAudioSound();
        sound->setName(numbered("Speaker ", number));
        sound->setManufacturer("Apple");
        sounds->push_back(Value(sound));
    }
    DictionaryRef inventory = makeDictionary();
    inventory->set("collection", "2024-01-31T09:15:00Z");
    inventory->set("iokit", Value(section({{"displays", displays}, {"keyboards", keyboards},
                                           {"pointingDevices", pointers}, {"disks", ioKitDisks},
                                           {"networkAdapters", adapters}})));
    inventory->set("appkit", Value(section({{"printers", printers}})));
    inventory->set("diskutil", Value(section({{"disks", volumes}})));
    inventory->set("operatingSystems", Value(makeDictionary()));
    inventory->set("coreaudio", Value(section({{"sounds", sounds}})));
    inventory->set("sysctl", Value(makeDictionary()));
    inventory->set("corefoundation", Value(makeDictionary()));
    DictionaryRef events = makeDictionary();
    const auto address = QVIPInfo::ipInfo();
    address->setLocalIp("10.0.0.1");
    address->setPublicIp("203.0.113.1");
    events->set("Network", Value(address));
    inventory->set("events", Value(events));
    return inventory;
}

void writeFullReport(benchmark::State& state) {
    const DictionaryRef inventory = inventoryOfOneThousandRecords(0);
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::optional<std::string> document = QVHardwareReportJsonWriter::jsonContentOfHardware(inventory);
        bytes = document->size();
        benchmark::DoNotOptimize(document);
    }
    state.counters["document_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(writeFullReport)->Unit(benchmark::kMillisecond);

void readStoredReport(benchmark::State& state) {
    const std::string document =
        QVHardwareReportJsonWriter::jsonContentOfHardware(inventoryOfOneThousandRecords(0)).value();
    for (auto _ : state) {
        const DictionaryRef inventory = QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(document);
        benchmark::DoNotOptimize(inventory);
    }
}
BENCHMARK(readStoredReport)->Unit(benchmark::kMillisecond);

void differenceOfTwoInventories(benchmark::State& state) {
    const DictionaryRef stored = QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(
        QVHardwareReportJsonWriter::jsonContentOfHardware(inventoryOfOneThousandRecords(0)).value());
    const DictionaryRef current = inventoryOfOneThousandRecords(1);
    std::size_t changedDisplays = 0;
    for (auto _ : state) {
        Dictionary differences;
        QVCollectionUtil::populateDifferencesIn(differences, *stored, *current);
        changedDisplays = differences.get("iokit").dictionary()->get("displays").array()->size();
        benchmark::DoNotOptimize(differences);
    }
    state.counters["changed_displays"] = static_cast<double>(changedDisplays);
}
BENCHMARK(differenceOfTwoInventories)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tov
