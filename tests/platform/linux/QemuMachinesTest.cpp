// Boots real Linux kernels under QEMU with devices the test names (USB and PS/2 input,
// NVMe, SATA, virtio and USB disks with serial numbers, SMBIOS system and memory records,
// a display with EDID, network adapters with given MAC addresses, HDA sound), runs tov -p
// inside, and holds each report against the devices the machine was started with.
//
// The machines of the selected tests boot together, once per test run, from one initramfs.
// A machine into which a USB stick is plugged while it runs boots on its own, in its test.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "support/QemuHost.h"
#include "support/QemuMachine.h"
#include "support/RawDiskImage.h"
#include "support/ReportSchemaCheck.h"
#include "support/TestFolder.h"
#include "support/UsbStickMachine.h"

namespace tov {
namespace {

using nlohmann::json;
using testing::QemuMachine;

constexpr std::uint64_t kMiB = 1024 * 1024;
constexpr std::chrono::seconds kBootLimit{240};
// The title of the marker lines around the guest's `tov -p` report.
constexpr const char* kReportTitle = "TOV REPORT";

// The names the guest kernel gives the input devices QEMU emulates.
constexpr const char* kPs2Keyboard = "AT Translated Set 2 keyboard";
constexpr const char* kPs2Mouse = "ImExPS/2 Generic Explorer Mouse";
constexpr const char* kUsbKeyboard = "QEMU QEMU USB Keyboard";
constexpr const char* kUsbMouse = "QEMU QEMU USB Mouse";
constexpr const char* kUsbTablet = "QEMU QEMU USB Tablet";
// Guest paths that exist once the PS/2 keyboard and mouse are probed.
constexpr const char* kPs2KeyboardInput = "/sys/devices/platform/i8042/serio0/input/input*";
constexpr const char* kPs2MouseInput = "/sys/devices/platform/i8042/serio1/input/input*";

// The SMBIOS system record (type 1) a machine is started with.
struct SystemRecord {
    const char* manufacturer;
    const char* product;
    const char* serial;
};

// The SMBIOS memory-device record (type 17) fields a machine is started with.
struct MemoryRecord {
    const char* locatorPrefix;
    const char* bank;
    const char* manufacturer;
    const char* serial;
    const char* part;
    int speed;
};

// A desktop: PS/2 and USB input, a USB disk with one partition, a display with EDID, HDA
// sound and an e1000e adapter.
namespace desktop {
constexpr const char* kName = "usb-desktop";
constexpr SystemRecord kSystem{"Quorvel Labs", "QV Desk 100", "QVD-100-7731"};
constexpr MemoryRecord kMemory{"DIMM", "BANK 0", "Samsung", "4A1B2C3D", "M378A5244CB0-CTD", 2666};
constexpr std::uint64_t kMemoryMiB = 512;
constexpr const char* kUsbDiskSerial = "QVUSB0042";
constexpr std::uint64_t kUsbDiskBytes = 48 * kMiB;
constexpr const char* kMac = "52:54:00:12:34:a1";
constexpr int kDisplayWidth = 1280;
constexpr int kDisplayHeight = 800;
}  // namespace desktop

// A storage server: NVMe, SATA (one partition) and virtio disks, virtio and e1000e
// adapters, two processors.
namespace server {
constexpr const char* kName = "storage-server";
constexpr SystemRecord kSystem{"Quorvel Labs", "QV Store 2U", "QVS-2U-0419"};
constexpr MemoryRecord kMemory{"DIMM_A", "P0 CHANNEL A", "Micron", "1F2E3D4C", "MTA9ASF1G72PZ-3G2", 3200};
constexpr std::uint64_t kMemoryMiB = 512;
constexpr const char* kNvmeSerial = "QVNVME-0001";
constexpr std::uint64_t kNvmeBytes = 32 * kMiB;
constexpr const char* kSataModel = "QV-SSD-480";
constexpr const char* kSataSerial = "QVSATA-0002";
constexpr std::uint64_t kSataBytes = 40 * kMiB;
constexpr const char* kVirtioSerial = "QVVIRT-0003";
constexpr std::uint64_t kVirtioBytes = 24 * kMiB;
constexpr const char* kVirtioMac = "52:54:00:b2:00:01";
constexpr const char* kE1000eMac = "52:54:00:b2:00:02";
}  // namespace server

// A bare machine: QEMU's own SMBIOS records (no serial number), no disks, no display, no
// sound, one virtio adapter.
namespace bare {
constexpr const char* kName = "bare-machine";
constexpr std::uint64_t kMemoryMiB = 768;
constexpr const char* kMac = "52:54:00:c3:00:01";
}  // namespace bare

// A machine with a USB controller and a user at its console, into which a labelled FAT
// stick is plugged while it runs; the guest mounts it where a desktop would.
namespace stick {
constexpr const char* kName = "usb-stick";
constexpr const char* kScenario = "usb-stick";
constexpr const char* kLabel = "QVSTICK";
constexpr const char* kSerial = "QVSTICK-0007";
constexpr std::uint64_t kBytes = 48 * kMiB;
constexpr const char* kUser = "qvuser";
constexpr unsigned kUid = 1000;
constexpr const char* kMountPath = "/media/qvuser/QVSTICK";
// Two scans and a hot-plug take about 25 s under emulation; the limit only bounds a failure.
constexpr std::chrono::seconds kLimit{240};
// The guest's `tov -p` reports: with the stick mounted, and once it is unmounted and pulled out.
constexpr const char* kMountedReport = "STICK MOUNTED";
constexpr const char* kPulledOutReport = "STICK PULLED OUT";

testing::UsbStick usbStick() { return {kLabel, kSerial, kBytes, kMountPath}; }

// The daemon in the same machine: the reports it hands over after the stick's mount and
// unmount, as the guest collected them from the outbox, and its log. The daemon ticks
// every 5 real seconds: about 50 s in all; the limit only bounds a failure.
constexpr const char* kDaemonName = "usb-stick-daemon";
constexpr const char* kDaemonScenario = "usb-stick-daemon";
constexpr std::chrono::seconds kDaemonLimit{300};
constexpr const char* kMountedDelta = "STICK MOUNTED DELTA";
constexpr const char* kUnmountedDelta = "STICK UNMOUNTED DELTA";
constexpr const char* kDaemonLog = "DAEMON LOG";
}  // namespace stick

std::string upperCase(std::string text) {
    for (char& character : text) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    return text;
}

std::vector<std::string> systemArguments(const SystemRecord& system) {
    return {"-smbios", std::string("type=1,manufacturer=") + system.manufacturer + ",product=" + system.product +
                           ",serial=" + system.serial};
}

std::vector<std::string> memoryArguments(std::uint64_t mebibytes, const MemoryRecord& memory) {
    return {"-m", std::to_string(mebibytes), "-smbios",
            std::string("type=17,loc_pfx=") + memory.locatorPrefix + ",bank=" + memory.bank +
                ",manufacturer=" + memory.manufacturer + ",serial=" + memory.serial + ",asset=AT-" + memory.serial +
                ",part=" + memory.part + ",speed=" + std::to_string(memory.speed)};
}

// A raw drive for a device that names it by id.
std::vector<std::string> driveArguments(const std::string& id, const std::string& image) {
    return {"-drive", "if=none,id=" + id + ",format=raw,file=" + image};
}

// A network adapter without a host side: the guest sees the device and its address only.
std::vector<std::string> networkArguments(const std::string& id, const std::string& model, const std::string& mac) {
    return {"-netdev", "user,id=" + id + ",restrict=on", "-device", model + ",netdev=" + id + ",mac=" + mac};
}

std::unique_ptr<QemuMachine> desktopMachine(const std::string& folder) {
    using namespace desktop;
    auto machine = std::make_unique<QemuMachine>(kName, folder);
    const std::string usbDisk = folder + "/desktop-usb.img";
    if (!testing::makePartitionedDiskImage(usbDisk, kUsbDiskBytes)) return nullptr;
    machine->addArguments({"-machine", "pc"});
    machine->addArguments(systemArguments(kSystem));
    machine->addArguments(memoryArguments(kMemoryMiB, kMemory));
    machine->addArguments({"-device", "qemu-xhci,id=xhci",
                           "-device", "usb-kbd,bus=xhci.0,port=1",
                           "-device", "usb-mouse,bus=xhci.0,port=2",
                           "-device", "usb-tablet,bus=xhci.0,port=3"});
    machine->addArguments(driveArguments("usbdisk", usbDisk));
    machine->addArguments({"-device", std::string("usb-storage,bus=xhci.0,port=4,drive=usbdisk,serial=") + kUsbDiskSerial});
    machine->addArguments({"-device", "VGA,edid=on,xres=" + std::to_string(kDisplayWidth) +
                                          ",yres=" + std::to_string(kDisplayHeight)});
    machine->addArguments({"-audiodev", "none,id=snd0", "-device", "intel-hda", "-device", "hda-duplex,audiodev=snd0"});
    machine->addArguments(networkArguments("net0", "e1000e", kMac));
    for (const char* port : {"1-1", "1-2", "1-3"}) {
        machine->waitForPath(std::string("/sys/bus/usb/devices/") + port + ":1.0/0003:*/input/input*");
    }
    for (const char* path : {kPs2KeyboardInput, kPs2MouseInput, "/sys/block/sda/sda1",
                             "/sys/class/drm/card0-Virtual-1/edid", "/proc/asound/card0/codec*", "/sys/class/net/eth0"}) {
        machine->waitForPath(path);
    }
    return machine;
}

std::unique_ptr<QemuMachine> serverMachine(const std::string& folder) {
    using namespace server;
    auto machine = std::make_unique<QemuMachine>(kName, folder);
    const std::string nvme = folder + "/server-nvme.img";
    const std::string sata = folder + "/server-sata.img";
    const std::string virtio = folder + "/server-virtio.img";
    if (!testing::makeBlankDiskImage(nvme, kNvmeBytes) || !testing::makePartitionedDiskImage(sata, kSataBytes) ||
        !testing::makeBlankDiskImage(virtio, kVirtioBytes)) {
        return nullptr;
    }
    machine->addArguments({"-machine", "q35", "-smp", "2"});
    machine->addArguments(systemArguments(kSystem));
    machine->addArguments(memoryArguments(kMemoryMiB, kMemory));
    machine->addArguments(driveArguments("nvme", nvme));
    machine->addArguments({"-device", std::string("nvme,drive=nvme,serial=") + kNvmeSerial});
    machine->addArguments(driveArguments("sata", sata));
    machine->addArguments({"-device", "ahci,id=ahci", "-device",
                           std::string("ide-hd,bus=ahci.0,drive=sata,serial=") + kSataSerial + ",model=" + kSataModel});
    machine->addArguments(driveArguments("virtio", virtio));
    machine->addArguments({"-device", std::string("virtio-blk-pci,drive=virtio,serial=") + kVirtioSerial});
    machine->addArguments(networkArguments("net0", "virtio-net-pci", kVirtioMac));
    machine->addArguments(networkArguments("net1", "e1000e", kE1000eMac));
    for (const char* path : {kPs2KeyboardInput, kPs2MouseInput, "/sys/block/nvme0n1", "/sys/block/sda/sda1",
                             "/sys/block/vda", "/sys/class/net/eth0", "/sys/class/net/eth1"}) {
        machine->waitForPath(path);
    }
    return machine;
}

std::unique_ptr<QemuMachine> bareMachine(const std::string& folder) {
    using namespace bare;
    auto machine = std::make_unique<QemuMachine>(kName, folder);
    machine->addArguments({"-machine", "pc", "-m", std::to_string(kMemoryMiB)});
    machine->addArguments(networkArguments("net0", "virtio-net-pci", kMac));
    for (const char* path : {kPs2KeyboardInput, kPs2MouseInput, "/sys/class/net/eth0"}) machine->waitForPath(path);
    return machine;
}

// The machines of this run, booted once for every test of the suite that is selected.
struct MachineRun {
    std::string unavailable;
    std::string failure;
    testing::TestFolder folder;
    std::optional<testing::QemuGuestImage> image;
    std::map<std::string, std::unique_ptr<QemuMachine>> machines;
    double seconds = 0;
};

// Holds a document the guest printed between the marker lines of title against the report
// schema.
void expectMatchesReportSchema(const QemuMachine& machine, const std::string& title, const std::string& document) {
    const testing::TestFolder folder;
    std::string fileName = machine.name() + " " + title + ".json";
    std::replace(fileName.begin(), fileName.end(), ' ', '-');
    EXPECT_TRUE(testing::matchesReportSchema(document, folder.path(), fileName)) << machine.name() << ": " << title;
}

// The "HWInventory" of the report the guest printed between the marker lines of title,
// parsed; fails the test when the guest printed none, tov failed or the report does not
// match the report schema.
std::optional<json> inventoryIn(const QemuMachine& machine, const std::string& title) {
    EXPECT_EQ(machine.sectionStatus(title), 0) << "tov -p in " << machine.name() << " failed (" << title << ")";
    const std::optional<std::string> report = machine.section(title);
    if (!report) {
        ADD_FAILURE() << machine.name() << " printed no report " << title;
        return std::nullopt;
    }
    json document = json::parse(*report, nullptr, false);
    if (document.is_discarded() || !document.contains("HWInventory")) {
        ADD_FAILURE() << machine.name() << " printed no JSON report " << title;
        return std::nullopt;
    }
    expectMatchesReportSchema(machine, title, *report);
    return document["HWInventory"];
}

// The boot timeline line of a run: how long the initramfs and the machines took.
void printTiming(const char* what, std::chrono::steady_clock::time_point since) {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - since;
    std::cout << "[ QEMU     ] " << what << " in " << elapsed.count() << " s" << std::endl;
}

class QemuMachines : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        run_ = new MachineRun;
        run_->unavailable = testing::qemuMachinesUnavailable();
        if (!run_->unavailable.empty()) return;
        const auto started = std::chrono::steady_clock::now();
        run_->image = testing::makeQemuGuestImage(run_->folder.path(), TOV_EXECUTABLE, run_->failure);
        if (!run_->image) return;
        printTiming("initramfs made", started);
        bootSelectedMachines();
        printTiming("machines ran", started);
    }

