#include "platform/macos/MacFacts.h"

#include <gtest/gtest.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <string>

#include "platform/ProcessMemory.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::TestFolder;

TEST(MacFacts, TextParametersAreTheKernelsTexts) {
    struct utsname names {};
    ASSERT_EQ(uname(&names), 0);
    EXPECT_EQ(sysctlFact("hw.machine"), Value(names.machine));
    const Value brand = sysctlFact("machdep.cpu.brand_string");
    ASSERT_TRUE(brand.isString());
    EXPECT_FALSE(brand.string()->empty());
    EXPECT_EQ(brand.string()->find('\0'), std::string::npos);
}

TEST(MacFacts, IntegerParametersAreNumbers) {
    EXPECT_EQ(sysctlFact("hw.memsize").toUInt64(), physicalMemoryBytes());
    EXPECT_GT(sysctlFact("hw.memsize").toUInt64(), 0U);
    const Value logical = sysctlFact("hw.logicalcpu");
    ASSERT_TRUE(logical.isNumber());
    EXPECT_GE(sysctlFact("hw.physicalcpu").toInt64(), 1);
    EXPECT_GE(logical.toInt64(), sysctlFact("hw.physicalcpu").toInt64());
    EXPECT_TRUE(sysctlFact("hw.cputype").isNumber());
}

TEST(MacFacts, TheSwapUsageAndTheBootTimeAreDictionaries) {
    const DictionaryRef swap = sysctlFact("vm.swapusage").dictionary();
    ASSERT_TRUE(swap);
    for (const char* key : {"total", "available", "used", "pageSize", "encrypted"}) {
        EXPECT_TRUE(swap->get(key).isNumber()) << key;
    }
    EXPECT_GE(swap->get("total").toUInt64(), swap->get("used").toUInt64());

    const DictionaryRef boot = sysctlFact("kern.boottime").dictionary();
    ASSERT_TRUE(boot);
    EXPECT_GT(boot->get("seconds").toInt64(), 0);
    EXPECT_LE(boot->get("seconds").toInt64(), static_cast<std::int64_t>(std::time(nullptr)));
    EXPECT_GE(boot->get("microseconds").toInt64(), 0);
    EXPECT_LT(boot->get("microseconds").toInt64(), 1000000);
}

TEST(MacFacts, NamesOutsideTheListedParametersAreAbsent) {
    EXPECT_TRUE(sysctlFact("").isAbsent());
    EXPECT_TRUE(sysctlFact("kern.ostype").isAbsent());
    EXPECT_TRUE(sysctlFact(std::string("hw.model\0.x", 11)).isAbsent());
    EXPECT_TRUE(sysctlFact("hw.model ").isAbsent());
}

TEST(MacFacts, ThePageSizeIsTheSystems) {
    EXPECT_EQ(pageSizeFact("").toUInt64(), static_cast<std::uint64_t>(getpagesize()));
}

TEST(MacFacts, ThePlatformDeviceIsInTheRegistryWithItsPathAndProperties) {
    const ArrayRef services = registryFact("IOPlatformExpertDevice").array();
    ASSERT_TRUE(services);
    ASSERT_FALSE(services->empty());
    const DictionaryRef service = services->front().dictionary();
    ASSERT_TRUE(service);
    ASSERT_TRUE(service->get("path").isString());
    EXPECT_EQ(service->get("path").string()->rfind("IOService:", 0), 0U);
    const DictionaryRef properties = service->get("properties").dictionary();
    ASSERT_TRUE(properties);
    EXPECT_TRUE(properties->get("IOPlatformUUID").isString());
    EXPECT_FALSE(service->get("usbSerialNumber").isString());
}

TEST(MacFacts, BlockStorageServicesAreListed) {
    const ArrayRef services = registryFact("IOBlockStorageDevice").array();
    ASSERT_TRUE(services);
    ASSERT_FALSE(services->empty());
    for (const Value& element : *services) {
        const DictionaryRef service = element.dictionary();
        ASSERT_TRUE(service);
        EXPECT_TRUE(service->get("path").isString());
        EXPECT_TRUE(service->get("properties").isDictionary());
    }
}

