#include "report/QVHardwareReportJsonReader.h"

#include <cmath>
#include <exception>
#include <initializer_list>
#include <limits>
#include <string>

#include "model/Json.h"
#include "model/QVAppKitPrinter.h"
#include "model/QVCoreAudioSound.h"
#include "model/QVCoreFoundationOperatingSystem.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVIOKitPointingDevice.h"
#include "model/QVIPInfo.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"

namespace tov {
namespace {

// Stored members as the setters take them. A member of an unexpected JSON type converts
// as dynamically typed values would: only text is text (anything else hands the setter no
// value, which it stores as ""), numbers come from any numeric member (true counts as 1,
// fractions are cut toward zero and out-of-range values clamped), and whatever is missing
// or not a number reads as 0 or false.
std::optional<std::string_view> text(const Dictionary& stored, std::string_view key) {
    const Value* value = stored.find(key);
    if (!value || !value->string()) return std::nullopt;
    return *value->string();
}

std::uint64_t unsignedNumber(const Dictionary& stored, std::string_view key) { return stored.get(key).toUInt64(); }

std::int64_t signedNumber(const Dictionary& stored, std::string_view key) { return stored.get(key).toInt64(); }

bool boolean(const Dictionary& stored, std::string_view key) { return stored.get(key).toBool(); }

float floatingNumber(const Dictionary& stored, std::string_view key) {
    const double number = stored.get(key).toDouble();
    if (std::isnan(number)) return 0.0f;
    constexpr double kLargest = std::numeric_limits<float>::max();
    return static_cast<float>(number < -kLargest ? -kLargest : (number > kLargest ? kLargest : number));
}

// The display's dimensions are stored unsigned and handed to its signed setters as they are.
std::int64_t dimension(const Dictionary& stored, std::string_view key) {
    return static_cast<std::int64_t>(unsignedNumber(stored, key));
}

RecordRef cpuFrom(const Dictionary& stored) {
    auto cpu = QVSysCtlCpu::sysCtlCpu();
    cpu->setArchitecture(unsignedNumber(stored, "architecture"));
    cpu->setProcessorSpeed(signedNumber(stored, "busSpeed"));
    cpu->setInstructionSet(unsignedNumber(stored, "instructionSet"));
    cpu->setPhysicalCores(unsignedNumber(stored, "physicalCores"));
    cpu->setDescription(text(stored, "description"));
    return cpu;
}

RecordRef timeZoneFrom(const Dictionary& stored) {
    auto timeZone = QVSysCtlTimeZone::sysCtlTimeZone();
    timeZone->setTimeZone(text(stored, "userTimezone"));
    return timeZone;
}

RecordRef memoryFrom(const Dictionary& stored) {
    auto memory = QVSysCtlMemory::sysCtlMemory();
    memory->setTotalPhysicalMemory(unsignedNumber(stored, "totalPhysicalRAMBytes"));
    memory->setUsedPhysicalMemory(unsignedNumber(stored, "usedPhysicalRAMBytes"));
    memory->setTotalVirtualMemory(unsignedNumber(stored, "totalVirtualRAMBytes"));
    memory->setUsedVirtualMemory(unsignedNumber(stored, "usedVirtualRAMBytes"));
    return memory;
}

RecordRef printerFrom(const Dictionary& stored) {
    auto printer = QVAppKitPrinter::appKitPrinter();
    printer->setName(text(stored, "name"));
    printer->setDriver(text(stored, "driver"));
    return printer;
}

RecordRef soundFrom(const Dictionary& stored) {
    auto sound = QVCoreAudioSound::coreAudioSound();
    sound->setName(text(stored, "name"));
    sound->setManufacturer(text(stored, "manufacturer"));
    return sound;
}

RecordRef operatingSystemFrom(const Dictionary& stored) {
    auto system = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    system->setOSInstallDateAsString(text(stored, "installDate"));
    system->setOSLastBootTimeAsString(text(stored, "lastBootTime"));
    system->setBuild(text(stored, "build"));
    system->setEdition(text(stored, "edition"));
    return system;
}

RecordRef volumeFrom(const Dictionary& stored) {
    auto volume = QVDiskUtilDisk::diskUtilDisk();
    volume->setName(text(stored, "name"));
    volume->setDeviceName(text(stored, "deviceName"));
    volume->setIdentifier(text(stored, "deviceId"));
    volume->setSize(unsignedNumber(stored, "sizeBytes"));
    volume->setFreeSpace(unsignedNumber(stored, "freeSpaceBytes"));
    volume->setFileSystem(text(stored, "fileSystem"));
    volume->setBootVolume(boolean(stored, "boot"));
    volume->setOpticalMedia(boolean(stored, "opticalMedia"));
    return volume;
}

RecordRef displayFrom(const Dictionary& stored) {
    auto display = QVIOKitDisplay::iokitDisplay();
    display->setDescription(text(stored, "adapterDescription"));
    display->setManufacturer(text(stored, "manufacturer"));
    display->setWidth(dimension(stored, "width"));
    display->setHeight(dimension(stored, "height"));
    display->setDepth(dimension(stored, "depth"));
    return display;
}

RecordRef keyboardFrom(const Dictionary& stored) {
    auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName(text(stored, "name"));
    return keyboard;
}

RecordRef pointingDeviceFrom(const Dictionary& stored) {
    auto device = QVIOKitPointingDevice::ioKitPointingDevice();
    device->setDescription(text(stored, "description"));
    device->setManufacturer(text(stored, "manufacturer"));
    return device;
}

RecordRef diskFrom(const Dictionary& stored) {
    auto disk = QVIOKitDisk::ioKitDisk();
    disk->setName(text(stored, "name"));
    disk->setSerialNo(text(stored, "serialNumber"));
    disk->setRemovable(boolean(stored, "removable"));
    return disk;
}

RecordRef networkAdapterFrom(const Dictionary& stored) {
    auto adapter = QVIOKitNetwork::ioKitNetwork();
    adapter->setAdapter(text(stored, "adapterName"));
    adapter->setVendor(text(stored, "manufacturer"));
    adapter->setMacAddress(text(stored, "macAddress"));
    adapter->setSpeed(unsignedNumber(stored, "networkSpeed"));
    adapter->setSsid(text(stored, "ssid"));
    return adapter;
}

RecordRef batteryFrom(const Dictionary& stored) {
    auto battery = QVIOKitBattery::ioKitBattery();
    battery->setName(text(stored, "name"));
    battery->setSerialNo(text(stored, "serialNumber"));
    battery->setCapacity(floatingNumber(stored, "capacity"));
    battery->setEstimatedRunTime(signedNumber(stored, "estimatedChargeRemaining"));
    return battery;
}

std::shared_ptr<QVIPInfo> ipInfoFrom(const Dictionary& stored) {
    auto ipInfo = QVIPInfo::ipInfo();
    ipInfo->setLocalIp(text(stored, "localIp"));
    ipInfo->setPublicIp(text(stored, "publicIp"));
    return ipInfo;
}

// One list of a section and how each of its elements becomes a record.
struct ListReader {
    std::string_view name;
    RecordRef (*recordFrom)(const Dictionary& stored);
};

// New records made from the stored list, in its order; a missing (or null) list gives an
// empty array. Null when the list is not an array or holds an element that is not an object.
ArrayRef recordsFromList(const Value& list, RecordRef (*recordFrom)(const Dictionary&)) {
    if (list.isAbsent()) return makeArray();
    const ArrayRef elements = list.array();
    if (!elements) return nullptr;
    auto records = makeArray();
    records->reserve(elements->size());
    for (const Value& element : *elements) {
        const DictionaryRef stored = element.dictionary();
        if (!stored) return nullptr;
        records->push_back(Value(recordFrom(*stored)));
    }
    return records;
}

DictionaryRef recordsFromSection(const Dictionary& section, std::initializer_list<ListReader> lists) {
    auto result = makeDictionary();
    if (section.empty()) return result;
    for (const ListReader& list : lists) {
        ArrayRef records = recordsFromList(section.get(list.name), list.recordFrom);
        if (!records) return nullptr;
        result->set(list.name, Value(std::move(records)));
    }
    return result;
}

struct SectionReader {
    std::string_view key;
    DictionaryRef (*reader)(const Dictionary& section);
};

// The sections of records, in the order they are read; "operatingSystems" and "events" follow.
constexpr SectionReader kRecordSections[] = {
    {"sysctl", &QVHardwareReportJsonReader::parseSysCtl},
    {"appkit", &QVHardwareReportJsonReader::parseAppKit},
    {"coreaudio", &QVHardwareReportJsonReader::parseCoreAudio},
    {"corefoundation", &QVHardwareReportJsonReader::parseCoreFoundation},
    {"diskutil", &QVHardwareReportJsonReader::parseDiskUtil},
    {"iokit", &QVHardwareReportJsonReader::parseIOKit},
};
constexpr SectionReader kEventsSection = {"events", &QVHardwareReportJsonReader::parseIPInfo};

// The stored section as a dictionary: a missing section, and an empty one of either JSON
// shape ({} or []), reads as empty; null and every other shape is of the wrong type (null).
DictionaryRef storedSection(const Dictionary& document, std::string_view key) {
    const Value* stored = document.find(key);
    if (!stored) return makeDictionary();
    if (const ArrayRef array = stored->array()) return array->empty() ? makeDictionary() : nullptr;
    return stored->dictionary();
}

// Reads the section of the stored document into the inventory; false when it is of the
// wrong type or its reader refuses it.
bool readSectionInto(Dictionary& inventory, const Dictionary& document, const SectionReader& section) {
    const DictionaryRef stored = storedSection(document, section.key);
    if (!stored) return false;
    DictionaryRef read = section.reader(*stored);
    if (!read) return false;
    inventory.set(section.key, Value(std::move(read)));
    return true;
}

// Null as soon as one section cannot be read; "operatingSystems" must be there.
DictionaryRef inventoryFrom(const Dictionary& document) {
    auto inventory = makeDictionary();
    for (const SectionReader& section : kRecordSections) {
        if (!readSectionInto(*inventory, document, section)) return nullptr;
    }
    Value operatingSystems = QVHardwareReportJsonReader::parseOperatingSystems(document.get("operatingSystems"));
    if (operatingSystems.isAbsent()) return nullptr;
    inventory->set("operatingSystems", std::move(operatingSystems));
    if (!readSectionInto(*inventory, document, kEventsSection)) return nullptr;
    return inventory;
}

}  // namespace

DictionaryRef QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(std::optional<std::string_view> content) {
    if (!content) return nullptr;
    try {
        const std::optional<Value> root = parseJson(*content);
        const DictionaryRef document = root ? root->dictionary() : nullptr;
        if (!document) return nullptr;
        DictionaryRef inventory = inventoryFrom(*document);
        return inventory && !inventory->empty() ? inventory : nullptr;
    } catch (const std::exception&) {
        return nullptr;
    }
}

DictionaryRef QVHardwareReportJsonReader::parseSysCtl(const Dictionary& section) {
    return recordsFromSection(section, {{"cpu", cpuFrom}, {"timezone", timeZoneFrom}, {"memory", memoryFrom}});
}

DictionaryRef QVHardwareReportJsonReader::parseAppKit(const Dictionary& section) {
    return recordsFromSection(section, {{"printers", printerFrom}});
}

DictionaryRef QVHardwareReportJsonReader::parseCoreAudio(const Dictionary& section) {
    return recordsFromSection(section, {{"sounds", soundFrom}});
}

DictionaryRef QVHardwareReportJsonReader::parseCoreFoundation(const Dictionary& section) {
    return recordsFromSection(section, {{"operatingSystems", operatingSystemFrom}});
}

DictionaryRef QVHardwareReportJsonReader::parseDiskUtil(const Dictionary& section) {
    return recordsFromSection(section, {{"disks", volumeFrom}});
}

// "serialNumbers", "camera" and "memory" are left out: the comparison does not need them.
DictionaryRef QVHardwareReportJsonReader::parseIOKit(const Dictionary& section) {
    return recordsFromSection(section, {{"displays", displayFrom},
                                        {"keyboards", keyboardFrom},
                                        {"pointingDevices", pointingDeviceFrom},
                                        {"disks", diskFrom},
                                        {"networkAdapters", networkAdapterFrom},
                                        {"batteries", batteryFrom}});
}

Value QVHardwareReportJsonReader::parseOperatingSystems(const Value& section) { return section; }

DictionaryRef QVHardwareReportJsonReader::parseIPInfo(const Dictionary& section) {
    auto result = makeDictionary();
    if (section.empty()) return result;
    const Value network = section.get("Network");
    const DictionaryRef stored = network.isAbsent() ? makeDictionary() : network.dictionary();
    if (!stored) return nullptr;
    result->set("Network", Value(ipInfoFrom(*stored)));
    return result;
}

}  // namespace tov
