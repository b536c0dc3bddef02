#include "discovery/macos/QVIOKitHardwareInfoDiscoverer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/PropertyList.h"
#include "discovery/SystemFacts.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVIOKitPointingDevice.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

constexpr const char* kKeyboards = "IOHIDDevice 1 6";
constexpr const char* kMice = "IOHIDDevice 1 2";
constexpr const char* kBlockStorage = "IOBlockStorageDevice";
constexpr const char* kEthernet = "IOEthernetController";
constexpr const char* kPlatformExpert = "IOPlatformExpertDevice";

Value dictionary(std::initializer_list<std::pair<std::string, Value>> entries) {
    DictionaryRef made = makeDictionary();
    for (const auto& [key, value] : entries) made->set(key, value);
    return Value(made);
}

Value array(std::initializer_list<Value> values) { return Value(makeArray(Array(values))); }

Value bytes(std::initializer_list<unsigned> values) {
    ArrayRef made = makeArray();
    for (unsigned byte : values) made->push_back(Value(byte));
    return Value(made);
}

// A matched service whose path and properties could be read.
Value service(const Value& properties) {
    return dictionary({{"path", "IOService:/AppleARMPE/arm-io@10F00000/device"}, {"properties", properties}});
}

// A matched service whose path could not be read: the walk ends there.
Value pathlessService(const Value& properties) { return dictionary({{"properties", properties}}); }

// A matched service whose properties could not be read.
Value servicewithoutProperties() { return dictionary({{"path", "IOService:/unreadable"}}); }

struct Machine {
    std::shared_ptr<MemorySystemSource> source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);

    Machine& registry(const std::string& matching, const Value& services) {
        source->fact(facts::kRegistry, matching, services);
        return *this;
    }
    Machine& powerSources(const Value& descriptions) {
        source->fact(facts::kPowerSources, "", descriptions);
        return *this;
    }
    Machine& wiFi(const Value& interface) {
        source->fact(facts::kWifiInterface, "", interface);
        return *this;
    }
    QVIOKitHardwareInfoDiscoverer discoverer(bool mockWiFi = false) const {
        return QVIOKitHardwareInfoDiscoverer(source, mockWiFi);
    }
};

template <class Record>
std::vector<std::shared_ptr<Record>> recordsOf(const ArrayRef& category) {
    std::vector<std::shared_ptr<Record>> records;
    EXPECT_TRUE(category);
    if (!category) return records;
    for (const Value& element : *category) {
        auto record = std::dynamic_pointer_cast<Record>(element.record());
        EXPECT_TRUE(record);
        if (record) records.push_back(record);
    }
    return records;
}

std::vector<std::string> keyboardNames(const Machine& machine) {
    std::vector<std::string> names;
    for (const auto& keyboard : recordsOf<QVIOKitKeyboard>(machine.discoverer().discoverKeyboards())) {
        names.push_back(keyboard->name().value_or("<absent>"));
    }
    return names;
}

using Names = std::vector<std::string>;

// --- the section -----------------------------------------------------------------------

TEST(QVIOKitHardwareInfoDiscoverer, NamesTheSectionIOKit) {
    EXPECT_EQ(Machine().discoverer().sourceName(), "iokit");
}

TEST(QVIOKitHardwareInfoDiscoverer, AMachineThatTellsNothingGivesEmptyCategoriesInTheSectionOrder) {
    const DictionaryRef section = Machine().discoverer().discoverInfo();
    std::vector<std::string> keys;
    for (const auto& [key, value] : *section) {
        keys.push_back(key);
        ASSERT_TRUE(value.isArray()) << key;
        EXPECT_TRUE(value.array()->empty()) << key;
    }
    const std::vector<std::string> order = {"serialNumbers", "displays",        "keyboards", "pointingDevices",
                                            "batteries",     "disks",           "networkAdapters", "camera",
                                            "memory"};
    for (const char* registryKey : {"serialNumbers", "keyboards", "pointingDevices", "batteries", "disks",
                                    "networkAdapters"}) {
        EXPECT_NE(std::find(keys.begin(), keys.end(), registryKey), keys.end()) << registryKey;
    }
    std::vector<std::string> expectedOrder;
    for (const std::string& key : order) {
        if (std::find(keys.begin(), keys.end(), key) != keys.end()) expectedOrder.push_back(key);
    }
    EXPECT_EQ(keys, expectedOrder);
}

