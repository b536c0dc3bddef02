#include "discovery/linux/LinuxNetworkAdapters.h"

#include <gtest/gtest.h>

#include <map>

#include "discovery/QVSMockWiFiInterface.h"
#include "discovery/linux/LinuxBusVendor.h"
#include "discovery/linux/LinuxNetworkInterface.h"
#include "model/QVIOKitNetwork.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

const char* kPciIds =
    "# test excerpt\n"
    "1af4  Red Hat, Inc.\n"
    "\t1000  Virtio network device\n"
    "8086  Intel Corporation\n"
    "\t1521  I350 Gigabit Network Connection\n"
    "\t1a1c  Ethernet Connection (17) I219-LM\n"
    "\t51f1  Raptor Lake PCH CNVi WiFi\n";
const char* kUsbIds =
    "# test excerpt\n"
    "0bda  Realtek Semiconductor Corp.\n"
    "\t8153  RTL8153 Gigabit Ethernet Adapter\n";

struct Adapter {
    std::string manufacturer;
    std::string adapterName;
    std::string macAddress;
    std::uint64_t speed = 0;
    std::string ssid;

    bool operator==(const Adapter&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Adapter& adapter) {
    return out << "{" << adapter.manufacturer << " | " << adapter.adapterName << " | " << adapter.macAddress << " | "
               << adapter.speed << " | " << adapter.ssid << "}";
}

// A machine with the id databases and the sysfs trees of its network interfaces.
class NetworkMachine {
public:
    NetworkMachine() {
        source->file("/usr/share/misc/pci.ids", kPciIds);
        source->file("/usr/share/misc/usb.ids", kUsbIds);
    }

    // An interface of the device at deviceFolder (under /sys/devices), as the kernel links it.
    NetworkMachine& interface(const std::string& name, const std::string& deviceFolder, const std::string& address) {
        const std::string folder = deviceFolder + "/net/" + name;
        folders[name] = folder;
        source->link("/sys/class/net/" + name, "../../" + folder.substr(5));
        source->link(folder + "/device", "../../../" + deviceFolder.substr(deviceFolder.rfind('/') + 1));
        if (!address.empty()) source->file(folder + "/address", address + "\n");
        return *this;
    }

    // An interface without a device (loopback, bridge, veth).
    NetworkMachine& virtualInterface(const std::string& name) {
        source->link("/sys/class/net/" + name, "../../devices/virtual/net/" + name);
        source->file("/sys/devices/virtual/net/" + name + "/address", "00:00:00:00:00:00\n");
        return *this;
    }

    NetworkMachine& driver(const std::string& deviceFolder, const std::string& bus, const std::string& name) {
        source->link(deviceFolder + "/driver", "../../../../bus/" + bus + "/drivers/" + name);
        return *this;
    }

    NetworkMachine& pciFunction(const std::string& folder, const std::string& vendor, const std::string& device) {
        source->file(folder + "/vendor", vendor + "\n");
        if (!device.empty()) source->file(folder + "/device", device + "\n");
        source->link(folder + "/subsystem", "../../../bus/pci");
        return *this;
    }

    NetworkMachine& usbDevice(const std::string& folder, const std::string& vendor, const std::string& product) {
        source->file(folder + "/idVendor", vendor + "\n");
        source->file(folder + "/idProduct", product + "\n");
        return *this;
    }

    NetworkMachine& speed(const std::string& name, const std::string& text) {
        source->file(folders.at(name) + "/speed", text);
        return *this;
    }

    NetworkMachine& wireless(const std::string& name) {
        source->folder(folders.at(name) + "/wireless");
        return *this;
    }

    std::vector<Adapter> adapters(QVSWiFiInterface* wiFiInterface = nullptr) {
        HardwareIds ids(source);
        const ArrayRef records = wiFiInterface ? discoverLinuxNetworkAdapters(*source, ids, *wiFiInterface)
                                               : discoverLinuxNetworkAdapters(*source, ids);
        std::vector<Adapter> found;
        for (const Value& element : *records) {
            const auto network = std::dynamic_pointer_cast<QVIOKitNetwork>(element.record());
            if (!network) continue;
            found.push_back({network->vendor().value_or("?"), network->adapter().value_or("?"),
                             network->macAddress().value_or("?"), network->speed(), network->ssid().value_or("?")});
        }
        return found;
    }

