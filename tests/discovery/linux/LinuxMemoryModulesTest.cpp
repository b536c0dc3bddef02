#include "discovery/linux/LinuxMemoryModules.h"

#include <gtest/gtest.h>

#include "model/QVIOKitMemory.h"
#include "support/MemorySystemSource.h"
#include "support/SmbiosBytes.h"

namespace tov {
namespace {

using testing::MemoryDeviceBytes;
using testing::MemorySystemSource;

struct Module {
    std::string name, type, size, speed, status, manufacturer, serialNumber, partNumber;
    bool operator==(const Module&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Module& m) {
    return out << "{" << m.name << " | " << m.type << " | " << m.size << " | " << m.speed << " | " << m.status << " | "
               << m.manufacturer << " | " << m.serialNumber << " | " << m.partNumber << "}";
}

class MemoryMachine {
public:
    MemoryMachine& entry(const std::string& name, const std::string& raw) {
        source.file("/sys/firmware/dmi/entries/" + name + "/raw", raw);
        return *this;
    }

    std::vector<Module> modules() {
        std::vector<Module> found;
        const ArrayRef records = discoverLinuxMemoryModules(source);
        for (const Value& element : *records) {
            const auto memory = std::dynamic_pointer_cast<QVIOKitMemory>(element.record());
            if (!memory) continue;
            found.push_back({memory->name().value_or("?"), memory->type().value_or("?"), memory->size().value_or("?"),
                             memory->speed().value_or("?"), memory->status().value_or("?"),
                             memory->manufacturer().value_or("?"), memory->serialNumber().value_or("?"),
                             memory->partNumber().value_or("?")});
        }
        return found;
    }