// --- serial number ---------------------------------------------------------------------

TEST(QVIOKitHardwareInfoDiscoverer, TheSerialNumberIsThePlatformExpertsOne) {
    Machine machine;
    machine.registry(kPlatformExpert, array({dictionary({{"properties", dictionary({{"IOPlatformSerialNumber", "C02XK1ABJGH5"}})}})}));
    const ArrayRef serials = machine.discoverer().discoverInfo()->get("serialNumbers").array();
    ASSERT_TRUE(serials);
    ASSERT_EQ(serials->size(), 1U);
    EXPECT_EQ(Value(serials->front()), dictionary({{"serialNumber", "C02XK1ABJGH5"}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, OnlyTheFirstPlatformExpertCounts) {
    Machine machine;
    machine.registry(kPlatformExpert, array({service(dictionary({{"IOPlatformSerialNumber", "FIRST"}})),
                                             service(dictionary({{"IOPlatformSerialNumber", "SECOND"}}))}));
    const ArrayRef serials = machine.discoverer().discoverSerialNumbers();
    ASSERT_EQ(serials->size(), 1U);
    EXPECT_EQ(serials->front().dictionary()->get("serialNumber"), Value("FIRST"));
}

TEST(QVIOKitHardwareInfoDiscoverer, AMachineWithoutAPlatformSerialNumberGivesAnEmptyArray) {
    const std::vector<Value> registries = {
        Value(),                                                           // no matching
        array({}),                                                         // no platform expert
        array({servicewithoutProperties()}),                               // properties unreadable
        array({service(dictionary({{"IOPlatformUUID", "1234"}}))}),        // no serial number
        array({service(dictionary({{"IOPlatformSerialNumber", 42}}))}),   // not a string
        array({Value("not a service")}),
        dictionary({{"IOPlatformSerialNumber", "C02"}}),                   // not an array
    };
    for (const Value& services : registries) {
        Machine machine;
        if (!services.isAbsent()) machine.registry(kPlatformExpert, services);
        const ArrayRef serials = machine.discoverer().discoverSerialNumbers();
        ASSERT_TRUE(serials);
        EXPECT_TRUE(serials->empty());
    }
}

// --- keyboards -------------------------------------------------------------------------

TEST(QVIOKitHardwareInfoDiscoverer, EachKeyboardInterfaceIsAKeyboardNamedByItsProduct) {
    Machine machine;
    machine.registry(kKeyboards, array({service(dictionary({{"Product", "Apple Internal Keyboard / Trackpad"}})),
                                        service(dictionary({{"Product", "Magic Keyboard"}}))}));
    EXPECT_EQ(keyboardNames(machine), (Names{"Apple Internal Keyboard / Trackpad", "Magic Keyboard"}));
}

TEST(QVIOKitHardwareInfoDiscoverer, TwoIdenticalKeyboardsGiveOneRecord) {
    Machine machine;
    machine.registry(kKeyboards, array({service(dictionary({{"Product", "Magic Keyboard"}, {"LocationID", 1}})),
                                        service(dictionary({{"Product", "Magic Keyboard"}, {"LocationID", 2}}))}));
    EXPECT_EQ(keyboardNames(machine), (Names{"Magic Keyboard"}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AKeyboardWithoutAProductStringHasAnEmptyName) {
    Machine machine;
    machine.registry(kKeyboards, array({service(dictionary({{"VendorID", 1452}})),
                                        service(dictionary({{"Product", array({"not", "text"})}}))}));
    EXPECT_EQ(keyboardNames(machine), (Names{""}));
}

TEST(QVIOKitHardwareInfoDiscoverer, TheKeyboardWalkStopsAtTheFirstServiceWhosePathCannotBeRead) {
    Machine machine;
    machine.registry(kKeyboards, array({service(dictionary({{"Product", "Before"}})),
                                        pathlessService(dictionary({{"Product", "Pathless"}})),
                                        service(dictionary({{"Product", "After"}}))}));
    EXPECT_EQ(keyboardNames(machine), (Names{"Before"}));
}

TEST(QVIOKitHardwareInfoDiscoverer, APathThatIsNoTextCountsAsUnreadable) {
    Machine machine;
    machine.registry(kKeyboards, array({dictionary({{"path", 7}, {"properties", dictionary({{"Product", "Odd"}})}}),
                                        service(dictionary({{"Product", "After"}}))}));
    EXPECT_EQ(keyboardNames(machine), Names{});
}

TEST(QVIOKitHardwareInfoDiscoverer, AnElementThatIsNoServiceEndsTheWalk) {
    Machine machine;
    machine.registry(kKeyboards, array({service(dictionary({{"Product", "Before"}})), Value(3),
                                        service(dictionary({{"Product", "After"}}))}));
    EXPECT_EQ(keyboardNames(machine), (Names{"Before"}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AKeyboardWhosePropertiesCannotBeReadIsSkippedAndTheWalkGoesOn) {
    Machine machine;
    machine.registry(kKeyboards, array({servicewithoutProperties(),
                                        service(Value("properties that are no dictionary")),
                                        service(dictionary({{"Product", "After"}}))}));
    EXPECT_EQ(keyboardNames(machine), (Names{"After"}));
}

TEST(QVIOKitHardwareInfoDiscoverer, ARegistryFactThatIsNoArrayGivesNoKeyboards) {
    Machine machine;
    machine.registry(kKeyboards, dictionary({{"Product", "Magic Keyboard"}}));
    EXPECT_EQ(keyboardNames(machine), Names{});
}

TEST(QVIOKitHardwareInfoDiscoverer, KeyboardsAreAskedForByTheKeyboardUsageOnly) {
    Machine machine;
    machine.registry(kMice, array({service(dictionary({{"Product", "Magic Mouse"}}))}));
    EXPECT_EQ(keyboardNames(machine), Names{});
}

// --- pointing devices ------------------------------------------------------------------

using Devices = std::vector<std::pair<std::string, std::string>>;

// description → manufacturer of each pointing device.
Devices pointingDevices(const Value& services) {
    Machine machine;
    machine.registry(kMice, services);
    Devices found;
    for (const auto& device : recordsOf<QVIOKitPointingDevice>(machine.discoverer().discoverPointingDevices())) {
        found.emplace_back(device->getDescription().value_or("<absent>"), device->manufacturer().value_or("<absent>"));
    }
    return found;
}

TEST(QVIOKitHardwareInfoDiscoverer, APointingDevicesMakerIsTheUsbVendorTablesName) {
    EXPECT_EQ(pointingDevices(array({service(dictionary(
                  {{"Product", "Magic Mouse 2"}, {"VendorID", 1452}, {"Manufacturer", "Apple Inc."}}))})),
              (Devices{{"Magic Mouse 2", "Apple, Inc."}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AVendorOutsideTheTableLeavesTheMakerToTheManufacturerProperty) {
    EXPECT_EQ(pointingDevices(array({service(dictionary(
                  {{"Product", "Trackball"}, {"VendorID", 65535}, {"Manufacturer", "Kensington"}}))})),
              (Devices{{"Trackball", "Kensington"}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, APointingDeviceWithoutVendorOrManufacturerHasAnEmptyMaker) {
    EXPECT_EQ(pointingDevices(array({service(dictionary({{"Product", "Apple Internal Keyboard / Trackpad"}}))})),
              (Devices{{"Apple Internal Keyboard / Trackpad", ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AVendorIdThatIsNoNumberReadsAsZero) {
    EXPECT_EQ(pointingDevices(array({service(dictionary(
                  {{"Product", "Mouse"}, {"VendorID", "1452"}, {"Manufacturer", 12}}))})),
              (Devices{{"Mouse", ""}}));
    EXPECT_EQ(pointingDevices(array({service(dictionary(
                  {{"Product", 5}, {"VendorID", array({1452})}, {"Manufacturer", "Logi"}}))})),
              (Devices{{"", "Logi"}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, EqualPointingDevicesAppearOnceAndTheWalkStopsAtAPathlessService) {
    EXPECT_EQ(pointingDevices(array({service(dictionary({{"Product", "M"}, {"VendorID", 1133}})),
                                     service(dictionary({{"Product", "M"}, {"Manufacturer", "Logitech Inc."}})),
                                     service(dictionary({{"Product", "M"}, {"VendorID", 1118}})),
                                     pathlessService(dictionary({{"Product", "Late"}}))})),
              (Devices{{"M", "Logitech Inc."}, {"M", "Microsoft Corporation"}}));
}

// --- batteries -------------------------------------------------------------------------

TEST(QVIOKitHardwareInfoDiscoverer, EachPowerSourceIsABatteryWithItsOwnUnits) {
    Machine machine;
    machine.powerSources(array({dictionary({{"Name", "InternalBattery-0"},
                                            {"Hardware Serial Number", "D8693480ALQHDGRAR"},
                                            {"Current Capacity", 87.9},
                                            {"Time to Empty", 312},
                                            {"Is Charging", false}})}));
    const auto batteries = recordsOf<QVIOKitBattery>(machine.discoverer().discoverInfo()->get("batteries").array());
    ASSERT_EQ(batteries.size(), 1U);
    EXPECT_EQ(batteries[0]->name(), "InternalBattery-0");
    EXPECT_EQ(batteries[0]->serialNo(), "D8693480ALQHDGRAR");
    EXPECT_EQ(batteries[0]->capacity(), 87.0F);
    EXPECT_EQ(batteries[0]->estimatedRunTime(), 312);
}

TEST(QVIOKitHardwareInfoDiscoverer, ABatteryDescriptionWithMissingOrOddValuesGivesEmptyTextAndZero) {
    Machine machine;
    machine.powerSources(array({dictionary({{"Current Capacity", "full"}, {"Time to Empty", array({})}}),
                                dictionary({{"Name", 3}, {"Hardware Serial Number", "S"}, {"Current Capacity", 1e300},
                                            {"Time to Empty", -1}}),
                                Value("no description")}));
    const auto batteries = recordsOf<QVIOKitBattery>(machine.discoverer().discoverBatteries());
    ASSERT_EQ(batteries.size(), 2U);
    EXPECT_EQ(batteries[0]->name(), "");
    EXPECT_EQ(batteries[0]->serialNo(), "");
    EXPECT_EQ(batteries[0]->capacity(), 0.0F);
    EXPECT_EQ(batteries[0]->estimatedRunTime(), 0);
    EXPECT_EQ(batteries[1]->name(), "");
    EXPECT_EQ(batteries[1]->serialNo(), "S");
    EXPECT_GT(batteries[1]->capacity(), 1e9F);
    EXPECT_EQ(batteries[1]->estimatedRunTime(), -1);
}

TEST(QVIOKitHardwareInfoDiscoverer, AMachineWithoutBatteriesHasNone) {
    for (const Value& descriptions : {array({}), Value(), dictionary({{"Name", "InternalBattery-0"}})}) {
        Machine machine;
        if (!descriptions.isAbsent()) machine.powerSources(descriptions);
        const ArrayRef batteries = machine.discoverer().discoverBatteries();
        ASSERT_TRUE(batteries);
        EXPECT_TRUE(batteries->empty());
    }
}

TEST(QVIOKitHardwareInfoDiscoverer, EqualBatteriesAppearOnce) {
    Machine machine;
    const Value battery = dictionary({{"Name", "InternalBattery-0"}, {"Hardware Serial Number", "X"}});
    machine.powerSources(array({battery, battery}));
    EXPECT_EQ(machine.discoverer().discoverBatteries()->size(), 1U);
}

// --- disks -----------------------------------------------------------------------------

Value blockStorage(const std::optional<std::string>& product, const std::optional<std::string>& serial,
                   const std::optional<std::string>& location) {
    DictionaryRef device = makeDictionary();
    if (product) device->set("Product Name", *product);
    if (serial) device->set("Serial Number", *serial);
    device->set("Medium Type", "Solid State");
    DictionaryRef protocol = makeDictionary();
    protocol->set("Physical Interconnect", "USB");
    if (location) protocol->set("Physical Interconnect Location", *location);
    return dictionary({{"Device Characteristics", Value(device)}, {"Protocol Characteristics", Value(protocol)}});
}

Value withUsbSerial(Value service, const Value& usbSerial) {
    service.dictionary()->set("usbSerialNumber", usbSerial);
    return service;
}

struct DiskSeen {
    std::string name;
    std::string serial;
    bool removable;
    bool operator==(const DiskSeen&) const = default;
};

std::ostream& operator<<(std::ostream& out, const DiskSeen& disk) {
    return out << "{" << disk.name << ", " << disk.serial << ", " << disk.removable << "}";
}

std::vector<DiskSeen> disksOf(const ArrayRef& category) {
    std::vector<DiskSeen> seen;
    for (const auto& disk : recordsOf<QVIOKitDisk>(category)) {
        seen.push_back({disk->name().value_or("<absent>"), disk->serialNo().value_or("<absent>"), disk->isRemovable()});
    }
    return seen;
}

std::vector<DiskSeen> disks(const Value& services) {
    Machine machine;
    machine.registry(kBlockStorage, services);
    return disksOf(machine.discoverer().discoverIOBlockStorageDeviceAsDisks());
}

using Disks = std::vector<DiskSeen>;

TEST(QVIOKitHardwareInfoDiscoverer, ABlockStorageDeviceIsADiskWithItsCharacteristics) {
    EXPECT_EQ(disks(array({service(blockStorage("APPLE SSD AP0512Q", "0ba0147a2e2d4a34", "Internal"))})),
              (Disks{{"APPLE SSD AP0512Q", "0ba0147a2e2d4a34", false}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, ABlockStorageDeviceWithAnEmptyProductNameIsNotReported) {
    EXPECT_EQ(disks(array({service(blockStorage("", "S1", "Internal")), service(blockStorage(std::nullopt, "S2", "External")),
                           service(blockStorage("Kept", "S3", "Internal"))})),
              (Disks{{"Kept", "S3", false}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, ADiskThatStatesNoLocationIsRemovable) {
    EXPECT_EQ(disks(array({service(blockStorage("Mystery Disk", "M1", std::nullopt))})),
              (Disks{{"Mystery Disk", "M1", true}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AnExternalLocationInAnyCaseIsRemovable) {
    EXPECT_EQ(disks(array({service(blockStorage("A", "1", "External")), service(blockStorage("B", "2", "eXTERNAL")),
                           service(blockStorage("C", "3", "Internal")), service(blockStorage("D", "4", "Externally"))})),
              (Disks{{"A", "1", true}, {"B", "2", true}, {"C", "3", false}, {"D", "4", false}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, ADiskWithAnEmptySerialGetsTheUsbSerialNumberOfItsParent) {
    EXPECT_EQ(disks(array({withUsbSerial(service(blockStorage("SanDisk Ultra", "", "External")), "4C530001230825117494")})),
              (Disks{{"SanDisk Ultra", "4C530001230825117494", true}}));
    EXPECT_EQ(disks(array({withUsbSerial(service(blockStorage("No Serial", std::nullopt, "External")), "AA01")})),
              (Disks{{"No Serial", "AA01", true}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, ADisksOwnSerialWinsOverTheUsbSerialNumber) {
    EXPECT_EQ(disks(array({withUsbSerial(service(blockStorage("Stick", "OWN", "External")), "USB")})),
              (Disks{{"Stick", "OWN", true}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AUsbSerialNumberThatIsNoAsciiTextOfAtMost127BytesGivesNoSerial) {
    const std::string longest(127, '7');
    const std::string tooLong(128, '8');
    EXPECT_EQ(disks(array({withUsbSerial(service(blockStorage("A", "", "External")), longest),
                           withUsbSerial(service(blockStorage("B", "", "External")), tooLong),
                           withUsbSerial(service(blockStorage("C", "", "External")), "Seri\xC3\xA9"),
                           withUsbSerial(service(blockStorage("D", "", "External")), 1234),
                           withUsbSerial(service(blockStorage("E", "", "External")), std::string("AB\0CD", 5))})),
              (Disks{{"A", longest, true}, {"B", "", true}, {"C", "", true}, {"D", "", true}, {"E", "AB", true}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, CharacteristicsOfTheWrongTypeReadAsAbsent) {
    EXPECT_EQ(disks(array({service(dictionary({{"Device Characteristics", "APPLE SSD"}})),
                           service(dictionary({{"Device Characteristics", dictionary({{"Product Name", 5}})}})),
                           service(dictionary({{"Device Characteristics", dictionary({{"Product Name", "P"}, {"Serial Number", 9}})},
                                               {"Protocol Characteristics", array({"External"})}}))})),
              (Disks{{"P", "", true}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, TheDiskWalkSkipsUnreadablePropertiesAndStopsAtAPathlessService) {
    EXPECT_EQ(disks(array({servicewithoutProperties(), service(blockStorage("First", "1", "Internal")),
                           pathlessService(blockStorage("Pathless", "2", "Internal")),
                           service(blockStorage("Late", "3", "Internal"))})),
              (Disks{{"First", "1", false}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, EqualDisksAppearOnceAndTheDisksCategoryHoldsTheBlockStorageDisks) {
    Machine machine;
    machine.registry(kBlockStorage, array({service(blockStorage("Disk", "1", "Internal")),
                                           service(blockStorage("Disk", "1", "Internal")),
                                           service(blockStorage("Disk", "1", "External"))}));
    const Disks expected = {{"Disk", "1", false}, {"Disk", "1", true}};
    EXPECT_EQ(disksOf(machine.discoverer().discoverIOBlockStorageDeviceAsDisks()), expected);
    EXPECT_EQ(disksOf(machine.discoverer().discoverDisks()), expected);
    EXPECT_EQ(disksOf(machine.discoverer().discoverInfo()->get("disks").array()), expected);
}

// --- network adapters ------------------------------------------------------------------

struct AdapterSeen {
    std::string vendor;
    std::string adapter;
    std::string mac;
    std::uint64_t speed;
    std::string ssid;
    bool operator==(const AdapterSeen&) const = default;
};

std::ostream& operator<<(std::ostream& out, const AdapterSeen& adapter) {
    return out << "{" << adapter.vendor << ", " << adapter.adapter << ", " << adapter.mac << ", " << adapter.speed
               << ", " << adapter.ssid << "}";
}

using Adapters = std::vector<AdapterSeen>;

Adapters adaptersOf(const ArrayRef& category) {
    Adapters seen;
    for (const auto& adapter : recordsOf<QVIOKitNetwork>(category)) {
        seen.push_back({adapter->vendor().value_or("<absent>"), adapter->adapter().value_or("<absent>"),
                        adapter->macAddress().value_or("<absent>"), adapter->speed(), adapter->ssid().value_or("<absent>")});
    }
    return seen;
}

Adapters adapters(const Value& services, const Value& wiFi = Value(), bool mockWiFi = false) {
    Machine machine;
    machine.registry(kEthernet, services);
    if (!wiFi.isAbsent()) machine.wiFi(wiFi);
    return adaptersOf(machine.discoverer(mockWiFi).discoverNetworkAdapters());
}

TEST(QVIOKitHardwareInfoDiscoverer, TheWiFiControllerIsAnAdapterWithItsNetworkName) {
    const Value wlan = service(dictionary({{"IOClass", "AppleBCMWLANCore"},
                                           {"IOModel", "Wireless Network Adapter (802.11 a/b/g/n/ac/ax)"},
                                           {"IOVendor", "Apple"},
                                           {"IOLinkSpeed", 54000000},
                                           {"IOMACAddress", bytes({0x00, 0x1c, 0xb3, 0x09, 0x85, 0x15})}}));
    EXPECT_EQ(adapters(array({wlan}), dictionary({{"hardwareAddress", "00:1c:b3:09:85:15"}, {"ssid", "Cafe Net"}})),
              (Adapters{{"Apple", "Wireless Network Adapter (802.11 a/b/g/n/ac/ax) - AppleBCMWLANCore",
                         "00:1C:B3:09:85:15", 54000000, "Cafe Net"}}));
}

// An empty model counts as stated: " - <class>", which the record stores trimmed.
TEST(QVIOKitHardwareInfoDiscoverer, TheAdapterNameIsModelAndClassOrWhicheverIsStated) {
    EXPECT_EQ(adapters(array({service(dictionary({{"IOModel", "Model Only"}, {"IOMACAddress", bytes({1, 2, 3, 4, 5, 6})}})),
                              service(dictionary({{"IOClass", "ClassOnly"}, {"IOMACAddress", bytes({1, 2, 3, 4, 5, 7})}})),
                              service(dictionary({{"IOVendor", "Nobody"}, {"IOMACAddress", bytes({1, 2, 3, 4, 5, 8})}})),
                              service(dictionary({{"IOModel", ""}, {"IOClass", "AppleUSBDeviceNCMData"},
                                                  {"IOMACAddress", bytes({1, 2, 3, 4, 5, 9})}}))})),
              (Adapters{{"", "Model Only", "01:02:03:04:05:06", 0, ""},
                        {"", "ClassOnly", "01:02:03:04:05:07", 0, ""},
                        {"Nobody", "", "01:02:03:04:05:08", 0, ""},
                        {"", "- AppleUSBDeviceNCMData", "01:02:03:04:05:09", 0, ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, OnlyTheAdapterWithTheWiFiInterfacesAddressHasANetworkName) {
    const Value wiFi = dictionary({{"hardwareAddress", "18:3e:ef:c0:46:68"}, {"ssid", "Home"}});
    EXPECT_EQ(adapters(array({service(dictionary({{"IOClass", "AppleBCMWLANCore"}, {"IOMACAddress", bytes({0x18, 0x3e, 0xef, 0xc0, 0x46, 0x68})}})),
                              service(dictionary({{"IOClass", "AppleUSBDeviceNCMData"}, {"IOMACAddress", bytes({0x1e, 0x29, 0x40, 0x04, 0xc0, 0x60})}}))}),
                       wiFi),
              (Adapters{{"", "AppleBCMWLANCore", "18:3E:EF:C0:46:68", 0, "Home"},
                        {"", "AppleUSBDeviceNCMData", "1E:29:40:04:C0:60", 0, ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AWiFiInterfaceThatIsNotAssociatedGivesAnEmptyNetworkName) {
    const Value wlan = service(dictionary({{"IOClass", "W"}, {"IOMACAddress", bytes({0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff})}}));
    EXPECT_EQ(adapters(array({wlan}), dictionary({{"hardwareAddress", "aa:bb:cc:dd:ee:ff"}})),
              (Adapters{{"", "W", "AA:BB:CC:DD:EE:FF", 0, ""}}));
    EXPECT_EQ(adapters(array({wlan}), dictionary({{"hardwareAddress", 5}, {"ssid", "Hidden"}})),
              (Adapters{{"", "W", "AA:BB:CC:DD:EE:FF", 0, ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, WithTheMockWiFiInterfaceEveryAdaptersNetworkIsTheMockOne) {
    const Value wiFi = dictionary({{"hardwareAddress", "aa:bb:cc:dd:ee:ff"}, {"ssid", "Real"}});
    EXPECT_EQ(adapters(array({service(dictionary({{"IOClass", "A"}, {"IOMACAddress", bytes({0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff})}})),
                              service(dictionary({{"IOClass", "B"}, {"IOMACAddress", bytes({1, 1, 1, 1, 1, 1})}})),
                              service(dictionary({{"IOClass", "C"}}))}),
                       wiFi, true),
              (Adapters{{"", "A", "AA:BB:CC:DD:EE:FF", 0, "mock-ssid"},
                        {"", "B", "01:01:01:01:01:01", 0, "mock-ssid"},
                        {"", "C", "", 0, "mock-ssid"}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, AnAdapterWithoutSixByteNumbersOfMacAddressHasAnEmptyAddress) {
    const Value wiFi = dictionary({{"hardwareAddress", ""}, {"ssid", "Should not match"}});
    EXPECT_EQ(adapters(array({service(dictionary({{"IOClass", "Missing"}})),
                              service(dictionary({{"IOClass", "Short"}, {"IOMACAddress", bytes({1, 2, 3, 4, 5})}})),
                              service(dictionary({{"IOClass", "Text"}, {"IOMACAddress", "00:11:22:33:44:55"}})),
                              service(dictionary({{"IOClass", "Big"}, {"IOMACAddress", bytes({1, 2, 3, 4, 5, 256})}})),
                              service(dictionary({{"IOClass", "Negative"}, {"IOMACAddress", array({1, 2, 3, 4, 5, -1})}})),
                              service(dictionary({{"IOClass", "Real"}, {"IOMACAddress", array({1, 2, 3, 4, 5, 6.0})}}))}),
                       wiFi),
              (Adapters{{"", "Missing", "", 0, ""},
                        {"", "Short", "", 0, ""},
                        {"", "Text", "", 0, ""},
                        {"", "Big", "", 0, ""},
                        {"", "Negative", "", 0, ""},
                        {"", "Real", "", 0, ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, OnlyTheFirstSixMacBytesCount) {
    EXPECT_EQ(adapters(array({service(dictionary({{"IOClass", "Long"}, {"IOMACAddress", bytes({0, 1, 2, 3, 4, 5, 6, 7})}}))})),
              (Adapters{{"", "Long", "00:01:02:03:04:05", 0, ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, ALinkSpeedThatIsNoNumberReadsAsZeroAndPropertiesOfTheWrongTypeAsAbsent) {
    EXPECT_EQ(adapters(array({service(dictionary({{"IOClass", 1}, {"IOModel", array({})}, {"IOVendor", dictionary({})},
                                                  {"IOLinkSpeed", "1000"}, {"IOMACAddress", bytes({1, 2, 3, 4, 5, 6})}})),
                              service(dictionary({{"IOClass", "Big"}, {"IOLinkSpeed", std::uint64_t{10000000000}},
                                                  {"IOMACAddress", bytes({1, 2, 3, 4, 5, 7})}}))})),
              (Adapters{{"", "", "01:02:03:04:05:06", 0, ""}, {"", "Big", "01:02:03:04:05:07", 10000000000ULL, ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, TheAdapterWalkSkipsUnreadablePropertiesAndStopsAtAPathlessService) {
    EXPECT_EQ(adapters(array({servicewithoutProperties(), service(dictionary({{"IOClass", "First"}})),
                              pathlessService(dictionary({{"IOClass", "Pathless"}})),
                              service(dictionary({{"IOClass", "Late"}}))})),
              (Adapters{{"", "First", "", 0, ""}}));
}

TEST(QVIOKitHardwareInfoDiscoverer, EqualAdaptersAppearOnceWhateverTheirSpeed) {
    EXPECT_EQ(adapters(array({service(dictionary({{"IOClass", "E"}, {"IOLinkSpeed", 1}, {"IOMACAddress", bytes({1, 2, 3, 4, 5, 6})}})),
                              service(dictionary({{"IOClass", "E"}, {"IOLinkSpeed", 2}, {"IOMACAddress", bytes({1, 2, 3, 4, 5, 6})}}))})),
              (Adapters{{"", "E", "01:02:03:04:05:06", 1, ""}}));
}

// --- large registries ------------------------------------------------------------------

// A registry listing as a property list: count HID interfaces, each with a big element
// table and report descriptor, as the built-in keyboards of recent laptops carry.
std::string largeRegistryList(int count) {
    std::string descriptor;
    for (int byte = 0; byte < 400; ++byte) descriptor += "BQEJBqEBBQcZ4Cnn";
    std::string list = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<array>\n";
    for (int index = 0; index < count; ++index) {
        list += "<dict><key>path</key><string>IOService:/AppleARMPE/hid" + std::to_string(index) + "</string>";
        list += "<key>properties</key><dict><key>Product</key><string>Keyboard " + std::to_string(index) + "</string>";
        list += "<key>ReportDescriptor</key><data>" + descriptor + "</data><key>Elements</key><array>";
        for (int element = 0; element < 20; ++element) {
            list += "<dict><key>Usage</key><integer>" + std::to_string(element) +
                    "</integer><key>UsagePage</key><integer>7</integer></dict>";
        }
        list += "</array></dict></dict>\n";
    }
    return list + "</array>\n</plist>\n";
}

TEST(QVIOKitHardwareInfoDiscoverer, ARegistryOfHundredsOfKilobytesIsReadWhole) {
    const std::string list = largeRegistryList(300);
    ASSERT_GT(list.size(), 500U * 1024U);
    const std::optional<Value> tree = parsePropertyList(list);
    ASSERT_TRUE(tree);
    Machine machine;
    machine.registry(kKeyboards, *tree);
    const Names names = keyboardNames(machine);
    ASSERT_EQ(names.size(), 300U);
    EXPECT_EQ(names.front(), "Keyboard 0");
    EXPECT_EQ(names.back(), "Keyboard 299");
}

}  // namespace
}  // namespace tov