    std::shared_ptr<MemorySystemSource> source = std::make_shared<MemorySystemSource>();
    // The interfaces' folders under their devices, by name.
    std::map<std::string, std::string> folders;
};

constexpr const char* kOnboard = "/sys/devices/pci0000:00/0000:00:1f.6";
constexpr const char* kCnvi = "/sys/devices/pci0000:00/0000:00:14.3";

NetworkMachine onboardEthernet() {
    NetworkMachine machine;
    machine.pciFunction(kOnboard, "0x8086", "0x1a1c").driver(kOnboard, "pci", "e1000e");
    machine.interface("enp0s31f6", kOnboard, "00:1c:b3:09:85:15").speed("enp0s31f6", "1000\n");
    return machine;
}

TEST(LinuxNetworkAdapters, APciAdapterIsNamedByItsDeviceAndDriver) {
    EXPECT_EQ(onboardEthernet().adapters(),
              (std::vector<Adapter>{{"Intel Corporation", "Ethernet Connection (17) I219-LM - e1000e",
                                     "00:1C:B3:09:85:15", 1000000000, ""}}));
}

TEST(LinuxNetworkAdapters, InterfacesWithoutADeviceAreLeftOut) {
    NetworkMachine machine = onboardEthernet();
    machine.virtualInterface("lo").virtualInterface("docker0").virtualInterface("veth3f2a1b0");
    ASSERT_EQ(machine.adapters().size(), 1u);
    EXPECT_EQ(machine.adapters()[0].macAddress, "00:1C:B3:09:85:15");
}

TEST(LinuxNetworkAdapters, ThePermanentAddressWinsOverTheCurrentOne) {
    NetworkMachine machine = onboardEthernet();
    DictionaryRef permanent = makeDictionary();
    permanent->set("address", "d4:ae:52:9c:1e:41");
    machine.source->fact("permanentAddress", "enp0s31f6", permanent);
    EXPECT_EQ(machine.adapters()[0].macAddress, "D4:AE:52:9C:1E:41");
}

TEST(LinuxNetworkAdapters, AVirtioAdapterBelongsToThePciFunctionAboveIt) {
    NetworkMachine machine;
    const std::string function = "/sys/devices/pci0000:00/0000:00:03.0";
    machine.pciFunction(function, "0x1af4", "0x1000").driver(function + "/virtio0", "virtio", "virtio_net");
    machine.interface("enp0s3", function + "/virtio0", "52:54:00:12:34:56").speed("enp0s3", "-1\n");
    EXPECT_EQ(machine.adapters(), (std::vector<Adapter>{{"Red Hat, Inc.", "Virtio network device - virtio_net",
                                                          "52:54:00:12:34:56", 0, ""}}));
}

TEST(LinuxNetworkAdapters, AUsbAdapterBelongsToTheUsbDeviceAboveItsInterface) {
    NetworkMachine machine;
    const std::string device = "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1";
    machine.pciFunction("/sys/devices/pci0000:00/0000:00:14.0", "0x8086", "0x7a60");
    machine.usbDevice(device, "0bda", "8153").driver(device + "/2-1:1.0", "usb", "r8152");
    machine.interface("enx00e04c680a1b", device + "/2-1:1.0", "00:e0:4c:68:0a:1b");
    EXPECT_EQ(machine.adapters(), (std::vector<Adapter>{{"Realtek Semiconductor Corp.",
                                                          "RTL8153 Gigabit Ethernet Adapter - r8152",
                                                          "00:E0:4C:68:0A:1B", 0, ""}}));
}

TEST(LinuxNetworkAdapters, AnAdapterOnNoBusIsItsDriverAlone) {
    NetworkMachine machine;
    const std::string device = "/sys/devices/platform/soc/fd580000.ethernet";
    machine.source->link(device + "/subsystem", "../../../bus/platform");
    machine.driver(device, "platform", "bcmgenet").interface("end0", device, "dc:a6:32:01:02:03").speed("end0", "100\n");
    EXPECT_EQ(machine.adapters(), (std::vector<Adapter>{{"", "bcmgenet", "DC:A6:32:01:02:03", 100000000, ""}}));
}

TEST(LinuxNetworkAdapters, AnAdapterWithoutDriverIsItsModelAlone) {
    NetworkMachine machine;
    machine.pciFunction(kOnboard, "0x8086", "0x1521").interface("eth0", kOnboard, "a0:36:9f:00:00:01");
    EXPECT_EQ(machine.adapters()[0].adapterName, "I350 Gigabit Network Connection");
}

TEST(LinuxNetworkAdapters, UnknownIdsAreWrittenInHex) {
    NetworkMachine machine;
    machine.pciFunction(kOnboard, "0x8086", "0x15b9").driver(kOnboard, "pci", "e1000e");
    machine.interface("eth0", kOnboard, "a0:36:9f:00:00:01");
    EXPECT_EQ(machine.adapters()[0].adapterName, "0x15b9 - e1000e");
    EXPECT_EQ(machine.adapters()[0].manufacturer, "Intel Corporation");
}

TEST(LinuxNetworkAdapters, AFunctionWithoutDeviceIdHasNoModel) {
    NetworkMachine machine;
    machine.pciFunction(kOnboard, "0x8086", "").driver(kOnboard, "pci", "e1000e").interface("eth0", kOnboard, "a0:36:9f:00:00:01");
    EXPECT_EQ(machine.adapters()[0].adapterName, "e1000e");
}

TEST(LinuxNetworkAdapters, SpeedsThatAreNoPositiveNumberGiveZero) {
    for (const char* text : {"-1\n", "fast\n", "", "10000000000000\n", "100 Mb/s\n", "0\n"}) {
        NetworkMachine machine = onboardEthernet();
        machine.speed("enp0s31f6", text);
        EXPECT_EQ(machine.adapters()[0].speed, 0u) << text;
    }
    NetworkMachine machine = onboardEthernet();
    machine.speed("enp0s31f6", " 25000 \n");
    EXPECT_EQ(machine.adapters()[0].speed, 25000000000u);
}

TEST(LinuxNetworkAdapters, AMissingOrBrokenAddressGivesAnEmptyAddress) {
    NetworkMachine machine;
    machine.pciFunction(kOnboard, "0x8086", "0x1a1c").driver(kOnboard, "pci", "e1000e").interface("eth0", kOnboard, "");
    EXPECT_EQ(machine.adapters()[0].macAddress, "");
    machine.source->file(std::string(kOnboard) + "/net/eth0/address", "\x1b[31mzz:zz\n");
    EXPECT_EQ(machine.adapters()[0].macAddress, "");
}

TEST(LinuxNetworkAdapters, AnInterfaceLinkLoopIsLeftOut) {
    NetworkMachine machine = onboardEthernet();
    machine.source->link("/sys/class/net/eth9", "eth9");
    EXPECT_EQ(machine.adapters().size(), 1u);
}

NetworkMachine laptopWifi(const Value& network) {
    NetworkMachine machine = onboardEthernet();
    machine.pciFunction(kCnvi, "0x8086", "0x51f1").driver(kCnvi, "pci", "iwlwifi");
    machine.interface("wlp0s20f3", kCnvi, "00:1c:b3:09:85:15").wireless("wlp0s20f3");
    machine.source->file(std::string(kOnboard) + "/net/enp0s31f6/address", "38:ca:84:11:22:33\n");
    if (!network.isAbsent()) machine.source->fact("wifiNetwork", "wlp0s20f3", network);
    return machine;
}

Value ssidFact(const std::string& ssid) {
    DictionaryRef fact = makeDictionary();
    fact->set("ssid", ssid);
    return fact;
}

TEST(LinuxNetworkAdapters, AWifiAdapterHasItsNetworkNameAndTheOthersNone) {
    const std::vector<Adapter> adapters = laptopWifi(ssidFact("Lindenhof-5G")).adapters();
    ASSERT_EQ(adapters.size(), 2u);
    EXPECT_EQ(adapters[0], (Adapter{"Intel Corporation", "Ethernet Connection (17) I219-LM - e1000e",
                                    "38:CA:84:11:22:33", 1000000000, ""}));
    EXPECT_EQ(adapters[1], (Adapter{"Intel Corporation", "Raptor Lake PCH CNVi WiFi - iwlwifi",
                                    "00:1C:B3:09:85:15", 0, "Lindenhof-5G"}));
}

TEST(LinuxNetworkAdapters, AWiredAdapterNeverHasANetworkName) {
    NetworkMachine machine = onboardEthernet();
    machine.source->fact("wifiNetwork", "enp0s31f6", ssidFact("Lindenhof-5G"));
    EXPECT_EQ(machine.adapters()[0].ssid, "");
}

TEST(LinuxNetworkAdapters, AWifiAdapterThatIsNotAssociatedOrUnknownToNl80211HasNoNetworkName) {
    EXPECT_EQ(laptopWifi(ssidFact("")).adapters()[1].ssid, "");
    EXPECT_EQ(laptopWifi(Value()).adapters()[1].ssid, "");
    EXPECT_EQ(laptopWifi(Value("Lindenhof")).adapters()[1].ssid, "");
}

TEST(LinuxNetworkAdapters, AHostileNetworkNameBecomesOnePrintableLine) {
    const std::vector<Adapter> adapters = laptopWifi(ssidFact("Caf\xc3\xa9\x1b[2J\nFree\xff")).adapters();
    EXPECT_EQ(adapters[1].ssid, "Caf\xc3\xa9[2JFree\xef\xbf\xbd");
}

TEST(LinuxNetworkAdapters, AWifiAdapterWithAPhyLinkOnlyCountsAsWireless) {
    NetworkMachine machine = laptopWifi(ssidFact("Lindenhof-5G"));
    machine.source->link("/sys/class/net/eth1", "../../devices/pci0000:00/0000:00:14.3/net/eth1");
    machine.source->link(std::string(kCnvi) + "/net/eth1/device", "../../../0000:00:14.3");
    machine.source->link(std::string(kCnvi) + "/net/eth1/phy80211", "../../ieee80211/phy1");
    machine.source->file(std::string(kCnvi) + "/net/eth1/address", "02:00:00:00:00:01\n");
    machine.source->fact("wifiNetwork", "eth1", ssidFact("Guest"));
    EXPECT_EQ(machine.adapters()[1].ssid, "Guest");
}

TEST(LinuxNetworkAdapters, WithTheMockInterfaceEveryAdapterIsOnTheMockNetwork) {
    NetworkMachine machine = laptopWifi(ssidFact("Lindenhof-5G"));
    QVSMockWiFiInterface mock;
    for (const Adapter& adapter : machine.adapters(&mock)) EXPECT_EQ(adapter.ssid, "mock-ssid") << adapter;
    EXPECT_EQ(machine.adapters(&mock).size(), 2u);
}

TEST(LinuxNetworkAdapters, NoInterfaceFolderGivesNoAdapters) {
    NetworkMachine machine;
    EXPECT_TRUE(machine.adapters().empty());
}

TEST(LinuxNetworkAdapters, TwoEqualAdaptersAreReportedOnce) {
    NetworkMachine machine = onboardEthernet();
    machine.source->link("/sys/class/net/enp0s31f6d1", "../../devices/pci0000:00/0000:00:1f.6/net/enp0s31f6d1");
    machine.source->link(std::string(kOnboard) + "/net/enp0s31f6d1/device", "../../../0000:00:1f.6");
    machine.source->file(std::string(kOnboard) + "/net/enp0s31f6d1/address", "00:1c:b3:09:85:15\n");
    EXPECT_EQ(machine.adapters().size(), 1u);
}

TEST(LinuxBusVendor, GivesTheDeviceIdOfAPciFunctionAndAUsbDevice) {
    NetworkMachine machine = laptopWifi(Value());
    const std::optional<BusVendor> pci = linuxBusVendor(*machine.source, "/sys/class/net/wlp0s20f3/device");
    ASSERT_TRUE(pci);
    EXPECT_EQ(pci->vendor, 0x8086);
    EXPECT_EQ(pci->device, 0x51f1);
    const std::string usb = "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1";
    machine.usbDevice(usb, "0bda", "8153").interface("usb0", usb + "/2-1:1.0", "00:e0:4c:68:0a:1b");
    const std::optional<BusVendor> adapter = linuxBusVendor(*machine.source, "/sys/class/net/usb0/device");
    ASSERT_TRUE(adapter);
    EXPECT_EQ(adapter->database, IdsDatabase::Usb);
    EXPECT_EQ(adapter->device, 0x8153);
}

TEST(LinuxNetworkInterface, HardwareAddressTextIsColonSeparatedHexPairs) {
    for (const char* text : {"00:1c:b3:09:85:15", "00:1C:B3:09:85:15", "ff", "00:00:00:00:fe:80:00:00:00:00:00:00:00:00:00:01"}) {
        EXPECT_TRUE(isHardwareAddressText(text)) << text;
    }
    for (const char* text : {"", "0", "00:1c:b3:09:85:1", "00-1c-b3-09-85-15", "00:1c:b3:09:85:15:", "zz:zz", "001c.b309.8515"}) {
        EXPECT_FALSE(isHardwareAddressText(text)) << text;
    }
    std::string longest = "aa";
    for (int pair = 1; pair < 32; ++pair) longest += ":aa";
    EXPECT_TRUE(isHardwareAddressText(longest));
    EXPECT_FALSE(isHardwareAddressText(longest + ":aa"));
}

}  // namespace
}  // namespace tov