TEST(MacFacts, AUsagePairNarrowsTheMatching) {
    const Value everyDevice = registryFact("IOHIDDevice");
    const Value keyboards = registryFact("IOHIDDevice 1 6");
    const std::size_t all = everyDevice.isArray() ? everyDevice.array()->size() : 0;
    const std::size_t some = keyboards.isArray() ? keyboards.array()->size() : 0;
    EXPECT_LE(some, all);
    if (!keyboards.isArray()) return;
    for (const Value& element : *keyboards.array()) {
        const DictionaryRef service = element.dictionary();
        ASSERT_TRUE(service);
        EXPECT_TRUE(service->get("path").isString());
    }
}

TEST(MacFacts, RegistryKeysOfAnyOtherShapeAreAbsent) {
    EXPECT_TRUE(registryFact("").isAbsent());
    EXPECT_TRUE(registryFact("IOHIDDevice 1").isAbsent());
    EXPECT_TRUE(registryFact("IO/HIDDevice").isAbsent());
    EXPECT_TRUE(registryFact(std::string("IOHIDDevice\0 1 6", 16)).isAbsent());
}

TEST(MacFacts, PowerSourcesAreAListOfDescriptions) {
    const ArrayRef sources = powerSourcesFact("").array();
    ASSERT_TRUE(sources);
    for (const Value& source : *sources) EXPECT_TRUE(source.isDictionary());
}

TEST(MacFacts, AudioDevicesHaveTextsWhereTheyWereRead) {
    const Value devices = audioDevicesFact("");
    if (devices.isAbsent()) GTEST_SKIP() << "This machine's audio device list cannot be read.";
    ASSERT_TRUE(devices.isArray());
    for (const Value& element : *devices.array()) {
        const DictionaryRef device = element.dictionary();
        ASSERT_TRUE(device);
        for (const auto& [key, value] : *device) {
            EXPECT_TRUE(key == "name" || key == "manufacturer") << key;
            EXPECT_TRUE(value.isString()) << key;
        }
    }
}

TEST(MacFacts, ANewFilesBirthTimeIsWhenItWasMade) {
    TestFolder folder;
    const auto before = static_cast<std::int64_t>(std::time(nullptr));
    const std::string path = folder.write("new", "x");
    const auto after = static_cast<std::int64_t>(std::time(nullptr));
    const DictionaryRef birth = birthTimeFact(path).dictionary();
    ASSERT_TRUE(birth);
    EXPECT_GE(birth->get("seconds").toInt64(), before - 1);
    EXPECT_LE(birth->get("seconds").toInt64(), after + 1);
    EXPECT_TRUE(birthTimeFact(folder.file("missing")).isAbsent());
    EXPECT_TRUE(birthTimeFact("").isAbsent());
    EXPECT_TRUE(birthTimeFact(path + std::string("\0x", 2)).isAbsent());
}

TEST(MacFacts, PathsOnOneVolumeShareTheirIdentifier) {
    TestFolder folder;
    const std::string first = folder.write("first", "1");
    const std::string second = folder.write("second", "2");
    const Value firstVolume = volumeIdentifierFact(first);
    ASSERT_TRUE(firstVolume.isDictionary());
    ASSERT_TRUE(firstVolume.dictionary()->get("identifier").isString());
    EXPECT_EQ(firstVolume, volumeIdentifierFact(second));
    EXPECT_EQ(firstVolume, volumeIdentifierFact(folder.path()));
    // The device folder is a file system of its own.
    EXPECT_NE(firstVolume, volumeIdentifierFact("/dev"));
    EXPECT_TRUE(volumeIdentifierFact(folder.file("missing")).isAbsent());
    EXPECT_TRUE(volumeIdentifierFact("").isAbsent());
}

}  // namespace
}  // namespace tov