    static void TearDownTestSuite() {
        delete run_;
        run_ = nullptr;
    }

    void SetUp() override {
        if (!run_->unavailable.empty()) GTEST_SKIP() << run_->unavailable;
        ASSERT_TRUE(run_->image) << run_->failure;
    }

    // The report of the machine of the running test, parsed; fails the test when the
    // machine gave none.
    static std::optional<json> reportOf(const std::string& name) {
        const auto found = run_->machines.find(name);
        if (found == run_->machines.end() || !found->second) {
            ADD_FAILURE() << "the machine " << name << " could not be set up";
            return std::nullopt;
        }
        QemuMachine& machine = *found->second;
        EXPECT_FALSE(machine.timedOut()) << name << " did not power off within " << kBootLimit.count() << " s";
        return inventoryIn(machine, kReportTitle);
    }

    // On failure, the guest's console (and QEMU's own messages), so a CI log shows why.
    static void printConsoleOnFailure(const std::string& name) {
        const auto found = run_->machines.find(name);
        if (found == run_->machines.end() || !found->second) return;
        printConsoleOnFailure(*found->second);
    }

    static void printConsoleOnFailure(const QemuMachine& machine) {
        if (!HasFailure()) return;
        std::cout << "----- console of " << machine.name() << " -----\n"
                  << machine.console() << "----- QEMU messages of " << machine.name() << " -----\n"
                  << machine.qemuMessages() << "----- end of " << machine.name() << " -----" << std::endl;
    }

