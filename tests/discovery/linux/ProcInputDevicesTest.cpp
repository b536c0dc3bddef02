#include "discovery/linux/ProcInputDevices.h"

#include <gtest/gtest.h>

#include <string>

#include "InputDeviceBlocks.h"

namespace tov {
namespace {

namespace input = testing::input;

TEST(ProcInputDevicesTest, ReadsEachBlocksIdentityNameAndBitmaps) {
    const std::string text = std::string(input::kPowerButton) + "\n" + input::kUsbMouse + "\n";
    const std::vector<InputDevice> devices = ProcInputDevices::parse(text, 64);
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[0].name, "Power Button");
    EXPECT_EQ(devices[0].bus, 0x19);
    EXPECT_TRUE(devices[0].keys.has(116));
    EXPECT_EQ(devices[1].name, "Logitech USB Optical Mouse");
    EXPECT_EQ(devices[1].bus, kInputBusUsb);
    EXPECT_EQ(devices[1].vendor, 0x046d);
    EXPECT_EQ(devices[1].product, 0xc077);
    EXPECT_TRUE(devices[1].events.has(2));
    EXPECT_TRUE(devices[1].relativeAxes.has(0));
    EXPECT_TRUE(devices[1].relativeAxes.has(1));
    EXPECT_TRUE(devices[1].keys.has(0x110));
    EXPECT_TRUE(devices[1].absoluteAxes.empty());
}

TEST(ProcInputDevicesTest, NamesAreMadePrintable) {
    const std::vector<InputDevice> devices =
        ProcInputDevices::parse("I: Bus=0003 Vendor=1234 Product=5678\nN: Name=\"Odd\x01 \xff Pad\"\n", 64);
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(devices[0].name, "Odd \xEF\xBF\xBD Pad");
}

TEST(ProcInputDevicesTest, AnUnreadableBitmapCountsAsEmptyAndTheRestIsKept) {
    const std::vector<InputDevice> devices = ProcInputDevices::parse(
        "I: Bus=0003 Vendor=046d Product=c077 Version=0111\n"
        "N: Name=\"Mouse\"\n"
        "B: EV=17\n"
        "B: KEY=ff0000 zz 0 0 0\n"
        "B: REL=1ffffffffffffffff3\n"
        "B: ABS=3\n",
        64);
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_TRUE(devices[0].events.has(1));
    EXPECT_TRUE(devices[0].keys.empty());
    EXPECT_TRUE(devices[0].relativeAxes.empty());
    EXPECT_TRUE(devices[0].absoluteAxes.has(0));
}

TEST(ProcInputDevicesTest, ACutOffBlockHasWhatWasRead) {
    const std::string text = std::string(input::kAtKeyboard) + "\nI: Bus=0003 Vendor=046d Pro";
    const std::vector<InputDevice> devices = ProcInputDevices::parse(text, 64);
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[1].bus, kInputBusUsb);
    EXPECT_EQ(devices[1].vendor, 0x046d);
    EXPECT_EQ(devices[1].product, 0);
    EXPECT_FALSE(devices[1].name.has_value());
}

TEST(ProcInputDevicesTest, MalformedLinesAreSkipped) {
    const std::vector<InputDevice> devices =
        ProcInputDevices::parse("garbage\nB:EV=3\nI: Bus=zz Vendor=12345\nN: Name=\"Only\"\r\n\r\n", 64);
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(devices[0].name, "Only");
    EXPECT_EQ(devices[0].bus, 0);
    EXPECT_EQ(devices[0].vendor, 0);
    EXPECT_TRUE(devices[0].events.empty());
}

TEST(ProcInputDevicesTest, TheNumberOfDevicesIsBounded) {
    std::string text;
    for (std::size_t device = 0; device < ProcInputDevices::kMaximumDevices + 10; ++device) {
        text += "N: Name=\"d\"\n\n";
    }
    EXPECT_EQ(ProcInputDevices::parse(text, 64).size(), ProcInputDevices::kMaximumDevices);
}

TEST(ProcInputDevicesTest, AnEmptyFileHasNoDevices) {
    EXPECT_TRUE(ProcInputDevices::parse("", 64).empty());
    EXPECT_TRUE(ProcInputDevices::parse("\n\n\n", 64).empty());
}

}  // namespace
}  // namespace tov
