#include "discovery/linux/LinuxDisplays.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model/QVIOKitDisplay.h"
#include "support/EdidBytes.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::EdidBaseBlock;
using testing::MemorySystemSource;

constexpr std::uint8_t kNameTag = 0xfc;

const char* kPciIds =
    "# test excerpt\n"
    "1002  Advanced Micro Devices, Inc. [AMD/ATI]\n"
    "\t6758  Turks XT [Radeon HD 6670/7670]\n"
    "8086  Intel Corporation\n"
    "\t15f3  Ethernet Controller I225-V\n"
    "\ta7a0  Raptor Lake-P [Iris Xe Graphics]\n";

struct DisplayRow {
    std::string description;
    std::string manufacturer;
    std::int64_t refreshRate;
    std::int64_t width;
    std::int64_t height;
    std::int64_t depth;

    bool operator==(const DisplayRow&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const DisplayRow& row) {
    return stream << row.description << " | " << row.manufacturer << " | " << row.refreshRate << " Hz | "
                  << row.width << "x" << row.height << " | " << row.depth;
}

using Rows = std::vector<DisplayRow>;

std::string edidNamed(const std::string& name, const std::string& maker, testing::EdidTiming timing,
                      std::uint8_t videoInput = 0xa5) {
    EdidBaseBlock base;
    base.maker = maker;
    base.videoInput = videoInput;
    base.descriptors = {testing::timingDescriptor(timing)};
    if (!name.empty()) base.descriptors.push_back(testing::textDescriptor(kNameTag, name + "\n"));
    return base.bytes();
}

// A machine with the id database, its PCI functions and the connectors of card0.
class DisplayMachine {
public:
    DisplayMachine() { source->file("/usr/share/misc/pci.ids", kPciIds); }

    DisplayMachine& pciFunction(const std::string& address, const std::string& pciClass, const std::string& vendor,
                                const std::string& device) {
        const std::string folder = "/sys/devices/pci0000:00/" + address;
        source->file(folder + "/class", pciClass + "\n");
        if (!vendor.empty()) source->file(folder + "/vendor", vendor + "\n");
        source->file(folder + "/device", device + "\n");
        source->link("/sys/bus/pci/devices/" + address, "../../../devices/pci0000:00/" + address);
        return *this;
    }

    DisplayMachine& connector(const std::string& name, const std::string& status, const std::string& edid) {
        const std::string folder = "/sys/devices/pci0000:00/0000:00:02.0/drm/card0/card0-" + name;
        source->file(folder + "/status", status + "\n");
        source->file(folder + "/edid", edid);
        source->link("/sys/class/drm/card0-" + name, "../../devices/pci0000:00/0000:00:02.0/drm/card0/card0-" + name);
        return *this;
    }

    Rows displays() {
        HardwareIds hardwareIds(source);
        const ArrayRef displays = discoverLinuxDisplays(*source, hardwareIds);
        Rows rows;
        for (const Value& element : *displays) {
            const auto display = std::dynamic_pointer_cast<QVIOKitDisplay>(element.record());
            if (!display) continue;
            rows.push_back({display->getDescription().value_or("?"), display->manufacturer().value_or("?"),
                            display->frequency(), display->width(), display->height(), display->depth()});
        }
        return rows;
    }