    static const std::string& runFolder() { return run_->folder.path(); }
    static const testing::QemuGuestImage& guestImage() { return *run_->image; }

    static std::string kernelRelease() { return run_->image ? run_->image->kernelRelease : ""; }

private:
    // Only the machines whose tests are selected are started, all at once.
    static void bootSelectedMachines() {
        const std::map<std::string, std::unique_ptr<QemuMachine> (*)(const std::string&)> builders{
            {"UsbDesktop", desktopMachine}, {"StorageServer", serverMachine}, {"BareMachine", bareMachine}};
        const ::testing::TestSuite* suite = ::testing::UnitTest::GetInstance()->current_test_suite();
        std::vector<QemuMachine*> selected;
        for (int index = 0; suite != nullptr && index < suite->total_test_count(); ++index) {
            const ::testing::TestInfo* test = suite->GetTestInfo(index);
            const auto builder = builders.find(test->name());
            if (!test->should_run() || builder == builders.end()) continue;
            std::unique_ptr<QemuMachine> machine = builder->second(run_->folder.path());
            if (machine) selected.push_back(machine.get());
            run_->machines[machineNameOf(test->name())] = std::move(machine);
        }
        testing::runMachines(selected, *run_->image, kBootLimit);
    }

    static std::string machineNameOf(const std::string& testName) {
        if (testName == "UsbDesktop") return desktop::kName;
        if (testName == "StorageServer") return server::kName;
        return bare::kName;
    }

