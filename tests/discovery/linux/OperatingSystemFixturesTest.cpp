// The operating-system sections of the recorded Linux machines, replayed from their
// capture folders.

#include <gtest/gtest.h>

#include "discovery/RecordedSystemSource.h"
#include "discovery/linux/LinuxCoreFoundationDiscoverer.h"
#include "discovery/linux/LinuxOperatingSystemDiscoverer.h"
#include "model/QVCoreFoundationOperatingSystem.h"

namespace tov {
namespace {

std::shared_ptr<SystemSource> machine(const std::string& name) {
    return RecordedSystemSource::open(std::string(TOV_TEST_FIXTURES) + "/linux/" + name);
}

DictionaryRef operatingSystemOf(const std::string& name) {
    const std::shared_ptr<SystemSource> source = machine(name);
    EXPECT_TRUE(source) << name;
    return source ? LinuxOperatingSystemDiscoverer(source).discoverInfo() : makeDictionary();
}

std::shared_ptr<QVCoreFoundationOperatingSystem> coreFoundationOf(const std::string& name) {
    const std::shared_ptr<SystemSource> source = machine(name);
    if (!source) return nullptr;
    const ArrayRef systems = LinuxCoreFoundationDiscoverer(source).discoverOperatingSystem();
    return std::dynamic_pointer_cast<QVCoreFoundationOperatingSystem>((*systems)[0].record());
}

std::string text(const DictionaryRef& section, const char* key) {
    const Value* value = section->find(key);
    return value && value->string() ? *value->string() : "<absent>";
}

TEST(OperatingSystemFixtures, LaptopHasItsConsoleUserWithHerLocaleAndPrettyName) {
    const DictionaryRef section = operatingSystemOf("laptop");
    EXPECT_EQ(text(section, "osName"), "Ubuntu");
    EXPECT_EQ(text(section, "osVersion"), "22.04 (6.5.0-41-generic)");
    EXPECT_EQ(text(section, "systemName"), "Lena's EliteBook");
    EXPECT_EQ(text(section, "username"), "lena");
    EXPECT_EQ(text(section, "userLocale"), "de_DE");
    EXPECT_EQ(text(section, "systemManufacturer"), "HP");
    EXPECT_EQ(text(section, "serialNumber"), "5CG3347QTR");
}

TEST(OperatingSystemFixtures, DesktopWithAPlaceholderSerialHasNoSerialNumber) {
    const DictionaryRef section = operatingSystemOf("desktop-lvm");
    EXPECT_EQ(text(section, "osName"), "Fedora Linux");
    EXPECT_EQ(text(section, "userLocale"), "it_IT");
    EXPECT_EQ(text(section, "serialNumber"), "<absent>");
}

TEST(OperatingSystemFixtures, ServerWithoutConsoleHasNoUserAndNoDomain) {
    const DictionaryRef section = operatingSystemOf("server-raid");
    EXPECT_EQ(text(section, "username"), "");
    EXPECT_EQ(text(section, "domain"), "");
    EXPECT_EQ(text(section, "userLocale"), "en_US");
    EXPECT_EQ(text(section, "systemModel"), "PowerEdge R640");
}

TEST(OperatingSystemFixtures, ArmBoardWithoutDmiIsNamedByItsDeviceTree) {
    const DictionaryRef section = operatingSystemOf("arm-board");
    EXPECT_EQ(text(section, "systemManufacturer"), "");
    EXPECT_EQ(text(section, "systemModel"), "Raspberry Pi 4 Model B Rev 1.4");
    EXPECT_EQ(text(section, "systemType"), "aarch64");
    const auto system = coreFoundationOf("arm-board");
    ASSERT_TRUE(system);
    EXPECT_EQ(system->identifier(), "2023-12-01T11:31:00Z");
}

TEST(OperatingSystemFixtures, BrokenMachineGivesWhatItCan) {
    const DictionaryRef section = operatingSystemOf("broken");
    EXPECT_EQ(text(section, "osName"), "Debian GNU/Linux");
    EXPECT_EQ(text(section, "osVersion"), "6.1.0-13-amd64");
    EXPECT_EQ(text(section, "systemManufacturer"), "Giga\xEF\xBF\xBD" "byte Technology");
    EXPECT_EQ(text(section, "systemName"), "lab[31m-box");
    EXPECT_EQ(text(section, "systemModel"), "");
    EXPECT_EQ(text(section, "userLocale"), "C");
    const auto system = coreFoundationOf("broken");
    ASSERT_TRUE(system);
    EXPECT_EQ(system->identifier(), std::nullopt);
    EXPECT_EQ(system->osLastBootTime(), std::chrono::system_clock::time_point(std::chrono::seconds(-1)));
}

TEST(OperatingSystemFixtures, EveryMachineHasItsBootTimeAndEdition) {
    for (const char* name : {"laptop", "desktop-lvm", "server-raid", "virtual-machine", "arm-board"}) {
        const auto system = coreFoundationOf(name);
        ASSERT_TRUE(system) << name;
        EXPECT_TRUE(system->osInstallDate()) << name;
        EXPECT_GT(system->osLastBootTime(), std::chrono::system_clock::time_point()) << name;
        EXPECT_FALSE(system->edition().value_or("").empty()) << name;
    }
}

}  // namespace
}  // namespace tov
