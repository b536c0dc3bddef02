// The recorded Macs of tests/fixtures/macos/ answer every question the macOS discoverers
// ask, and their answers agree with each other: each disk the list walk reports has its
// info, each bootable volume off the startup list its bless answer, the Wi-Fi interface
// is one of the network adapters, the boot volume is found under /Volumes. A capture that
// drifted from its model fails here, before any report is compared.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/PropertyList.h"
#include "common/TextUtils.h"
#include "discovery/RecordedSystemSource.h"
#include "discovery/SystemFacts.h"

namespace tov {
namespace {

namespace fs = std::filesystem;

constexpr const char* kProfiler = "/usr/sbin/system_profiler";
constexpr const char* kDiskUtil = "/usr/sbin/diskutil";
constexpr const char* kBless = "/usr/sbin/bless";
constexpr const char* kCsrUtil = "/usr/bin/csrutil";
constexpr const char* kBlessedFolderPhrase = "Blessed System Folder is ";
constexpr long long kAppleSiliconCpuType = 16777228;

std::vector<std::string> recordedMacs() {
    std::vector<std::string> machines;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(fs::path(TOV_TEST_FIXTURES) / "macos", error)) {
        if (entry.is_directory()) machines.push_back(entry.path().filename().string());
    }
    std::sort(machines.begin(), machines.end());
    return machines;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        result.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return result;
}

std::string text(const DictionaryRef& dictionary, const char* key) {
    const Value value = dictionary ? dictionary->get(key) : Value();
    return value.string() ? *value.string() : "";
}

class RecordedMacs : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        source_ = RecordedSystemSource::open((fs::path(TOV_TEST_FIXTURES) / "macos" / GetParam()).string());
        ASSERT_TRUE(source_) << GetParam() << " is no capture folder";
    }

    // The tool's output as a property list, or nothing.
    std::optional<Value> toolPropertyList(const std::vector<std::string>& argv) {
        const std::optional<std::string> output = source_->runTool(argv);
        if (!output) return std::nullopt;
        return parsePropertyList(*output);
    }

    DictionaryRef diskList() {
        const std::optional<Value> list = toolPropertyList({kDiskUtil, "list", "-plist"});
        return list ? list->dictionary() : nullptr;
    }

    // The disks named inside the physical-volume blocks of the CoreStorage listing.
    std::set<std::string> physicalVolumes() {
        std::set<std::string> found;
        bool inside = false;
        for (std::string line : lines(source_->runTool({kDiskUtil, "cs", "list"}).value_or(""))) {
            line.erase(0, line.find_first_not_of(" |"));
            if (line.find("< Physical Volume") != std::string::npos) {
                inside = true;
            } else if (line.rfind("+->", 0) == 0) {
                inside = false;
            } else if (inside && line.rfind("Disk:", 0) == 0) {
                found.insert(trimWhitespaceAndNewlines(line.substr(5)));
            }
        }
        return found;
    }

    // The whole disks and partitions the list walk visits, in its order.
    std::vector<DictionaryRef> walkedEntries() {
        std::vector<DictionaryRef> entries;
        const DictionaryRef list = diskList();
        const ArrayRef disks = list ? list->get("AllDisksAndPartitions").array() : nullptr;
        if (!disks) return entries;
        for (const Value& disk : *disks) {
            entries.push_back(disk.dictionary());
            if (const ArrayRef partitions = disk.dictionary()->get("Partitions").array()) {
                for (const Value& partition : *partitions) entries.push_back(partition.dictionary());
            }
        }
        return entries;
    }

    std::vector<std::string> startupMountPaths() {
        std::vector<std::string> paths;
        for (const std::string& line : lines(source_->runTool({"/usr/sbin/systemsetup", "-liststartupdisks"})
                                                 .value_or(""))) {
            std::string path = trimWhitespaceAndNewlines(line);
            if (path.rfind('/', 0) != 0) continue;
            for (std::size_t at; (at = path.find("System/Library/CoreServices")) != std::string::npos;) {
                path.erase(at, std::string_view("System/Library/CoreServices").size());
            }
            paths.push_back(path);
        }
        return paths;
    }

    std::optional<std::string> blessedPath() {
        for (const std::string& line : lines(source_->runTool({kBless, "--info"}).value_or(""))) {
            const std::size_t at = line.find(kBlessedFolderPhrase);
            if (at != std::string::npos) return line.substr(at + std::string_view(kBlessedFolderPhrase).size());
        }
        return std::nullopt;
    }

    std::string volumeIdentifier(const std::string& path) {
        return text(source_->fact(facts::kVolumeIdentifier, path).dictionary(), "identifier");
    }

    std::unique_ptr<RecordedSystemSource> source_;
};

