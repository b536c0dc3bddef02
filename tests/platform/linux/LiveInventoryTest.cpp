// Runs the built tov -p on this machine, as a user would, and holds its report against
// what the machine's own tools say; then checks that a capture replays to the same
// report and that two scans agree on everything that does not move by itself.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "model/Json.h"
#include "support/FixtureReport.h"
#include "support/TestFolder.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

using testing::runOpenedProgramInto;

// The output of a shell command line of the test (never of tov).
std::string commandOutput(const std::string& commandLine) {
    std::string output;
    if (FILE* pipe = popen(commandLine.c_str(), "r")) {
        char chunk[4096];
        while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, pipe)) output.append(chunk, count);
        pclose(pipe);
    }
    return output;
}

std::string trimmed(std::string text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.erase(0, 1);
    return text;
}

bool commandExists(const std::string& name) {
    return !trimmed(commandOutput("command -v " + name + " 2>/dev/null")).empty();
}

// The four reports of one child: two live scans, a capturing scan and its replay.
struct LiveReports {
    std::map<std::string, std::string> documents;
    int exitCode = -1;
    std::string output;
};

const LiveReports& liveReports() {
    static const LiveReports reports = [] {
        LiveReports result;
        const testing::ChildResult child = testing::runWithTovInNamespace([](int program) {
            const std::vector<std::pair<std::string, std::vector<std::string>>> runs{
                {"first", {"-p"}},
                {"second", {"-p"}},
                {"captured", {"-p", "-capture", "/tmp/capture"}},
                {"replayed", {"-p", "-replay=/tmp/capture"}},
            };
            for (const auto& [name, arguments] : runs) {
                if (runOpenedProgramInto(program, arguments, "/tmp/" + name + ".json") != 0) return 1;
            }
            for (const auto& run : runs) {
                std::printf("=====%s\n%s\n", run.first.c_str(), testing::readFile("/tmp/" + run.first + ".json").c_str());
            }
            return 0;
        });
        result.exitCode = child.exitCode;
        result.output = child.output;
        std::istringstream lines(child.output);
        std::string line;
        std::string current;
        while (std::getline(lines, line)) {
            if (line.rfind("=====", 0) == 0) {
                current = line.substr(5);
            } else if (!current.empty()) {
                result.documents[current] += line + "\n";
            }
        }
        return result;
    }();
    return reports;
}

class LiveInventory : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::privateOptAndTmpAvailable()) GTEST_SKIP() << "needs root, /opt and mount namespaces";
        ASSERT_EQ(liveReports().exitCode, 0) << liveReports().output;
    }

    static DictionaryRef inventory(const std::string& run) {
        const auto found = liveReports().documents.find(run);
        if (found == liveReports().documents.end()) return nullptr;
        const std::optional<Value> document = parseJson(found->second);
        if (!document || !document->dictionary()) return nullptr;
        return document->dictionary()->get("HWInventory").dictionary();
    }
    static DictionaryRef section(const std::string& run, const char* name) {
        const DictionaryRef hardware = inventory(run);
        return hardware ? hardware->get(name).dictionary() : nullptr;
    }
    static DictionaryRef firstRecord(const std::string& run, const char* sectionName, const char* category) {
        const DictionaryRef found = section(run, sectionName);
        if (!found) return nullptr;
        const ArrayRef records = found->get(category).array();
        return records && !records->empty() ? records->front().dictionary() : nullptr;
    }
    static std::string text(const DictionaryRef& dictionary, const char* key) {
        const Value value = dictionary ? dictionary->get(key) : Value();
        return value.string() ? *value.string() : "<absent>";
    }
};

std::uint64_t meminfoBytes(const std::string& key) {
    return std::stoull(trimmed(commandOutput("awk '/^" + key + ":/ {print $2}' /proc/meminfo"))) * 1024;
}