    MemorySystemSource source;
};

MemoryDeviceBytes rdimm(const std::string& locator, const std::string& serial) {
    MemoryDeviceBytes dimm;
    dimm.size = 16384;
    dimm.locator = locator;
    dimm.bankLocator = "Not Specified";
    dimm.memoryType = 0x1A;
    dimm.speed = 3200;
    dimm.configuredSpeed = 2933;
    dimm.manufacturer = "Hynix";
    dimm.serialNumber = serial;
    dimm.partNumber = "HMA82GR7DJR8N-XN    ";
    return dimm;
}

MemoryDeviceBytes emptySlot(const std::string& locator) {
    MemoryDeviceBytes slot;
    slot.size = 0;
    slot.memoryType = 0x02;
    slot.locator = locator;
    slot.bankLocator = "Not Specified";
    slot.manufacturer = "Not Specified";
    slot.serialNumber = "Not Specified";
    slot.partNumber = "Not Specified";
    return slot;
}

TEST(LinuxMemoryModules, AnInstalledModuleInTheProfilersTexts) {
    MemoryMachine machine;
    MemoryDeviceBytes dimm = rdimm("A1", "3A5F0C21");
    dimm.bankLocator = "P0 CHANNEL A";
    machine.entry("17-0", dimm.bytes());
    EXPECT_EQ(machine.modules(), (std::vector<Module>{{"P0 CHANNEL A/A1", "DDR4", "16 GB", "2933 MHz", "ok", "Hynix",
                                                       "3A5F0C21", "HMA82GR7DJR8N-XN"}}));
}

TEST(LinuxMemoryModules, AnEmptySlotIsReportedAsEmpty) {
    MemoryMachine machine;
    machine.entry("17-0", emptySlot("B6").bytes());
    EXPECT_EQ(machine.modules(),
              (std::vector<Module>{{"B6", "Empty", "Empty", "Empty", "empty", "Empty", "Empty", "Empty"}}));
}

TEST(LinuxMemoryModules, TheLocatorAloneWithoutABank) {
    MemoryMachine machine;
    MemoryDeviceBytes dimm = rdimm("A1", "1");
    dimm.bankLocator = "";
    machine.entry("17-0", dimm.bytes()).entry("17-1", rdimm("A2", "2").bytes());
    MemoryDeviceBytes bankOnly = rdimm("", "3");
    bankOnly.bankLocator = "BANK 2";
    machine.entry("17-2", bankOnly.bytes());
    const std::vector<Module> modules = machine.modules();
    ASSERT_EQ(modules.size(), 3u);
    EXPECT_EQ(modules[0].name, "A1");
    EXPECT_EQ(modules[1].name, "A2");  // "Not Specified" is no bank
    EXPECT_EQ(modules[2].name, "BANK 2");
}

TEST(LinuxMemoryModules, SizesInGigabytesMegabytesOrKilobytes) {
    MemoryMachine machine;
    MemoryDeviceBytes module = rdimm("A1", "1");
    module.size = 512;
    machine.entry("17-0", module.bytes());
    module.locator = "A2";
    module.size = 0x7FFF;
    module.extendedSize = 64 * 1024;
    machine.entry("17-1", module.bytes());
    module.locator = "A3";
    module.size = 0x8000 | 768;
    machine.entry("17-2", module.bytes());
    module.locator = "A4";
    module.size = 1536;
    machine.entry("17-3", module.bytes());
    module.locator = "A5";
    module.size = 0xFFFF;
    machine.entry("17-4", module.bytes());
    const std::vector<Module> modules = machine.modules();
    ASSERT_EQ(modules.size(), 5u);
    EXPECT_EQ(modules[0].size, "512 MB");
    EXPECT_EQ(modules[1].size, "64 GB");
    EXPECT_EQ(modules[2].size, "768 KB");
    EXPECT_EQ(modules[3].size, "1536 MB");
    EXPECT_EQ(modules[4].size, "");  // unknown
    EXPECT_EQ(modules[4].status, "ok");
}

TEST(LinuxMemoryModules, TheConfiguredSpeedElseTheRatedOne) {
    MemoryMachine machine;
    MemoryDeviceBytes module = rdimm("A1", "1");
    module.configuredSpeed = 0;
    machine.entry("17-0", module.bytes());
    module.locator = "A2";
    module.speed = 0;
    machine.entry("17-1", module.bytes());
    module.locator = "A3";
    module.speed = 0xFFFF;
    module.extendedSpeed = 8800;
    machine.entry("17-2", module.bytes());
    const std::vector<Module> modules = machine.modules();
    ASSERT_EQ(modules.size(), 3u);
    EXPECT_EQ(modules[0].speed, "3200 MHz");
    EXPECT_EQ(modules[1].speed, "");
    EXPECT_EQ(modules[2].speed, "8800 MHz");
}

TEST(LinuxMemoryModules, TwoIdenticalModulesCollapseIntoOne) {
    MemoryMachine machine;
    machine.entry("17-0", rdimm("A1", "1").bytes()).entry("17-1", rdimm("A1", "1").bytes());
    EXPECT_EQ(machine.modules().size(), 1u);
}

TEST(LinuxMemoryModules, ModulesWithoutANameAreNeverEqual) {
    MemoryMachine machine;
    MemoryDeviceBytes module = rdimm("", "1");
    module.bankLocator = "";
    machine.entry("17-0", module.bytes()).entry("17-1", module.bytes());
    EXPECT_EQ(machine.modules().size(), 2u);
}

TEST(LinuxMemoryModules, AppleFirmwareTextsAreKept) {
    MemoryMachine machine;
    MemoryDeviceBytes chip;
    chip.size = 4096;
    chip.formFactor = 0x0B;
    chip.locator = "DIMM0";
    chip.bankLocator = "BANK 1";
    chip.memoryType = 0x1D;
    chip.speed = 1600;
    chip.configuredSpeed = 1600;
    chip.manufacturer = "0x80CE";
    chip.serialNumber = "-";
    chip.partNumber = "0x4B344536453330344542";
    machine.entry("17-1", chip.bytes());
    EXPECT_EQ(machine.modules(), (std::vector<Module>{{"BANK 1/DIMM0", "LPDDR3", "4 GB", "1600 MHz", "ok", "0x80CE",
                                                       "-", "0x4B344536453330344542"}}));
}

TEST(LinuxMemoryModules, BrokenEntriesGiveWhatCanBeReadAndNoCrash) {
    MemoryMachine machine;
    std::string pastTheEnd = rdimm("A1", "1").bytes().substr(0, 0x30);
    pastTheEnd[1] = static_cast<char>(0xF0);  // declares more fields than there are bytes
    std::string strayIndex = rdimm("A2", "2").bytes();
    strayIndex[0x18] = static_cast<char>(0x40);  // serial number string 64 of 4
    std::string unterminated = rdimm("A3", "3").bytes();
    unterminated.resize(unterminated.size() - 2);
    machine.entry("17-0", pastTheEnd).entry("17-1", strayIndex).entry("17-2", unterminated).entry("17-3", "\x11\x02");
    const std::vector<Module> modules = machine.modules();
    ASSERT_EQ(modules.size(), 3u);
    EXPECT_EQ(modules[0], (Module{"", "DDR4", "16 GB", "2933 MHz", "ok", "", "", ""}));
    EXPECT_EQ(modules[1].name, "A2");
    EXPECT_EQ(modules[1].serialNumber, "");
    EXPECT_EQ(modules[1].partNumber, "HMA82GR7DJR8N-XN");
    EXPECT_EQ(modules[2].name, "A3");
    EXPECT_EQ(modules[2].partNumber, "HMA82GR7DJR8N-XN");
}

TEST(LinuxMemoryModules, NoFirmwareTablesGiveNoModules) {
    MemoryMachine machine;
    EXPECT_TRUE(machine.modules().empty());
}

}  // namespace
}  // namespace tov
