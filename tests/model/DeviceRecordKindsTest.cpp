// The hardware kinds whose properties are plain views of their keys.

#include <gtest/gtest.h>

#include <limits>

#include "RecordSamples.h"
#include "model/QVAppKitPrinter.h"
#include "model/QVCoreAudioSound.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitMemory.h"
#include "model/QVIOKitPointingDevice.h"

namespace tov {
namespace {

using testing::compactJson;
using testing::recordFromJson;

// ---- camera

std::shared_ptr<QVIOKitCamera> camera(std::optional<std::string_view> name, std::optional<std::string_view> uuid) {
    auto record = QVIOKitCamera::ioKitCamera();
    record->setName(name);
    record->setModel("UVC Camera");
    record->setUuid(uuid);
    return record;
}

TEST(QVIOKitCamera, WritesItsKeys) {
    auto record = QVIOKitCamera::ioKitCamera();
    record->setName(" FaceTime HD Camera ");
    record->setModel("UVC");
    record->setUuid("0x1a11");
    EXPECT_EQ(compactJson(*record), R"({"name":"FaceTime HD Camera","model":"UVC","uuid":"0x1a11"})");
    EXPECT_EQ(record->name(), "FaceTime HD Camera");
    EXPECT_EQ(record->model(), "UVC");
    EXPECT_EQ(record->uuid(), "0x1a11");
    EXPECT_STREQ(record->className(), "QVIOKitCamera");
    EXPECT_TRUE(record->isKindOf(typeid(QVHardware)));
}

TEST(QVIOKitCamera, KeepsTheBaseEmptyIdentifier) {
    EXPECT_EQ(camera("FaceTime", "0x1a11")->identifier(), std::string());
}

TEST(QVIOKitCamera, SameNameAndModelButEmptyUuidAreUnequal) {
    const auto first = camera("FaceTime", "");
    const auto second = camera("FaceTime", "");
    EXPECT_FALSE(first->isEqual(*second));
    EXPECT_FALSE(first->isEqual(*first));
    EXPECT_FALSE(camera("FaceTime", std::nullopt)->isEqual(*second));
}

TEST(QVIOKitCamera, OneEmptyUuidMakesThemUnequal) {
    EXPECT_FALSE(camera("FaceTime", "0x1a11")->isEqual(*camera("FaceTime", "")));
    EXPECT_FALSE(camera("FaceTime", "")->isEqual(*camera("FaceTime", "0x1a11")));
}

TEST(QVIOKitCamera, EqualNonEmptyUuidsAreEqualWhateverTheNames) {
    EXPECT_TRUE(camera("FaceTime", "0x1a11")->isEqual(*camera("Other camera", "0x1a11")));
    EXPECT_FALSE(camera("FaceTime", "0x1a11")->isEqual(*camera("FaceTime", "0x1A11")));
}

TEST(QVIOKitCamera, UnsetUuidsAreUnequal) {
    auto first = QVIOKitCamera::ioKitCamera();
    auto second = QVIOKitCamera::ioKitCamera();
    EXPECT_FALSE(first->uuid());
    EXPECT_FALSE(first->isEqual(*second));
}

// ---- keyboard

TEST(QVIOKitKeyboard, WritesItsKeyAndIsNamedByIt) {
    auto record = QVIOKitKeyboard::ioKitKeyboard();
    EXPECT_FALSE(record->identifier());
    record->setName("Apple Internal Keyboard");
    EXPECT_EQ(compactJson(*record), R"({"name":"Apple Internal Keyboard"})");
    EXPECT_EQ(record->identifier(), "Apple Internal Keyboard");
    EXPECT_STREQ(record->className(), "QVIOKitKeyboard");
}

TEST(QVIOKitKeyboard, EqualityComparesTheNameExactly) {
    auto first = QVIOKitKeyboard::ioKitKeyboard();
    auto second = QVIOKitKeyboard::ioKitKeyboard();
    EXPECT_FALSE(first->isEqual(*second));  // both unset
    first->setName("Keyboard");
    second->setName("Keyboard");
    EXPECT_TRUE(first->isEqual(*second));
    second->setName("keyboard");
    EXPECT_FALSE(first->isEqual(*second));
    first->setName(std::nullopt);
    second->setName("");
    EXPECT_TRUE(first->isEqual(*second));  // both stored as ""
}

// ---- display

std::shared_ptr<QVIOKitDisplay> display(std::string_view description, std::string_view manufacturer) {
    auto record = QVIOKitDisplay::iokitDisplay();
    record->setDescription(description);
    record->setManufacturer(manufacturer);
    record->setFrequency(60);
    record->setWidth(1920);
    record->setHeight(1080);
    record->setDepth(24);
    return record;
}

TEST(QVIOKitDisplay, WritesItsKeysWithSignedNumbers) {
    const auto record = display("Intel Iris", "Intel");
    EXPECT_EQ(compactJson(*record),
              R"({"adapterDescription":"Intel Iris","manufacturer":"Intel","refreshRate":60,)"
              R"("width":1920,"height":1080,"depth":24})");
    EXPECT_EQ(record->innerDictionary()->get("width").type(), Value::Type::Int);
    EXPECT_EQ(record->getDescription(), "Intel Iris");
    EXPECT_EQ(record->manufacturer(), "Intel");
    EXPECT_EQ(record->frequency(), 60);
    EXPECT_EQ(record->width(), 1920);
    EXPECT_EQ(record->height(), 1080);
    EXPECT_EQ(record->depth(), 24);
    EXPECT_EQ(record->identifier(), "Intel Iris");
}

TEST(QVIOKitDisplay, MissingNumbersReadAsZeroAndReadBackNumbersOfAnyType) {
    const auto empty = QVIOKitDisplay::iokitDisplay();
    EXPECT_EQ(empty->width(), 0);
    EXPECT_EQ(empty->frequency(), 0);
    EXPECT_FALSE(empty->identifier());
    const auto readBack = recordFromJson<QVIOKitDisplay>(R"({"width":2560,"height":1600.0,"depth":-1})");
    EXPECT_EQ(readBack->width(), 2560);
    EXPECT_EQ(readBack->height(), 1600);
    EXPECT_EQ(readBack->depth(), -1);
}

TEST(QVIOKitDisplay, EqualityComparesDescriptionThenManufacturerOnly) {
    auto first = display("Intel Iris", "Intel");
    auto second = display("Intel Iris", "Intel");
    second->setWidth(3840);
    second->setFrequency(120);
    EXPECT_TRUE(first->isEqual(*second));
    EXPECT_FALSE(first->isEqual(*display("Intel Iris Pro", "Intel")));
    EXPECT_FALSE(first->isEqual(*display("Intel Iris", "Intel Corporation")));
}

// ---- printer

TEST(QVAppKitPrinter, WritesItsKeysAndIsNamedByName) {
    auto record = QVAppKitPrinter::appKitPrinter();
    record->setName("Office");
    record->setDriver("Generic PostScript");
    EXPECT_EQ(compactJson(*record), R"({"name":"Office","driver":"Generic PostScript"})");
    EXPECT_EQ(record->identifier(), "Office");
    EXPECT_EQ(record->driver(), "Generic PostScript");
    EXPECT_FALSE(QVAppKitPrinter::appKitPrinter()->identifier());
}

TEST(QVAppKitPrinter, EqualityComparesNameThenDriver) {
    auto first = QVAppKitPrinter::appKitPrinter();
    auto second = QVAppKitPrinter::appKitPrinter();
    first->setName("Office");
    second->setName("Office");
    EXPECT_FALSE(first->isEqual(*second));  // drivers unset
    first->setDriver("PCL");
    second->setDriver("PCL");
    EXPECT_TRUE(first->isEqual(*second));
    second->setDriver("PostScript");
    EXPECT_FALSE(first->isEqual(*second));
}

// ---- sound

TEST(QVCoreAudioSound, WritesItsKeysAndComparesNameThenManufacturer) {
    auto first = QVCoreAudioSound::coreAudioSound();
    first->setName("Speakers");
    first->setManufacturer("Apple Inc.");
    EXPECT_EQ(compactJson(*first), R"({"name":"Speakers","manufacturer":"Apple Inc."})");
    EXPECT_EQ(first->identifier(), "Speakers");
    EXPECT_EQ(first->manufacturer(), "Apple Inc.");

    auto second = QVCoreAudioSound::coreAudioSound();
    second->setName("Speakers");
    second->setManufacturer("Apple Inc.");
    EXPECT_TRUE(first->isEqual(*second));
    second->setManufacturer("Other");
    EXPECT_FALSE(first->isEqual(*second));
    second->setManufacturer("Apple Inc.");
    second->setName("Headphones");
    EXPECT_FALSE(first->isEqual(*second));
}

// ---- pointing device

TEST(QVIOKitPointingDevice, WritesItsKeysAndComparesDescriptionThenManufacturer) {
    auto first = QVIOKitPointingDevice::ioKitPointingDevice();
    first->setDescription("Magic Mouse");
    first->setManufacturer("Apple");
    EXPECT_EQ(compactJson(*first), R"({"description":"Magic Mouse","manufacturer":"Apple"})");
    EXPECT_EQ(first->identifier(), "Magic Mouse");
    EXPECT_EQ(first->getDescription(), "Magic Mouse");

    auto second = QVIOKitPointingDevice::ioKitPointingDevice();
    second->setDescription("Magic Mouse");
    second->setManufacturer("Apple");
    EXPECT_TRUE(first->isEqual(*second));
    second->setManufacturer("Logitech");
    EXPECT_FALSE(first->isEqual(*second));
    second->setManufacturer("Apple");
    second->setDescription("Magic Trackpad");
    EXPECT_FALSE(first->isEqual(*second));
}

// ---- memory module

std::shared_ptr<QVIOKitMemory> memoryModule(std::optional<std::string_view> name, std::string_view serial) {
    auto record = QVIOKitMemory::ioKitMemory();
    record->setName(name);
    record->setSerialNumber(serial);
    return record;
}

TEST(QVIOKitMemory, WritesItsKeysAllAsText) {
    auto record = QVIOKitMemory::ioKitMemory();
    record->setName("BANK 0/DIMM0");
    record->setSerialNumber("0x1234");
    record->setPartNumber("M471A1K43CB1");
    record->setSize("8 GB");
    record->setSpeed("2667 MHz");
    record->setStatus("OK");
    record->setType("DDR4");
    record->setManufacturer("Samsung");
    EXPECT_EQ(compactJson(*record),
              R"({"name":"BANK 0/DIMM0","serialnumber":"0x1234","partnumber":"M471A1K43CB1","size":"8 GB",)"
              R"("speed":"2667 MHz","status":"OK","type":"DDR4","manufacturer":"Samsung"})");
    EXPECT_EQ(record->identifier(), "BANK 0/DIMM0");
    EXPECT_EQ(record->serialNumber(), "0x1234");
    EXPECT_EQ(record->partNumber(), "M471A1K43CB1");
    EXPECT_EQ(record->size(), "8 GB");
    EXPECT_EQ(record->speed(), "2667 MHz");
    EXPECT_EQ(record->status(), "OK");
    EXPECT_EQ(record->type(), "DDR4");
    EXPECT_EQ(record->manufacturer(), "Samsung");
}

TEST(QVIOKitMemory, EqualityNeedsTheSameNonEmptyName) {
    EXPECT_TRUE(memoryModule("DIMM0", "1")->isEqual(*memoryModule("DIMM0", "2")));
    EXPECT_FALSE(memoryModule("DIMM0", "1")->isEqual(*memoryModule("DIMM1", "1")));
    EXPECT_FALSE(memoryModule("", "1")->isEqual(*memoryModule("", "1")));
    EXPECT_FALSE(memoryModule(std::nullopt, "1")->isEqual(*memoryModule("DIMM0", "1")));
    const auto unnamed = QVIOKitMemory::ioKitMemory();
    EXPECT_FALSE(unnamed->isEqual(*unnamed));
}

// ---- battery

std::shared_ptr<QVIOKitBattery> battery(std::string_view name, std::string_view serial) {
    auto record = QVIOKitBattery::ioKitBattery();
    record->setName(name);
    record->setSerialNo(serial);
    return record;
}

TEST(QVIOKitBattery, WritesItsKeys) {
    auto record = battery("bq20z451", "D864");
    record->setCapacity(87.9f);
    record->setEstimatedRunTime(125);
    EXPECT_EQ(compactJson(*record),
              R"({"name":"bq20z451","serialNumber":"D864","capacity":87,"estimatedChargeRemaining":125})");
    EXPECT_EQ(record->identifier(), "bq20z451");
    EXPECT_EQ(record->serialNo(), "D864");
    EXPECT_EQ(record->estimatedRunTime(), 125);
}

TEST(QVIOKitBattery, CapacityIsStoredTruncatedTowardZero) {
    auto record = QVIOKitBattery::ioKitBattery();
    record->setCapacity(99.99f);
    EXPECT_EQ(record->innerDictionary()->get("capacity"), Value(99));
    EXPECT_EQ(record->innerDictionary()->get("capacity").type(), Value::Type::Int);
    EXPECT_FLOAT_EQ(record->capacity(), 99.0f);
    record->setCapacity(-0.5f);
    EXPECT_EQ(record->innerDictionary()->get("capacity"), Value(0));
    EXPECT_EQ(compactJson(*record), R"({"capacity":0})");
    record->setCapacity(-7.9f);
    EXPECT_FLOAT_EQ(record->capacity(), -7.0f);
}

TEST(QVIOKitBattery, CapacityOutOfRangeIsHeldAtTheLimits) {
    auto record = QVIOKitBattery::ioKitBattery();
    record->setCapacity(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(record->innerDictionary()->get("capacity"), Value(0));
    record->setCapacity(1e20f);
    EXPECT_EQ(record->innerDictionary()->get("capacity").toInt64(), std::numeric_limits<std::int32_t>::max());
    record->setCapacity(-1e20f);
    EXPECT_EQ(record->innerDictionary()->get("capacity").toInt64(), std::numeric_limits<std::int32_t>::min());
}

TEST(QVIOKitBattery, MissingNumbersReadAsZeroAndReadBackNumbersOfAnyType) {
    EXPECT_EQ(QVIOKitBattery::ioKitBattery()->capacity(), 0.0f);
    EXPECT_EQ(QVIOKitBattery::ioKitBattery()->estimatedRunTime(), 0);
    const auto readBack = recordFromJson<QVIOKitBattery>(R"({"capacity":87,"estimatedChargeRemaining":300})");
    EXPECT_FLOAT_EQ(readBack->capacity(), 87.0f);
    EXPECT_EQ(readBack->estimatedRunTime(), 300);
}

TEST(QVIOKitBattery, EqualityComparesNameThenSerialNumber) {
    auto first = battery("bq20z451", "D864");
    auto second = battery("bq20z451", "D864");
    first->setCapacity(80);
    second->setCapacity(20);
    second->setEstimatedRunTime(5);
    EXPECT_TRUE(first->isEqual(*second));
    EXPECT_FALSE(first->isEqual(*battery("bq20z451", "X")));
    EXPECT_FALSE(first->isEqual(*battery("other", "D864")));
}

// ---- device-registry disk

std::shared_ptr<QVIOKitDisk> ioKitDisk(std::string_view name, std::string_view serial, bool removable) {
    auto record = QVIOKitDisk::ioKitDisk();
    record->setName(name);
    record->setSerialNo(serial);
    record->setRemovable(removable);
    return record;
}

TEST(QVIOKitDisk, WritesItsKeysWithABoolean) {
    const auto record = ioKitDisk("SanDisk Ultra", "4C53", true);
    EXPECT_EQ(compactJson(*record), R"({"name":"SanDisk Ultra","serialNumber":"4C53","removable":true})");
    EXPECT_EQ(record->identifier(), "SanDisk Ultra");
    EXPECT_EQ(record->serialNo(), "4C53");
    EXPECT_TRUE(record->isRemovable());
    EXPECT_FALSE(QVIOKitDisk::ioKitDisk()->isRemovable());
    EXPECT_TRUE(recordFromJson<QVIOKitDisk>(R"({"removable":1})")->isRemovable());
}

TEST(QVIOKitDisk, EqualityComparesNameSerialAndRemovable) {
    const auto disk = ioKitDisk("SanDisk Ultra", "4C53", true);
    EXPECT_TRUE(disk->isEqual(*ioKitDisk("SanDisk Ultra", "4C53", true)));
    EXPECT_FALSE(disk->isEqual(*ioKitDisk("SanDisk Ultra", "4C53", false)));
    EXPECT_FALSE(disk->isEqual(*ioKitDisk("SanDisk Ultra", "4C54", true)));
    EXPECT_FALSE(disk->isEqual(*ioKitDisk("SanDisk", "4C53", true)));
    // A removable flag read back as a number compares as a boolean.
    const auto readBack = recordFromJson<QVIOKitDisk>(R"({"name":"SanDisk Ultra","serialNumber":"4C53","removable":1})");
    EXPECT_TRUE(disk->isEqual(*readBack));
}

// ---- serial number keys

TEST(SerialNumberKeys, AMemoryModuleWritesLowerCaseABatteryAndADiskCamelCase) {
    auto module = QVIOKitMemory::ioKitMemory();
    module->setSerialNumber("M1");
    auto power = QVIOKitBattery::ioKitBattery();
    power->setSerialNo("B1");
    auto disk = QVIOKitDisk::ioKitDisk();
    disk->setSerialNo("D1");
    EXPECT_EQ(compactJson(*module), R"({"serialnumber":"M1"})");
    EXPECT_EQ(compactJson(*power), R"({"serialNumber":"B1"})");
    EXPECT_EQ(compactJson(*disk), R"({"serialNumber":"D1"})");
}

}  // namespace
}  // namespace tov