    static MachineRun* run_;
};

MachineRun* QemuMachines::run_ = nullptr;

// Every record of the array whose values for the expected keys are the expected ones.
std::vector<json> recordsMatching(const json& records, const json& expected) {
    std::vector<json> matching;
    if (!records.is_array()) return matching;
    for (const json& record : records) {
        bool matches = record.is_object();
        for (const auto& [key, value] : expected.items()) matches = matches && record.contains(key) && record[key] == value;
        if (matches) matching.push_back(record);
    }
    return matching;
}

::testing::AssertionResult hasRecord(const json& records, const json& expected) {
    if (recordsMatching(records, expected).size() == 1) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "no single record with " << expected.dump() << " in " << records.dump(2);
}

std::multiset<std::string> valuesOf(const json& records, const std::string& key) {
    std::multiset<std::string> values;
    if (!records.is_array()) return values;
    for (const json& record : records) {
        if (record.is_object() && record.contains(key) && record[key].is_string()) values.insert(record[key].get<std::string>());
    }
    return values;
}

void expectSystem(json report, const SystemRecord& system, const std::string& hostName) {
    EXPECT_EQ(report["iokit"]["serialNumbers"], json::parse(R"([{"serialNumber": ")" + std::string(system.serial) + "\"}]"));
    json& os = report["operatingSystems"];
    EXPECT_EQ(os["systemManufacturer"], system.manufacturer);
    EXPECT_EQ(os["systemModel"], system.product);
    EXPECT_EQ(os["serialNumber"], system.serial);
    EXPECT_EQ(os["systemName"], hostName);
}