    std::shared_ptr<MemorySystemSource> source = std::make_shared<MemorySystemSource>();
};

const DisplayRow kIntelAdapter{"Raptor Lake-P [Iris Xe Graphics]", "Intel Corporation", 0, 0, 0, 0};

TEST(LinuxDisplays, DisplayControllersAreAdaptersNamedFromTheIdDatabase) {
    DisplayMachine machine;
    machine.pciFunction("0000:00:02.0", "0x030000", "0x8086", "0xa7a0")
        .pciFunction("0000:00:1f.6", "0x020000", "0x8086", "0x15f3")
        .pciFunction("0000:03:00.0", "0x038000", "0x1002", "0x6758");
    EXPECT_EQ(machine.displays(),
              (Rows{kIntelAdapter, {"Turks XT [Radeon HD 6670/7670]", "Advanced Micro Devices, Inc. [AMD/ATI]", 0, 0, 0, 0}}));
}

TEST(LinuxDisplays, AnAdapterMissingFromTheDatabaseIsNamedByItsIds) {
    DisplayMachine machine;
    machine.pciFunction("0000:00:01.0", "0x030000", "0x1234", "0x1111");
    EXPECT_EQ(machine.displays(), (Rows{{"0x1111", "0x1234", 0, 0, 0, 0}}));
}

TEST(LinuxDisplays, AFunctionWithAnUnreadableClassOrVendorIsLeftOut) {
    DisplayMachine machine;
    machine.pciFunction("0000:00:02.0", "0x03zz00", "0x8086", "0xa7a0")
        .pciFunction("0000:00:03.0", "", "0x8086", "0xa7a0")
        .pciFunction("0000:00:04.0", "0x030000", "", "0xa7a0");
    EXPECT_EQ(machine.displays(), Rows{});
}

TEST(LinuxDisplays, AConnectedMonitorIsNamedAndSizedByItsEdid) {
    DisplayMachine machine;
    machine.pciFunction("0000:00:02.0", "0x030000", "0x8086", "0xa7a0")
        .connector("DP-1", "connected", edidNamed("LG Ultra HD", "GSM", {533250, 3840, 160, 2160, 62}, 0xb5))
        .connector("HDMI-A-1", "disconnected", "");
    EXPECT_EQ(machine.displays(), (Rows{kIntelAdapter, {"LG Ultra HD", "LG Ultra HD(1e6d)", 60, 3840, 2160, 30}}));
}

TEST(LinuxDisplays, ADellMonitorKeepsItsRefreshRate) {
    DisplayMachine machine;
    machine.connector("DP-1", "connected", edidNamed("DELL P2419H", "DEL", {174500, 1920, 160, 1080, 45}));
    EXPECT_EQ(machine.displays(), (Rows{{"DELL P2419H", "DELL", 75, 1920, 1080, 24}}));
}

TEST(LinuxDisplays, AnAppleDisplayIsReportedAtSixtyHertz) {
    DisplayMachine machine;
    machine.connector("eDP-1", "connected", edidNamed("Color LCD", "APP", {109500, 1440, 160, 900, 26}));
    EXPECT_EQ(machine.displays(), (Rows{{"Color LCD", "Apple", 60, 1440, 900, 24}}));
}

TEST(LinuxDisplays, AMonitorWithoutANameIsAGenericDisplay) {
    DisplayMachine machine;
    machine.connector("eDP-1", "connected", edidNamed("", "AUO", testing::wuxgaTiming(), 0x95));
    EXPECT_EQ(machine.displays(), (Rows{{"Generic Display", "Generic Display(6af)", 60, 1920, 1200, 18}}));
}

TEST(LinuxDisplays, AnEdidWithoutStatedColourDepthGivesTwentyFourBits) {
    DisplayMachine machine;
    EdidBaseBlock base;
    base.maker = "BNQ";
    base.revision = 3;
    base.videoInput = 0x80;
    base.descriptors = {testing::timingDescriptor({148500, 1920, 280, 1080, 45}),
                        testing::textDescriptor(kNameTag, "BenQ GW2480\n")};
    machine.connector("DP-1", "connected", base.bytes());
    EXPECT_EQ(machine.displays(), (Rows{{"BenQ GW2480", "BenQ GW2480(9d1)", 60, 1920, 1080, 24}}));
}

TEST(LinuxDisplays, AMonitorWithoutAUsableModeHasNoSize) {
    DisplayMachine machine;
    machine.connector("DP-1", "connected", edidNamed("Odd", "XYZ", {154000, 0, 160, 1200, 35}));
    EXPECT_EQ(machine.displays(), (Rows{{"Odd", "Odd(633a)", 0, 0, 0, 24}}));
}

TEST(LinuxDisplays, ATiledMonitorOnTwoConnectorsIsOneRecord) {
    DisplayMachine machine;
    EdidBaseBlock base;
    base.maker = "GSM";
    base.videoInput = 0xb5;
    base.descriptors = {testing::timingDescriptor({533250, 3840, 160, 2160, 62}),
                        testing::textDescriptor(kNameTag, "LG UltraFine\n")};
    base.extensionCount = 1;
    const std::string tiles = testing::displayIdBlock(testing::displayIdTilesBlock(2, 1, 2560, 2880) +
                                                      testing::displayIdTimingBlock({483370, 2560, 160, 2880, 82}, false));
    machine.connector("DP-1", "connected", base.bytes() + tiles).connector("DP-2", "connected", base.bytes() + tiles);
    EXPECT_EQ(machine.displays(), (Rows{{"LG UltraFine", "LG UltraFine(1e6d)", 60, 5120, 2880, 30}}));
}

TEST(LinuxDisplays, AConnectedConnectorWithoutAReadableEdidGivesNoRecord) {
    DisplayMachine machine;
    std::string damaged = edidNamed("DELL U2412M", "DEL", testing::wuxgaTiming());
    damaged[9] = static_cast<char>(damaged[9] ^ 1);
    machine.connector("DP-1", "connected", "")
        .connector("DP-2", "connected", damaged)
        .connector("DP-3", "connected", damaged.substr(0, 100));
    machine.source->link("/sys/class/drm/card0-DP-4", "../../devices/pci0000:00/0000:00:02.0/drm/card0/card0-DP-4");
    machine.source->file("/sys/devices/pci0000:00/0000:00:02.0/drm/card0/card0-DP-4/status", "connected\n");
    EXPECT_EQ(machine.displays(), Rows{});
}

TEST(LinuxDisplays, AnOversizedEdidIsNotRead) {
    DisplayMachine machine;
    EdidBaseBlock base;
    base.descriptors = {testing::timingDescriptor(testing::wuxgaTiming())};
    base.extensionCount = 255;
    machine.connector("DP-1", "connected", base.bytes() + std::string(256 * 128, '\0'));
    EXPECT_EQ(machine.displays(), Rows{});
}

TEST(LinuxDisplays, OnlyConnectorsOfCardsAreLookedAt) {
    DisplayMachine machine;
    for (const std::string name : {"card0", "renderD128", "card-", "cardX-DP-1", "card0-", "card12-DP-1"}) {
        machine.source->file("/sys/class/drm/" + name + "/status", "connected\n");
        machine.source->file("/sys/class/drm/" + name + "/edid", edidNamed(name, "DEL", testing::wuxgaTiming()));
    }
    machine.source->file("/sys/class/drm/version", "drm 1.1.0 20060810\n");
    EXPECT_EQ(machine.displays(), (Rows{{"card12-DP-1", "DELL", 60, 1920, 1200, 24}}));
}

TEST(LinuxDisplays, AMachineWithoutPciOrDrmHasNoDisplays) {
    DisplayMachine machine;
    EXPECT_EQ(machine.displays(), Rows{});
}

}  // namespace
}  // namespace tov
