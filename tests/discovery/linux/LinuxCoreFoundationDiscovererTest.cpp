#include "discovery/linux/LinuxCoreFoundationDiscoverer.h"

#include <gtest/gtest.h>

#include "model/QVCoreFoundationOperatingSystem.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

Value secondsOf(Value seconds) {
    DictionaryRef birth = makeDictionary();
    birth->set("seconds", seconds);
    return Value(birth);
}

Value unameWithRelease(const char* release) {
    DictionaryRef names = makeDictionary();
    names->set("release", Value(release));
    names->set("machine", Value("x86_64"));
    return Value(names);
}

std::shared_ptr<MemorySystemSource> debianMachine() {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/etc/os-release", "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\n"
                                    "VERSION_ID=\"12\"\nVERSION_CODENAME=bookworm\n")
        .file("/proc/stat", "cpu  10 0 20 300\ncpu0 10 0 20 300\nintr 1 2 3\nctxt 100\nbtime 1767225600\nprocesses 9\n")
        .fact("uname", "", unameWithRelease("6.1.0-18-amd64"))
        .fact("birthTime", "/", secondsOf(Value(1700000000)))
        .fact("birthTime", "/etc/machine-id", secondsOf(Value(1700000123)));
    return source;
}

std::shared_ptr<QVCoreFoundationOperatingSystem> recordOf(const std::shared_ptr<MemorySystemSource>& source) {
    const DictionaryRef section = LinuxCoreFoundationDiscoverer(source).discoverInfo();
    EXPECT_EQ(section->size(), 1u);
    const ArrayRef systems = section->get("operatingSystems").array();
    EXPECT_TRUE(systems && systems->size() == 1u);
    if (!systems || systems->empty()) return nullptr;
    return std::dynamic_pointer_cast<QVCoreFoundationOperatingSystem>((*systems)[0].record());
}

std::optional<std::string> textAt(const QVCoreFoundationOperatingSystem& system, const char* key) {
    const Value value = system.innerDictionary()->get(key);
    if (!value.string()) return std::nullopt;
    return *value.string();
}

TEST(LinuxCoreFoundationDiscoverer, OneRecordWithEditionBuildInstallAndBootTimes) {
    LinuxCoreFoundationDiscoverer discoverer(debianMachine());
    EXPECT_EQ(discoverer.sourceName(), "corefoundation");
    const auto system = recordOf(debianMachine());
    ASSERT_TRUE(system);
    EXPECT_EQ(system->edition(), "12");
    EXPECT_EQ(system->build(), "6.1.0-18-amd64");
    EXPECT_EQ(textAt(*system, "installDate"), "2023-11-14T22:13:20Z");
    EXPECT_EQ(textAt(*system, "lastBootTime"), "2026-01-01T00:00:00Z");
    EXPECT_EQ(system->identifier(), "2023-11-14T22:13:20Z");
}

TEST(LinuxCoreFoundationDiscoverer, BuildIdIsTheBuild) {
    auto source = debianMachine();
    source->file("/etc/os-release", "NAME=\"Fedora Linux\"\nVERSION_ID=40\nBUILD_ID=\"20240423.n.0\"\n");
    const auto system = recordOf(source);
    ASSERT_TRUE(system);
    EXPECT_EQ(system->edition(), "40");
    EXPECT_EQ(system->build(), "20240423.n.0");
}

TEST(LinuxCoreFoundationDiscoverer, ARollingDistributionHasAnEmptyEdition) {
    auto source = debianMachine();
    source->file("/etc/os-release", "NAME=\"Arch Linux\"\nID=arch\nBUILD_ID=rolling\n");
    const auto system = recordOf(source);
    ASSERT_TRUE(system);
    EXPECT_EQ(system->edition(), "");
    EXPECT_EQ(system->build(), "rolling");
}

TEST(LinuxCoreFoundationDiscoverer, WithoutTheRootBirthTimeTheMachineIdCounts) {
    auto source = debianMachine();
    source->fact("birthTime", "/", Value());
    const auto system = recordOf(source);
    ASSERT_TRUE(system);
    EXPECT_EQ(textAt(*system, "installDate"), "2023-11-14T22:15:23Z");
}

TEST(LinuxCoreFoundationDiscoverer, WithoutAnyBirthTimeThereIsNoInstallDate) {
    auto source = debianMachine();
    source->fact("birthTime", "/", Value()).fact("birthTime", "/etc/machine-id", Value());
    const auto system = recordOf(source);
    ASSERT_TRUE(system);
    EXPECT_FALSE(system->innerDictionary()->contains("installDate"));
    EXPECT_EQ(system->osInstallDate(), std::nullopt);
}

TEST(LinuxCoreFoundationDiscoverer, BirthTimesOutOfRangeOrOfTheWrongTypeAreIgnored) {
    for (const Value& bad : {Value(-1), Value(1e30), Value("1700000000"), Value(true)}) {
        auto source = debianMachine();
        source->fact("birthTime", "/", secondsOf(bad));
        const auto system = recordOf(source);
        ASSERT_TRUE(system);
        EXPECT_EQ(textAt(*system, "installDate"), "2023-11-14T22:15:23Z");
    }
}

TEST(LinuxCoreFoundationDiscoverer, WithoutProcStatTheBootTimeIsOneSecondBefore1970) {
    auto source = debianMachine();
    auto noStat = std::make_shared<MemorySystemSource>();
    noStat->file("/etc/os-release", "NAME=Debian\nVERSION_ID=12\n");
    const auto system = recordOf(noStat);
    ASSERT_TRUE(system);
    EXPECT_EQ(textAt(*system, "lastBootTime"), "1969-12-31T23:59:59Z");
    source->file("/proc/stat", "cpu 1 2 3\nbtime garbage\n");
    EXPECT_EQ(textAt(*recordOf(source), "lastBootTime"), "1969-12-31T23:59:59Z");
}

TEST(LinuxCoreFoundationDiscoverer, WithoutOsReleaseTheKernelReleaseIsTheBuild) {
    auto source = std::make_shared<MemorySystemSource>();
    source->fact("uname", "", unameWithRelease("6.8.0-1004-raspi"));
    const auto system = recordOf(source);
    ASSERT_TRUE(system);
    EXPECT_EQ(system->edition(), "");
    EXPECT_EQ(system->build(), "6.8.0-1004-raspi");
}

}  // namespace
}  // namespace tov