TEST_P(RecordedMacs, IsAMac) { EXPECT_EQ(source_->platform(), SystemSource::kMacOSPlatform); }

TEST_P(RecordedMacs, ProfilerReportsAreArraysOfOneReportDictionary) {
    const std::vector<std::vector<std::string>> runs{
        {kProfiler, "-xml", "SPHardwareDataType", "-detailLevel", "mini"},
        {kProfiler, "-xml", "SPDisplaysDataType", "-detailLevel", "mini"},
        {kProfiler, "-xml", "SPCameraDataType"},
        {kProfiler, "-xml", "SPMemoryDataType"},
    };
    for (const auto& argv : runs) {
        const std::optional<Value> report = toolPropertyList(argv);
        ASSERT_TRUE(report && report->array() && !report->array()->empty()) << argv[2];
        EXPECT_TRUE(report->array()->front().dictionary()) << argv[2];
    }
}

TEST_P(RecordedMacs, HardwareReportMatchesTheProcessorKind) {
    const std::optional<Value> report =
        toolPropertyList({kProfiler, "-xml", "SPHardwareDataType", "-detailLevel", "mini"});
    ASSERT_TRUE(report && report->array());
    const ArrayRef items = report->array()->front().dictionary()->get("_items").array();
    ASSERT_TRUE(items && !items->empty());
    const DictionaryRef hardware = items->front().dictionary();
    const bool appleSilicon = source_->fact(facts::kSysctl, "hw.cputype").toInt64() == kAppleSiliconCpuType;
    EXPECT_EQ(hardware->contains("chip_type"), appleSilicon);
    EXPECT_EQ(hardware->contains("l2_cache_core"), !appleSilicon);
    EXPECT_EQ(hardware->contains("l3_cache"), !appleSilicon);
    EXPECT_EQ(source_->fact(facts::kSysctl, "hw.cpufrequency").isAbsent(), appleSilicon);
    EXPECT_EQ(source_->fact(facts::kPageSize, "").toInt64(), appleSilicon ? 16384 : 4096);
    EXPECT_NE(source_->runTool({"/usr/bin/vm_stat"})
                  .value_or("")
                  .find("page size of " + std::to_string(appleSilicon ? 16384 : 4096) + " bytes"),
              std::string::npos);
}

TEST_P(RecordedMacs, EveryKernelParameterAndNativeFactIsRecorded) {
    for (const char* name : {"hw.memsize", "hw.logicalcpu", "hw.physicalcpu", "machdep.cpu.brand_string",
                             "hw.cputype", "hw.machine", "hw.model"}) {
        EXPECT_FALSE(source_->fact(facts::kSysctl, name).isAbsent()) << name;
    }
    const DictionaryRef swap = source_->fact(facts::kSysctl, "vm.swapusage").dictionary();
    ASSERT_TRUE(swap);
    for (const char* key : {"total", "available", "used", "pageSize", "encrypted"}) EXPECT_TRUE(swap->contains(key));
    const DictionaryRef boot = source_->fact(facts::kSysctl, "kern.boottime").dictionary();
    ASSERT_TRUE(boot);
    EXPECT_GT(boot->get("seconds").toInt64(), 0);
    for (const char* name : {facts::kPowerSources, facts::kAudioDevices, facts::kPrinters, facts::kInterfaces}) {
        EXPECT_TRUE(source_->fact(name, "").array()) << name;
    }
    for (const char* name : {facts::kMacConsoleUser, facts::kHostAndLocale, facts::kLocalTimeZone}) {
        EXPECT_TRUE(source_->fact(name, "").dictionary()) << name;
    }
    for (const char* match : {"IOPlatformExpertDevice", "IOHIDDevice 1 6", "IOHIDDevice 1 2", "IOBlockStorageDevice",
                              "IOEthernetController"}) {
        EXPECT_TRUE(source_->fact(facts::kRegistry, match).array()) << match;
    }
    EXPECT_TRUE(source_->fact(facts::kBirthTime, "/private/var/db/.AppleSetupDone").dictionary());
    EXPECT_EQ(source_->pathKind("/private/var/db/.AppleSetupDone"), PathKind::File);
}

