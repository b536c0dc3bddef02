#include "discovery/linux/LinuxSoundDiscoverer.h"

#include <gtest/gtest.h>

#include "discovery/linux/LinuxBusVendor.h"
#include "model/QVCoreAudioSound.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

const char* kPciIds =
    "# test excerpt\n"
    "1002  Advanced Micro Devices, Inc. [AMD/ATI]\n"
    "8086  Intel Corporation\n"
    "\t51ca  Raptor Lake-P/U/H cAVS\n";
const char* kUsbIds =
    "# test excerpt\n"
    "046d  Logitech, Inc.\n"
    "\t0a44  Headset H390\n"
    "1d6b  Linux Foundation\n";

// A machine with the id databases and the sysfs trees of its sound cards.
class SoundMachine {
public:
    SoundMachine() {
        source->file("/usr/share/misc/pci.ids", kPciIds);
        source->file("/usr/share/misc/usb.ids", kUsbIds);
    }

    // card → its device folder, as the kernel links them.
    SoundMachine& card(int number, const std::string& deviceFolder, const std::string& deviceLinkTarget) {
        const std::string name = "card" + std::to_string(number);
        source->link("/sys/class/sound/" + name, "../../" + deviceFolder.substr(5) + "/sound/" + name);
        source->link(deviceFolder + "/sound/" + name + "/device", deviceLinkTarget);
        return *this;
    }

    SoundMachine& pciFunction(const std::string& folder, const std::string& vendor) {
        source->file(folder + "/vendor", vendor);
        source->link(folder + "/subsystem", "../../../bus/pci");
        return *this;
    }

    std::vector<std::pair<std::string, std::string>> sounds() {
        LinuxSoundDiscoverer discoverer(source, std::make_shared<HardwareIds>(source));
        const ArrayRef sounds = discoverer.discoverInfo()->get("sounds").array();
        std::vector<std::pair<std::string, std::string>> found;
        if (!sounds) return found;
        for (const Value& element : *sounds) {
            const auto sound = std::dynamic_pointer_cast<QVCoreAudioSound>(element.record());
            if (sound) found.emplace_back(sound->name().value_or("?"), sound->manufacturer().value_or("?"));
        }
        return found;
    }

    std::shared_ptr<MemorySystemSource> source = std::make_shared<MemorySystemSource>();
};

using Sounds = std::vector<std::pair<std::string, std::string>>;

constexpr const char* kHdaFolder = "/sys/devices/pci0000:00/0000:00:1f.3";
constexpr const char* kUsbInterface = "/sys/devices/pci0000:00/0000:00:14.0/usb3/3-3/3-3:1.0";

SoundMachine laptop() {
    SoundMachine machine;
    machine.source->file("/proc/asound/cards",
                         " 0 [PCH            ]: HDA-Intel - HDA Intel PCH\n"
                         "                      HDA Intel PCH at 0x603f1f0000 irq 171\n"
                         " 1 [H390           ]: USB-Audio - Logitech USB Headset H390\n"
                         "                      Logitech USB Headset H390 at usb-0000:00:14.0-3, full speed\n");
    machine.card(0, kHdaFolder, "../../../0000:00:1f.3").pciFunction(kHdaFolder, "0x8086\n");
    machine.card(1, kUsbInterface, "../../../3-3:1.0");
    machine.source->file("/sys/devices/pci0000:00/0000:00:14.0/usb3/3-3/idVendor", "046d\n");
    machine.source->file("/sys/devices/pci0000:00/0000:00:14.0/usb3/idVendor", "1d6b\n");
    machine.pciFunction("/sys/devices/pci0000:00/0000:00:14.0", "0x8086\n");
    return machine;
}

TEST(LinuxSoundDiscoverer, NamesTheSectionCoreAudio) {
    SoundMachine machine;
    EXPECT_EQ(LinuxSoundDiscoverer(machine.source, nullptr).sourceName(), "coreaudio");
}

TEST(LinuxSoundDiscoverer, PciAndUsbCardsAreNamedWithTheirVendors) {
    EXPECT_EQ(laptop().sounds(),
              (Sounds{{"HDA Intel PCH", "Intel Corporation"}, {"Logitech USB Headset H390", "Logitech, Inc."}}));
}

TEST(LinuxSoundDiscoverer, ACardOfNoBusHasNoManufacturer) {
    SoundMachine machine;
    machine.source->file("/proc/asound/cards", " 0 [Headphones     ]: bcm2835_headpho - bcm2835 Headphones\n"
                                               "                      bcm2835 Headphones\n");
    machine.card(0, "/sys/devices/platform/soc/soc:audio/bcm2835_audio", "../../../bcm2835_audio");
    EXPECT_EQ(machine.sounds(), (Sounds{{"bcm2835 Headphones", ""}}));
}