void expectGuestOperatingSystem(json report, const std::string& kernelRelease) {
    json& os = report["operatingSystems"];
    EXPECT_EQ(os["osName"], "tov test guest");
    EXPECT_EQ(os["osVersion"], "1 (" + kernelRelease + ")");
    EXPECT_EQ(os["systemType"], "x86_64");
    EXPECT_EQ(os["username"], "");
    EXPECT_EQ(report["corefoundation"]["operatingSystems"][0]["build"], kernelRelease);
}

// Installed memory is what the SMBIOS memory devices add up to: all of the guest's RAM.
void expectMemoryTotal(json report, std::uint64_t mebibytes) {
    EXPECT_EQ(report["sysctl"]["memory"][0]["totalPhysicalRAMBytes"], mebibytes * kMiB);
}

// One memory device, named "<bank>/<locator>", QEMU numbering its locators from 0.
void expectMemoryDevice(json report, std::uint64_t mebibytes, const MemoryRecord& memory) {
    json& records = report["iokit"]["memory"];
    EXPECT_EQ(records.size(), 1u) << records.dump(2);
    EXPECT_TRUE(hasRecord(records, {{"name", std::string(memory.bank) + "/" + memory.locatorPrefix + " 0"},
                                    {"type", "RAM"},
                                    {"size", std::to_string(mebibytes) + " MB"},
                                    {"serialnumber", memory.serial},
                                    {"partnumber", memory.part},
                                    {"speed", std::to_string(memory.speed) + " MHz"},
                                    {"status", "ok"},
                                    {"manufacturer", memory.manufacturer}}));
}

json diskutilDisk(const std::string& deviceId, const std::string& deviceName, std::uint64_t sizeBytes) {
    return {{"deviceId", deviceId}, {"deviceName", deviceName}, {"sizeBytes", sizeBytes},
            {"name", ""},           {"fileSystem", ""},         {"freeSpaceBytes", 0},
            {"boot", false},        {"opticalMedia", false}};
}

json iokitDisk(const std::string& model, const std::string& serial, bool removable) {
    return {{"name", model}, {"serialNumber", serial}, {"removable", removable}};
}

json networkAdapter(const std::string& adapterName, const std::string& manufacturer, const std::string& mac) {
    return {{"adapterName", adapterName}, {"manufacturer", manufacturer}, {"macAddress", upperCase(mac)}, {"ssid", ""}};
}

// The adapter with that address, named "<model> - <driver>" (or the driver alone when the
// device has no model name).
void expectAdapterWithDriver(const json& adapters, const std::string& mac, const std::string& driver) {
    std::vector<json> found = recordsMatching(adapters, {{"macAddress", upperCase(mac)}});
    ASSERT_EQ(found.size(), 1u) << "no single adapter " << upperCase(mac) << " in " << adapters.dump(2);
    const std::string name = found[0].value("adapterName", "");
    const std::string suffix = " - " + driver;
    const bool endsWithDriver =
        name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
    EXPECT_TRUE(name == driver || endsWithDriver) << name;
    EXPECT_EQ(found[0]["ssid"], "");
}

// A USB pointing device's manufacturer is the USB vendor table's name of its vendor (QEMU's
// devices say 0x0627).
void expectUsbPointingDevice(const json& devices, const std::string& name) {
    EXPECT_TRUE(hasRecord(devices, {{"description", name}, {"manufacturer", "Adomax Technology Co., Ltd"}}));
}