TEST_P(RecordedMacs, PlatformSerialNumberIsRecorded) {
    const ArrayRef services = source_->fact(facts::kRegistry, "IOPlatformExpertDevice").array();
    ASSERT_TRUE(services && services->size() == 1);
    EXPECT_FALSE(text(services->front().dictionary()->get("properties").dictionary(), "IOPlatformSerialNumber")
                     .empty());
}

TEST_P(RecordedMacs, SystemVersionNamesTheSystem) {
    const std::optional<std::string> bytes = source_->readFile("/System/Library/CoreServices/SystemVersion.plist", 1 << 16);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->rfind("<?xml", 0), 0u);
    const std::optional<Value> version = parsePropertyList(*bytes);
    ASSERT_TRUE(version && version->dictionary());
    for (const char* key : {"ProductName", "ProductVersion", "ProductBuildVersion", "ProductCopyright",
                            "ProductUserVisibleVersion"}) {
        EXPECT_FALSE(text(version->dictionary(), key).empty()) << key;
    }
}

TEST_P(RecordedMacs, ConsoleUserHasBinaryPreferencesWithALocale) {
    const DictionaryRef console = source_->fact(facts::kMacConsoleUser, "").dictionary();
    ASSERT_TRUE(console);
    const std::string user = text(console, "user");
    if (user.empty() || user == "loginwindow") GTEST_SKIP() << "nobody is logged in at the console";
    const std::optional<std::string> bytes =
        source_->readFile("/Users/" + user + "/Library/Preferences/.GlobalPreferences.plist", 1 << 16);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->rfind("bplist00", 0), 0u);
    const std::optional<Value> preferences = parsePropertyList(*bytes);
    ASSERT_TRUE(preferences && preferences->dictionary());
    EXPECT_FALSE(text(preferences->dictionary(), "AppleLocale").empty());
    EXPECT_TRUE(source_->fact(facts::kDirectoryUser, user).dictionary());
}

TEST_P(RecordedMacs, ProtectionToolAnswersExactlyWhenItIsInstalled) {
    const bool installed = source_->pathKind(kCsrUtil) == PathKind::File;
    EXPECT_EQ(source_->runTool({kCsrUtil, "status"}).has_value(), installed);
}

TEST_P(RecordedMacs, EveryReportedDiskHasItsInfoAndNoPhysicalVolumeIsAsked) {
    const std::set<std::string> physical = physicalVolumes();
    const std::vector<DictionaryRef> entries = walkedEntries();
    ASSERT_FALSE(entries.empty());
    for (const DictionaryRef& entry : entries) {
        const std::string identifier = text(entry, "DeviceIdentifier");
        const std::optional<Value> info = toolPropertyList({kDiskUtil, "info", "-plist", identifier});
        if (physical.count(identifier)) {
            EXPECT_FALSE(info) << identifier << " is a physical volume";
            continue;
        }
        ASSERT_TRUE(info && info->dictionary()) << identifier;
        if (info->dictionary()->contains("Error")) continue;
        EXPECT_EQ(text(info->dictionary(), "DeviceIdentifier"), identifier);
        EXPECT_EQ(text(info->dictionary(), "MountPoint"), text(entry, "MountPoint")) << identifier;
    }
}