TEST_F(LiveInventory, ProcessorMatchesCpuinfoAndTheOnlineCount) {
    const DictionaryRef cpu = firstRecord("first", "sysctl", "cpu");
    ASSERT_TRUE(cpu);
    const std::string modelName = trimmed(commandOutput("awk -F': ' '/^model name/ {print $2; exit}' /proc/cpuinfo"));
    if (!modelName.empty()) {
        EXPECT_EQ(text(cpu, "description"), modelName);
    }
    const auto online = std::stoull(trimmed(commandOutput("getconf _NPROCESSORS_ONLN")));
    EXPECT_EQ(cpu->get("logicalCores").toUInt64(), online);
    EXPECT_LE(std::stoull(trimmed(commandOutput("nproc"))), online);
    EXPECT_GE(cpu->get("physicalCores").toUInt64(), 1u);
    EXPECT_LE(cpu->get("physicalCores").toUInt64(), online);
}

TEST_F(LiveInventory, MemoryMatchesMeminfo) {
    const DictionaryRef memory = firstRecord("first", "sysctl", "memory");
    ASSERT_TRUE(memory);
    const std::uint64_t total = memory->get("totalPhysicalRAMBytes").toUInt64();
    // Installed memory (SMBIOS) is at least what the kernel manages; without SMBIOS it is that.
    if (access("/sys/firmware/dmi/entries", F_OK) != 0) {
        EXPECT_EQ(total, meminfoBytes("MemTotal"));
    } else {
        EXPECT_GE(total, meminfoBytes("MemTotal"));
    }
    EXPECT_LE(memory->get("usedPhysicalRAMBytes").toUInt64(), meminfoBytes("MemTotal"));
    EXPECT_EQ(memory->get("totalVirtualRAMBytes").toUInt64(), meminfoBytes("SwapTotal"));
}

// lsblk's disks and partitions (and loop devices with a backing file), as
// name → { size, file system }.
std::map<std::string, std::pair<std::uint64_t, std::string>> lsblkDevices() {
    std::map<std::string, std::pair<std::uint64_t, std::string>> devices;
    std::istringstream lines(commandOutput("lsblk -b -n -l -o KNAME,TYPE,SIZE,FSTYPE 2>/dev/null"));
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string name, type, size, fileSystem;
        fields >> name >> type >> size >> fileSystem;
        if (name.rfind("zram", 0) == 0 || name.rfind("ram", 0) == 0) continue;
        if (type == "loop" && trimmed(commandOutput("cat /sys/block/" + name + "/loop/backing_file 2>/dev/null")).empty()) {
            continue;
        }
        // lsblk knows a file system from udev or by probing; the mount table knows it too.
        if (fileSystem.empty()) {
            fileSystem = trimmed(commandOutput("findmnt -n -f -o FSTYPE --source /dev/" + name + " 2>/dev/null"));
        }
        devices[name] = {std::stoull(size), fileSystem};
    }
    return devices;
}

TEST_F(LiveInventory, VolumesMatchLsblkAndTheRootMount) {
    if (!commandExists("lsblk") || !commandExists("findmnt")) GTEST_SKIP() << "needs lsblk and findmnt";
    const DictionaryRef diskutil = section("first", "diskutil");
    ASSERT_TRUE(diskutil);
    const ArrayRef disks = diskutil->get("disks").array();
    ASSERT_TRUE(disks);
    std::map<std::string, DictionaryRef> reported;
    for (const Value& disk : *disks) reported[text(disk.dictionary(), "deviceId")] = disk.dictionary();
    const auto expected = lsblkDevices();
    std::set<std::string> expectedNames, reportedNames;
    for (const auto& entry : expected) expectedNames.insert(entry.first);
    for (const auto& entry : reported) reportedNames.insert(entry.first);
    // Partitions that carry other volumes (LVM, RAID, encryption) are left out of the report.
    for (const std::string& name : expectedNames) {
        const bool held = !trimmed(commandOutput("ls /sys/class/block/" + name + "/holders 2>/dev/null")).empty();
        if (held) continue;
        ASSERT_TRUE(reportedNames.count(name)) << name;
        EXPECT_EQ(reported[name]->get("sizeBytes").toUInt64(), expected.at(name).first) << name;
        EXPECT_EQ(text(reported[name], "fileSystem"), expected.at(name).second) << name;
    }
    const std::string rootSource = trimmed(commandOutput("findmnt -n -o SOURCE /"));
    const std::string rootName = rootSource.substr(rootSource.rfind('/') + 1);
    if (reported.count(rootName)) {
        EXPECT_EQ(reported[rootName]->get("boot"), Value(true));
    }
    EXPECT_EQ(text(section("first", "operatingSystems"), "bootDevice"), rootSource);
}