TEST_F(QemuMachines, UsbDesktop) {
    using namespace desktop;
    std::optional<json> report = reportOf(kName);
    if (report) {
        expectSystem(*report, kSystem, kName);
        expectGuestOperatingSystem(*report, kernelRelease());
        expectMemoryTotal(*report, kMemoryMiB);
        EXPECT_EQ((*report)["sysctl"]["cpu"][0]["logicalCores"], 1);

        json& iokit = (*report)["iokit"];
        EXPECT_EQ(valuesOf(iokit["keyboards"], "name"), (std::multiset<std::string>{kPs2Keyboard, kUsbKeyboard}));
        // The USB tablet is a HID mouse with an absolute pointer: a pointing device too.
        EXPECT_EQ(valuesOf(iokit["pointingDevices"], "description"),
                  (std::multiset<std::string>{kPs2Mouse, kUsbMouse, kUsbTablet}));
        EXPECT_TRUE(hasRecord(iokit["pointingDevices"], {{"description", kPs2Mouse}, {"manufacturer", ""}}));
        expectUsbPointingDevice(iokit["pointingDevices"], kUsbMouse);
        expectUsbPointingDevice(iokit["pointingDevices"], kUsbTablet);

        // The Bochs display controller (1234:1111, in no id database) and QEMU's EDID
        // monitor ("QEMU Monitor", maker RHT = 0x4914) in the mode it was started with.
        EXPECT_EQ(iokit["displays"].size(), 2u) << iokit["displays"].dump(2);
        EXPECT_TRUE(hasRecord(iokit["displays"], {{"adapterDescription", "0x1111"},
                                                  {"manufacturer", "0x1234"},
                                                  {"refreshRate", 0},
                                                  {"width", 0},
                                                  {"height", 0},
                                                  {"depth", 0}}));
        // QEMU's mode is 75 Hz, its pixel clock rounded to 10 kHz (74.99 Hz).
        EXPECT_TRUE(hasRecord(iokit["displays"], {{"adapterDescription", "QEMU Monitor"},
                                                  {"manufacturer", "QEMU Monitor(4914)"},
                                                  {"refreshRate", 75},
                                                  {"width", kDisplayWidth},
                                                  {"height", kDisplayHeight},
                                                  {"depth", 24}}));

        EXPECT_EQ(iokit["disks"], json::array({iokitDisk("QEMU HARDDISK", kUsbDiskSerial, true)}));
        EXPECT_EQ(iokit["networkAdapters"].size(), 1u);
        EXPECT_TRUE(hasRecord(iokit["networkAdapters"],
                              networkAdapter("82574L Gigabit Network Connection - e1000e", "Intel Corporation", kMac)));
        expectMemoryDevice(*report, kMemoryMiB, kMemory);
        EXPECT_EQ(iokit["batteries"], json::array());
        EXPECT_EQ(iokit["camera"], json::array());

        EXPECT_EQ((*report)["diskutil"]["disks"],
                  json::array({diskutilDisk("sda", "QEMU HARDDISK", kUsbDiskBytes),
                               diskutilDisk("sda1", "QEMU HARDDISK", testing::partitionBytesOf(kUsbDiskBytes))}));
        EXPECT_EQ((*report)["coreaudio"]["sounds"],
                  json::parse(R"([{"name": "HDA Intel", "manufacturer": "Intel Corporation"}])"));
    }
    printConsoleOnFailure(kName);
}

TEST_F(QemuMachines, StorageServer) {
    using namespace server;
    std::optional<json> report = reportOf(kName);
    if (report) {
        expectSystem(*report, kSystem, kName);
        expectGuestOperatingSystem(*report, kernelRelease());
        expectMemoryTotal(*report, kMemoryMiB);
        EXPECT_EQ((*report)["sysctl"]["cpu"][0]["logicalCores"], 2);
        EXPECT_EQ((*report)["sysctl"]["cpu"][0]["physicalCores"], 2);

        json& iokit = (*report)["iokit"];
        EXPECT_EQ(iokit["disks"].size(), 3u) << iokit["disks"].dump(2);
        EXPECT_TRUE(hasRecord(iokit["disks"], iokitDisk("QEMU NVMe Ctrl", kNvmeSerial, false)));
        EXPECT_TRUE(hasRecord(iokit["disks"], iokitDisk(kSataModel, kSataSerial, false)));
        // A virtio drive states no model: it is named by its PCI device (1af4:1001).
        EXPECT_TRUE(hasRecord(iokit["disks"], iokitDisk("Virtio block device", kVirtioSerial, false)));
        EXPECT_EQ(iokit["networkAdapters"].size(), 2u) << iokit["networkAdapters"].dump(2);
        EXPECT_TRUE(hasRecord(iokit["networkAdapters"], networkAdapter("82574L Gigabit Network Connection - e1000e",
                                                                       "Intel Corporation", kE1000eMac)));
        expectAdapterWithDriver(iokit["networkAdapters"], kVirtioMac, "virtio_net");
        expectMemoryDevice(*report, kMemoryMiB, kMemory);
        EXPECT_EQ(valuesOf(iokit["keyboards"], "name"), (std::multiset<std::string>{kPs2Keyboard}));
        EXPECT_EQ(valuesOf(iokit["pointingDevices"], "description"), (std::multiset<std::string>{kPs2Mouse}));
        EXPECT_EQ(iokit["displays"], json::array());

        // Whole disks, then their partitions, in kernel order.
        EXPECT_EQ((*report)["diskutil"]["disks"],
                  json::array({diskutilDisk("nvme0n1", "QEMU NVMe Ctrl", kNvmeBytes),
                               diskutilDisk("sda", kSataModel, kSataBytes),
                               diskutilDisk("sda1", kSataModel, testing::partitionBytesOf(kSataBytes)),
                               diskutilDisk("vda", "", kVirtioBytes)}));
        EXPECT_EQ((*report)["coreaudio"]["sounds"], json::array());
    }
    printConsoleOnFailure(kName);
}