TEST_P(RecordedMacs, EveryBootableVolumeOffTheStartupListHasItsBlessAnswer) {
    const std::vector<std::string> startup = startupMountPaths();
    EXPECT_FALSE(startup.empty());
    for (const DictionaryRef& entry : walkedEntries()) {
        const std::string identifier = text(entry, "DeviceIdentifier");
        const std::optional<Value> info = toolPropertyList({kDiskUtil, "info", "-plist", identifier});
        if (!info || !info->dictionary()) continue;
        const std::string mountPoint = text(info->dictionary(), "MountPoint");
        const bool bootable = info->dictionary()->get("Bootable").toBool() ||
                              equalsIgnoringCase(text(info->dictionary(), "Content"), "Apple_Boot");
        if (!bootable || mountPoint.empty()) continue;
        if (std::find(startup.begin(), startup.end(), mountPoint) != startup.end()) continue;
        const std::optional<Value> answer = toolPropertyList({kBless, "--info", mountPoint, "--plist"});
        ASSERT_TRUE(answer && answer->dictionary()) << mountPoint;
        EXPECT_TRUE(answer->dictionary()->get("Finder Info").array()) << mountPoint;
    }
}

TEST_P(RecordedMacs, BootVolumeUnderVolumesSharesTheBlessedFolderVolume) {
    const std::optional<std::vector<std::string>> entries = source_->listFolder("/Volumes");
    ASSERT_TRUE(entries && !entries->empty());
    std::set<std::string> identifiers;
    for (const std::string& name : *entries) {
        if (name.rfind('.', 0) == 0) continue;
        EXPECT_EQ(source_->pathKind("/Volumes/" + name), PathKind::Folder) << name;
        const std::string identifier = volumeIdentifier("/Volumes/" + name);
        EXPECT_FALSE(identifier.empty()) << name;
        identifiers.insert(identifier);
    }
    // One volume per visible entry: only the boot volume may match the blessed folder.
    EXPECT_EQ(identifiers.size(),
              static_cast<std::size_t>(std::count_if(entries->begin(), entries->end(), [](const std::string& name) {
                  return name.rfind('.', 0) != 0;
              })));
    const std::optional<std::string> blessed = blessedPath();
    if (!blessed) GTEST_SKIP() << "bless names no blessed folder";
    EXPECT_TRUE(identifiers.count(volumeIdentifier(*blessed))) << *blessed;
}

TEST_P(RecordedMacs, WiFiInterfaceIsOneOfTheNetworkAdapters) {
    const DictionaryRef wifi = source_->fact(facts::kWifiInterface, "").dictionary();
    if (!wifi) GTEST_SKIP() << "no Wi-Fi interface";
    const ArrayRef adapters = source_->fact(facts::kRegistry, "IOEthernetController").array();
    ASSERT_TRUE(adapters);
    const bool found = std::any_of(adapters->begin(), adapters->end(), [&](const Value& adapter) {
        const ArrayRef bytes = adapter.dictionary()->get("properties").dictionary()->get("IOMACAddress").array();
        if (!bytes || bytes->size() < 6) return false;
        std::string address;
        for (std::size_t i = 0; i < 6; ++i) {
            char part[4];
            std::snprintf(part, sizeof part, i ? ":%02x" : "%02x", static_cast<unsigned>((*bytes)[i].toUInt64()));
            address += part;
        }
        return equalsIgnoringCase(address, text(wifi, "hardwareAddress"));
    });
    EXPECT_TRUE(found) << text(wifi, "hardwareAddress");
}

TEST_P(RecordedMacs, FirstEthernetInterfaceHasAnIPv4Address) {
    const ArrayRef interfaces = source_->fact(facts::kInterfaces, "").array();
    ASSERT_TRUE(interfaces);
    const bool found = std::any_of(interfaces->begin(), interfaces->end(), [](const Value& entry) {
        return text(entry.dictionary(), "name") == "en0" && text(entry.dictionary(), "family") == "inet";
    });
    EXPECT_TRUE(found);
}

INSTANTIATE_TEST_SUITE_P(FixtureMachines, RecordedMacs, ::testing::ValuesIn(recordedMacs()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace tov
