#include "discovery/linux/LinuxInputDevices.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

#include "InputDeviceBlocks.h"
#include "discovery/QVIOKitUsbHardwareVendorList.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitPointingDevice.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

namespace input = testing::input;
using testing::MemorySystemSource;

std::string devicesFile(std::initializer_list<const char*> blocks) {
    std::string text;
    for (const char* block : blocks) text += std::string(block) + "\n";
    return text;
}

std::vector<std::string> keyboardNames(SystemSource& source) {
    std::vector<std::string> names;
    const ArrayRef keyboards = discoverLinuxKeyboards(source);
    for (const Value& element : *keyboards) {
        names.push_back(std::dynamic_pointer_cast<QVIOKitKeyboard>(element.record())->name().value_or("?"));
    }
    return names;
}

std::set<std::pair<std::string, std::string>> pointingDevices(SystemSource& source) {
    std::set<std::pair<std::string, std::string>> found;
    const ArrayRef devices = discoverLinuxPointingDevices(source);
    for (const Value& element : *devices) {
        const auto device = std::dynamic_pointer_cast<QVIOKitPointingDevice>(element.record());
        found.emplace(device->getDescription().value_or("?"), device->manufacturer().value_or("?"));
    }
    return found;
}

class LinuxInputDevicesTest : public ::testing::Test {
protected:
    void TearDown() override { QVIOKitUsbHardwareVendorList::releaseVendorList(); }

    MemorySystemSource& machine(const std::string& devices) {
        source.file("/proc/bus/input/devices", devices);
        return source;
    }

    MemorySystemSource source;
};

TEST_F(LinuxInputDevicesTest, TwoIdenticalKeyboardsGiveOneRecord) {
    machine(devicesFile({input::kUsbKeyboard, input::kUsbKeyboard}));
    EXPECT_EQ(keyboardNames(source), std::vector<std::string>{"Dell KB216 Wired Keyboard"});
}

TEST_F(LinuxInputDevicesTest, OnlyKeyboardsAreKeyboards) {
    machine(devicesFile({input::kPowerButton, input::kAtKeyboard, input::kVideoBus, input::kLidSwitch,
                         input::kUsbKeyboard, input::kConsumerControl, input::kUsbMouse, input::kPcSpeaker}));
    EXPECT_EQ(keyboardNames(source),
              (std::vector<std::string>{"AT Translated Set 2 keyboard", "Dell KB216 Wired Keyboard"}));
}

TEST_F(LinuxInputDevicesTest, UsbPointingDevicesAreMadeByTheirUsbVendor) {
    machine(devicesFile({input::kUsbMouse, input::kPs2Mouse, input::kTouchpad, input::kQemuTablet,
                         input::kTouchscreen, input::kAtKeyboard}));
    const std::string qemuVendor = QVIOKitUsbHardwareVendorList::vendorNameForVendorId(0x0627).value_or("");
    EXPECT_EQ(pointingDevices(source), (std::set<std::pair<std::string, std::string>>{
                                           {"Logitech USB Optical Mouse", "Logitech Inc."},
                                           {"ImExPS/2 Generic Explorer Mouse", ""},
                                           {"SYNA3105:00 06CB:CEA3 Touchpad", ""},
                                           {"QEMU QEMU USB Tablet", qemuVendor},
                                       }));
    EXPECT_FALSE(qemuVendor.empty());
}

TEST_F(LinuxInputDevicesTest, AUsbVendorTheTableDoesNotKnowGivesNoManufacturer) {
    machine(
        "I: Bus=0003 Vendor=ffff Product=0001 Version=0001\n"
        "N: Name=\"Nameless Mouse\"\n"
        "B: EV=7\n"
        "B: KEY=10000 0 0 0 0\n"
        "B: REL=3\n");
    EXPECT_EQ(pointingDevices(source),
              (std::set<std::pair<std::string, std::string>>{{"Nameless Mouse", ""}}));
}

TEST_F(LinuxInputDevicesTest, A32BitKernelsBitmapsAreReadWithItsWordWidth) {
    DictionaryRef names = makeDictionary();
    names->set("machine", std::string("i686"));
    machine(devicesFile({input::kAtKeyboard32,
                         "I: Bus=0011 Vendor=0002 Product=0006 Version=0000\n"
                         "N: Name=\"ImPS/2 Generic Wheel Mouse\"\n"
                         "B: EV=7\n"
                         "B: KEY=70000 0 0 0 0 0 0 0 0\n"
                         "B: REL=103\n"}))
        .fact("uname", "", Value(names));
    EXPECT_EQ(keyboardNames(source), std::vector<std::string>{"AT Translated Set 2 keyboard"});
    EXPECT_EQ(pointingDevices(source),
              (std::set<std::pair<std::string, std::string>>{{"ImPS/2 Generic Wheel Mouse", ""}}));
}

TEST_F(LinuxInputDevicesTest, AbsurdBitmapsLeaveTheDeviceOutAndTheOthersIn) {
    std::string thousands;
    for (int word = 0; word < 4000; ++word) thousands += "ffffffffffffffff ";
    machine(devicesFile({("I: Bus=0003 Vendor=046d Product=c31c Version=0110\n"
                          "N: Name=\"Huge Keyboard\"\n"
                          "B: EV=120013\n"
                          "B: KEY=" + thousands + "\n").c_str(),
                         "I: Bus=0003 Vendor=046d Product=c077 Version=0111\n"
                         "N: Name=\"Bad Mouse\"\n"
                         "B: EV=17\n"
                         "B: KEY=ff00000000000000000000 0 0 0 0\n"
                         "B: REL=3\n",
                         input::kAtKeyboard, input::kUsbMouse}));
    EXPECT_EQ(keyboardNames(source), std::vector<std::string>{"AT Translated Set 2 keyboard"});
    EXPECT_EQ(pointingDevices(source),
              (std::set<std::pair<std::string, std::string>>{{"Logitech USB Optical Mouse", "Logitech Inc."}}));
}

TEST_F(LinuxInputDevicesTest, ANamelessCutOffDeviceIsLeftOut) {
    machine(std::string(input::kUsbKeyboard) + "\nI: Bus=0003 Vendor=046d Product=c077\nB: EV=120013\n"
                                                "B: KEY=fffffffffffffffe\n");
    EXPECT_EQ(keyboardNames(source), std::vector<std::string>{"Dell KB216 Wired Keyboard"});
}

TEST_F(LinuxInputDevicesTest, NoListNoDevices) {
    EXPECT_TRUE(discoverLinuxKeyboards(source)->empty());
    EXPECT_TRUE(discoverLinuxPointingDevices(source)->empty());
}

}  // namespace
}  // namespace tov