TEST_F(LiveInventory, LocalAddressIsThatOfTheFirstEthernetClassInterface) {
    if (!commandExists("ip")) GTEST_SKIP() << "needs ip";
    std::map<std::string, std::string> addresses;
    std::istringstream lines(commandOutput("ip -4 -o addr show"));
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string index, name, family, address;
        fields >> index >> name >> family >> address;
        if (name.rfind("en", 0) == 0 || name.rfind("eth", 0) == 0 || name.rfind("wl", 0) == 0) {
            addresses[name] = address.substr(0, address.find('/'));
        }
    }
    const DictionaryRef events = section("first", "events");
    ASSERT_TRUE(events);
    const DictionaryRef network = events->get("Network").dictionary();
    ASSERT_TRUE(network);
    EXPECT_EQ(text(network, "localIp"), addresses.empty() ? "" : addresses.begin()->second);
}

std::string osReleaseValue(const std::string& key) {
    const std::string file = access("/etc/os-release", R_OK) == 0 ? "/etc/os-release" : "/usr/lib/os-release";
    return trimmed(commandOutput("sh -c '. " + file + " && printf %s \"$" + key + "\"'"));
}

TEST_F(LiveInventory, OperatingSystemMatchesOsReleaseAndTheHostName) {
    const DictionaryRef system = section("first", "operatingSystems");
    ASSERT_TRUE(system);
    EXPECT_EQ(text(system, "osName"), osReleaseValue("NAME"));
    EXPECT_EQ(text(system, "osVersion").rfind(osReleaseValue("VERSION_ID") + " (", 0), 0u) << text(system, "osVersion");
    EXPECT_EQ(text(system, "systemType"), trimmed(commandOutput("uname -m")));
    if (access("/etc/machine-info", F_OK) != 0) {
        EXPECT_EQ(text(system, "systemName"), trimmed(commandOutput("uname -n")));
    }
    EXPECT_EQ(text(firstRecord("first", "corefoundation", "operatingSystems"), "edition"), osReleaseValue("VERSION_ID"));
}

TEST_F(LiveInventory, ACaptureReplaysToTheSameReport) {
    const auto& documents = liveReports().documents;
    ASSERT_TRUE(documents.count("captured") && documents.count("replayed"));
    EXPECT_EQ(testing::withoutCollection(documents.at("captured")), testing::withoutCollection(documents.at("replayed")));
}

// The section with the values that move by themselves taken out of its records.
std::string steadyPart(const DictionaryRef& section, const std::vector<const char*>& movingKeys) {
    if (!section) return "<absent>";
    const DictionaryRef copy = section->deepCopy();
    for (const auto& [category, value] : *copy) {
        if (const ArrayRef records = value.array()) {
            for (const Value& record : *records) {
                if (const DictionaryRef fields = record.dictionary()) {
                    for (const char* key : movingKeys) fields->remove(key);
                }
            }
        }
    }
    return writeJson(Value(copy), JsonStyle::Indented);
}

TEST_F(LiveInventory, TwoScansAgreeOnEverythingThatDoesNotMoveByItself) {
    EXPECT_EQ(steadyPart(section("first", "sysctl"), {"usedPhysicalRAMBytes", "usedVirtualRAMBytes"}),
              steadyPart(section("second", "sysctl"), {"usedPhysicalRAMBytes", "usedVirtualRAMBytes"}));
    EXPECT_EQ(steadyPart(section("first", "diskutil"), {"freeSpaceBytes"}),
              steadyPart(section("second", "diskutil"), {"freeSpaceBytes"}));
    for (const char* name : {"operatingSystems", "corefoundation"}) {
        EXPECT_EQ(steadyPart(section("first", name), {}), steadyPart(section("second", name), {})) << name;
    }
}

}  // namespace
}  // namespace tov