TEST_F(QemuMachines, BareMachine) {
    using namespace bare;
    std::optional<json> report = reportOf(kName);
    if (report) {
        json& os = (*report)["operatingSystems"];
        // QEMU's own system record: no serial number.
        EXPECT_EQ((*report)["iokit"]["serialNumbers"], json::array());
        EXPECT_FALSE(os.contains("serialNumber")) << os.dump(2);
        EXPECT_EQ(os["systemManufacturer"], "QEMU");
        EXPECT_EQ(os["systemModel"], "Standard PC (i440FX + PIIX, 1996)");
        EXPECT_EQ(os["systemName"], kName);
        expectGuestOperatingSystem(*report, kernelRelease());
        expectMemoryTotal(*report, kMemoryMiB);

        json& iokit = (*report)["iokit"];
        EXPECT_EQ(valuesOf(iokit["keyboards"], "name"), (std::multiset<std::string>{kPs2Keyboard}));
        EXPECT_EQ(valuesOf(iokit["pointingDevices"], "description"), (std::multiset<std::string>{kPs2Mouse}));
        EXPECT_EQ(iokit["displays"], json::array());
        EXPECT_EQ(iokit["disks"], json::array());
        EXPECT_EQ(iokit["networkAdapters"].size(), 1u) << iokit["networkAdapters"].dump(2);
        expectAdapterWithDriver(iokit["networkAdapters"], kMac, "virtio_net");
        // QEMU's memory device: a locator without a bank.
        EXPECT_EQ(iokit["memory"].size(), 1u) << iokit["memory"].dump(2);
        EXPECT_TRUE(hasRecord(iokit["memory"], {{"name", "DIMM 0"}, {"size", "768 MB"}, {"status", "ok"}}));

        EXPECT_EQ((*report)["diskutil"]["disks"], json::array());
        EXPECT_EQ((*report)["coreaudio"]["sounds"], json::array());
    }
    printConsoleOnFailure(kName);
}

// The stick's volume in the "diskutil" section: the whole device holds the file system,
// named by its label; mounted, it has free space.
void expectStickVolume(json report, bool mounted) {
    using namespace stick;
    json& disks = report["diskutil"]["disks"];
    ASSERT_EQ(disks.size(), 1u) << disks.dump(2);
    EXPECT_TRUE(hasRecord(disks, {{"name", kLabel}, {"deviceName", "QEMU HARDDISK"}, {"sizeBytes", kBytes},
                                  {"fileSystem", "vfat"}, {"boot", false}, {"opticalMedia", false}}));
    const std::uint64_t freeBytes = disks[0].value("freeSpaceBytes", std::uint64_t{0});
    if (mounted) {
        EXPECT_GT(freeBytes, 0u);
        EXPECT_LT(freeBytes, kBytes);
    }
}

// A stick plugged into the running machine through its monitor and mounted is a volume
// of the "diskutil" section and a removable disk; once it is unmounted and pulled out,
// it is in neither. The user at the console is the report's user.
TEST_F(QemuMachines, UsbStickHotPlug) {
    using namespace stick;
    testing::UsbStickMachine guest(kName, runFolder(), kScenario, usbStick(), {kUser, kUid});
    std::string failure;
    ASSERT_TRUE(guest.prepare(failure)) << failure;

    EXPECT_EQ(guest.run(guestImage(), kLimit), "");

    if (std::optional<json> report = inventoryIn(guest.machine(), kMountedReport)) {
        EXPECT_EQ((*report)["operatingSystems"]["username"], kUser);
        expectStickVolume(*report, true);
        EXPECT_EQ((*report)["iokit"]["disks"], json::array({iokitDisk("QEMU HARDDISK", kSerial, true)}));
    }
    if (std::optional<json> report = inventoryIn(guest.machine(), kPulledOutReport)) {
        EXPECT_EQ((*report)["operatingSystems"]["username"], kUser);
        EXPECT_EQ((*report)["diskutil"]["disks"], json::array());
        EXPECT_EQ((*report)["iokit"]["disks"], json::array());
    }
    printConsoleOnFailure(guest.machine());
}

