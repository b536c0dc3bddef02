#include "discovery/linux/InputDeviceKind.h"

#include <gtest/gtest.h>

#include "InputDeviceBlocks.h"

namespace tov {
namespace {

namespace input = testing::input;

InputDevice deviceOf(const char* block, unsigned wordBits = 64) {
    const std::vector<InputDevice> devices = ProcInputDevices::parse(block, wordBits);
    EXPECT_EQ(devices.size(), 1U);
    return devices.empty() ? InputDevice{} : devices.front();
}

TEST(InputDeviceKindTest, KeyboardsHaveTheLetterKeysAndRepeatThem) {
    EXPECT_TRUE(isKeyboard(deviceOf(input::kAtKeyboard)));
    EXPECT_TRUE(isKeyboard(deviceOf(input::kUsbKeyboard)));
    EXPECT_TRUE(isKeyboard(deviceOf(input::kAtKeyboard32, 32)));
    EXPECT_FALSE(isKeyboard(deviceOf(input::kConsumerControl)));
    EXPECT_FALSE(isKeyboard(deviceOf(input::kLettersWithoutRepeat)));
}

TEST(InputDeviceKindTest, KeyboardsAreNoPointingDevices) {
    EXPECT_FALSE(isPointingDevice(deviceOf(input::kAtKeyboard)));
    EXPECT_FALSE(isPointingDevice(deviceOf(input::kConsumerControl)));
}

TEST(InputDeviceKindTest, MiceMoveRelativelyWithALeftButton) {
    EXPECT_TRUE(isPointingDevice(deviceOf(input::kUsbMouse)));
    EXPECT_TRUE(isPointingDevice(deviceOf(input::kPs2Mouse)));
    EXPECT_FALSE(isKeyboard(deviceOf(input::kUsbMouse)));
}

TEST(InputDeviceKindTest, AnAbsoluteDeviceWithMouseButtonsIsAMouse) {
    EXPECT_TRUE(isPointingDevice(deviceOf(input::kQemuTablet)));
}

TEST(InputDeviceKindTest, TouchpadsAndPointingSticksPoint) {
    EXPECT_TRUE(isPointingDevice(deviceOf(input::kTouchpad)));
    EXPECT_TRUE(isPointingDevice(deviceOf(input::kPointingStick)));
}

TEST(InputDeviceKindTest, ScreensPensSensorsAndButtonsAreNeither) {
    for (const char* block : {input::kTouchscreen, input::kPenTablet, input::kAccelerometer, input::kLidSwitch,
                              input::kPowerButton, input::kSleepButton, input::kVideoBus, input::kHdaJack,
                              input::kPcSpeaker}) {
        const InputDevice device = deviceOf(block);
        EXPECT_FALSE(isKeyboard(device)) << block;
        EXPECT_FALSE(isPointingDevice(device)) << block;
    }
}

TEST(InputDeviceKindTest, TheWordWidthDecides) {
    // A 64-bit kernel's mouse read as if its words were 32 bits wide has no left button.
    EXPECT_FALSE(isPointingDevice(deviceOf(input::kUsbMouse, 32)));
}

TEST(InputDeviceKindTest, ADeviceWithoutCapabilitiesIsNeither) {
    const InputDevice device = deviceOf("I: Bus=0003 Vendor=046d Product=c077 Version=0111\nN: Name=\"Bare\"\n");
    EXPECT_FALSE(isKeyboard(device));
    EXPECT_FALSE(isPointingDevice(device));
}

}  // namespace
}  // namespace tov