TEST(LinuxSoundDiscoverer, AVendorMissingFromTheDatabaseIsItsNumber) {
    SoundMachine machine;
    machine.source->file("/proc/asound/cards", " 0 [NVidia         ]: HDA-Intel - HDA NVidia\n");
    machine.card(0, "/sys/devices/pci0000:00/0000:01:00.1", "../../../0000:01:00.1")
        .pciFunction("/sys/devices/pci0000:00/0000:01:00.1", "0x10de\n");
    EXPECT_EQ(machine.sounds(), (Sounds{{"HDA NVidia", "0x10de"}}));
}

TEST(LinuxSoundDiscoverer, TwoEqualCardsGiveOneRecord) {
    SoundMachine machine;
    machine.source->file("/proc/asound/cards",
                         " 0 [Generic        ]: HDA-Intel - HD-Audio Generic\n"
                         " 1 [Generic_1      ]: HDA-Intel - HD-Audio Generic\n");
    machine.card(0, "/sys/devices/pci0000:00/0000:00:08.1/0000:0a:00.1", "../../../0000:0a:00.1")
        .pciFunction("/sys/devices/pci0000:00/0000:00:08.1/0000:0a:00.1", "0x1002\n");
    machine.card(1, "/sys/devices/pci0000:00/0000:00:08.1/0000:0a:00.6", "../../../0000:0a:00.6")
        .pciFunction("/sys/devices/pci0000:00/0000:00:08.1/0000:0a:00.6", "0x1002\n");
    EXPECT_EQ(machine.sounds(), (Sounds{{"HD-Audio Generic", "Advanced Micro Devices, Inc. [AMD/ATI]"}}));
}

TEST(LinuxSoundDiscoverer, NoCardsGiveAnEmptyArray) {
    SoundMachine noAsound;
    const Value sounds = LinuxSoundDiscoverer(noAsound.source, std::make_shared<HardwareIds>(noAsound.source))
                             .discoverInfo()
                             ->get("sounds");
    ASSERT_TRUE(sounds.isArray());
    EXPECT_TRUE(sounds.array()->empty());

    SoundMachine none;
    none.source->file("/proc/asound/cards", "--- no soundcards ---\n");
    EXPECT_TRUE(none.sounds().empty());
}

TEST(LinuxSoundDiscoverer, AGarbledCardsFileGivesWhatCanBeRead) {
    SoundMachine machine;
    machine.source->file("/proc/asound/cards", std::string("\x00\x01\xfe\n 0 [Bad\n", 12) +
                                                   " 1 [X            ]: drv - Card \xff\x01 name\n");
    EXPECT_EQ(machine.sounds(), (Sounds{{"Card \xEF\xBF\xBD name", ""}}));
}

TEST(LinuxSoundDiscoverer, ADeviceLinkLoopGivesNoManufacturer) {
    SoundMachine machine;
    machine.source->file("/proc/asound/cards", " 0 [PCH            ]: HDA-Intel - HDA Intel PCH\n");
    machine.source->link("/sys/class/sound/card0", "card0");
    EXPECT_EQ(machine.sounds(), (Sounds{{"HDA Intel PCH", ""}}));
}

TEST(LinuxBusVendor, AVendorFileOutsidePciDoesNotCount) {
    MemorySystemSource source;
    source.link("/sys/class/sound/card0", "../../devices/platform/x/sound/card0");
    source.link("/sys/devices/platform/x/sound/card0/device", "../../../x");
    source.file("/sys/devices/platform/x/vendor", "0x8086\n");
    source.link("/sys/devices/platform/x/subsystem", "../../../bus/platform");
    EXPECT_FALSE(linuxBusVendor(source, "/sys/class/sound/card0/device"));
    source.link("/sys/devices/platform/x/subsystem", "../../../bus/pci");
    const std::optional<BusVendor> vendor = linuxBusVendor(source, "/sys/class/sound/card0/device");
    ASSERT_TRUE(vendor);
    EXPECT_EQ(vendor->database, IdsDatabase::Pci);
    EXPECT_EQ(vendor->vendor, 0x8086);
}

TEST(LinuxBusVendor, TheUsbDeviceAboveAnInterfaceWinsOverItsController) {
    SoundMachine machine = laptop();
    const std::optional<BusVendor> vendor = linuxBusVendor(*machine.source, "/sys/class/sound/card1/device");
    ASSERT_TRUE(vendor);
    EXPECT_EQ(vendor->database, IdsDatabase::Usb);
    EXPECT_EQ(vendor->vendor, 0x046d);
}

TEST(LinuxBusVendor, AMissingCardHasNoVendor) {
    MemorySystemSource source;
    EXPECT_FALSE(linuxBusVendor(source, "/sys/class/sound/card7/device"));
}

}  // namespace
}  // namespace tov