// The JSON document the guest printed between the marker lines of title; fails the test
// when there is none or it does not match the report schema.
std::optional<json> documentIn(const QemuMachine& machine, const std::string& title) {
    const std::optional<std::string> text = machine.section(title);
    if (!text) {
        ADD_FAILURE() << machine.name() << " printed no " << title;
        return std::nullopt;
    }
    json document = json::parse(*text, nullptr, false);
    if (document.is_discarded()) {
        ADD_FAILURE() << machine.name() << " printed no JSON document " << title;
        return std::nullopt;
    }
    expectMatchesReportSchema(machine, title, *text);
    return document;
}

// The stick's records under one member of a delta report: its volume in "diskutil" and
// its disk in "iokit", and nothing else.
void expectStickUnder(const json& delta, const std::string& member) {
    using namespace stick;
    ASSERT_TRUE(delta.contains(member)) << delta.dump(2);
    const json& tree = delta[member];
    EXPECT_EQ(tree.size(), 2u) << tree.dump(2);
    expectStickVolume(tree, member == "added");
    EXPECT_EQ(tree["iokit"], json({{"disks", json::array({iokitDisk("QEMU HARDDISK", kSerial, true)})}}));
}

// The daemon, with a user at the console and event-driven scanning on, sees the stick's
// mount as a USB volume event and hands over a delta report whose "added" holds the
// stick; after the stick is pulled out and unmounted, one whose "removed" holds it.
TEST_F(QemuMachines, UsbStickDaemon) {
    using namespace stick;
    testing::UsbStickMachine guest(kDaemonName, runFolder(), kDaemonScenario, usbStick(), {kUser, kUid});
    std::string failure;
    ASSERT_TRUE(guest.prepare(failure)) << failure;

    EXPECT_EQ(guest.run(guestImage(), kDaemonLimit), "");

    const std::string log = guest.machine().section(kDaemonLog).value_or("");
    const std::string validEvent = std::string("VolumeEvent is valid. VolumePath: [") + kMountPath + "]";
    EXPECT_NE(log.find("One or more devices were mounted.  Will re-scan shortly..."), std::string::npos) << log;
    EXPECT_NE(log.find("One or more devices were unmounted.  Will re-scan shortly..."), std::string::npos) << log;
    EXPECT_NE(log.find(validEvent), log.rfind(validEvent)) << "one valid event for the mount and one for the unmount";
    EXPECT_NE(log.find("USB disk changes detected."), std::string::npos);
    if (std::optional<json> delta = documentIn(guest.machine(), kMountedDelta)) {
        EXPECT_FALSE(delta->contains("removed")) << delta->dump(2);
        EXPECT_FALSE(delta->contains("changed")) << delta->dump(2);
        expectStickUnder(*delta, "added");
    }
    if (std::optional<json> delta = documentIn(guest.machine(), kUnmountedDelta)) {
        EXPECT_FALSE(delta->contains("added")) << delta->dump(2);
        EXPECT_FALSE(delta->contains("changed")) << delta->dump(2);
        expectStickUnder(*delta, "removed");
    }
    printConsoleOnFailure(guest.machine());
}

// A machine still running at the limit is ended (and reaped) and counts as timed out;
// started frozen (-S), this one would never end by itself.
TEST(QemuMachineLimit, MachineStillRunningAtTheLimitIsEndedAndMarkedTimedOut) {
    const std::string unavailable = testing::qemuMachinesUnavailable();
    if (!unavailable.empty()) GTEST_SKIP() << unavailable;
    std::optional<testing::QemuGuestImage> image = testing::installedGuestKernel();
    ASSERT_TRUE(image);
    const testing::TestFolder folder;
    image->initramfs = folder.write("empty.cpio", "");
    QemuMachine machine("frozen", folder.path());
    machine.addArguments({"-machine", "pc", "-m", "128", "-S"});

    const auto started = std::chrono::steady_clock::now();
    testing::runMachines({&machine}, *image, std::chrono::seconds(1));

    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    EXPECT_TRUE(machine.timedOut());
    EXPECT_TRUE(machine.hasEnded());
    EXPECT_FALSE(machine.report());
    EXPECT_EQ(machine.tovStatus(), -1);
    // No child of the test is left, running or unreaped.
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

}  // namespace
}  // namespace tov
