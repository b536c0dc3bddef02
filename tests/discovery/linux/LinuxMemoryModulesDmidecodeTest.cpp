// Our decoding of the fixture machines' memory devices compared with dmidecode's, an
// independent reader of the same bytes: the type-17 entries are put into an SMBIOS dump
// file, which dmidecode reads with --from-dump.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "common/TextUtils.h"
#include "discovery/RecordedSystemSource.h"
#include "discovery/formats/SmbiosMemoryDevice.h"
#include "discovery/linux/LinuxSmbiosEntries.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

constexpr const char* kDmidecode = "/usr/sbin/dmidecode";
constexpr std::size_t kEntryPointLength = 0x18;
constexpr std::size_t kTableOffset = 0x20;

void putLittleEndian(std::string& bytes, std::size_t offset, std::uint64_t value, int width) {
    for (int index = 0; index < width; ++index) bytes[offset + index] = static_cast<char>((value >> (8 * index)) & 0xFF);
}

// A 64-bit ("_SM3_", SMBIOS 3.3) entry point with the table right after it, ended by an
// end-of-table structure (type 127), as dmidecode --dump-bin writes it.
std::string smbiosDump(const std::vector<std::string>& structures) {
    std::string table;
    for (const std::string& structure : structures) table += structure;
    table += std::string("\x7f\x04\xff\xfe\0\0", 6);
    std::string entryPoint(kEntryPointLength, '\0');
    entryPoint.replace(0, 5, "_SM3_");
    entryPoint[0x06] = static_cast<char>(kEntryPointLength);
    entryPoint[0x07] = 3;
    entryPoint[0x08] = 3;
    entryPoint[0x0A] = 1;
    putLittleEndian(entryPoint, 0x0C, table.size(), 4);
    putLittleEndian(entryPoint, 0x10, kTableOffset, 8);
    std::uint8_t sum = 0;
    for (char byte : entryPoint) sum = static_cast<std::uint8_t>(sum + static_cast<std::uint8_t>(byte));
    entryPoint[0x05] = static_cast<char>(-sum);
    entryPoint.resize(kTableOffset, '\0');
    return entryPoint + table;
}

using DmidecodeDevice = std::map<std::string, std::string>;

// The "Key: value" lines of each memory device dmidecode printed, in table order.
std::vector<DmidecodeDevice> dmidecodeDevices(const std::string& output) {
    std::vector<DmidecodeDevice> devices;
    std::istringstream lines(output);
    std::string line;
    bool inDevice = false;
    while (std::getline(lines, line)) {
        if (line == "Memory Device") {
            devices.emplace_back();
            inDevice = true;
        } else if (line.empty()) {
            inDevice = false;
        } else if (inDevice && line[0] == '\t' && line.find(": ") != std::string::npos) {
            const std::size_t colon = line.find(": ");
            devices.back()[line.substr(1, colon - 1)] = trimWhitespaceAndNewlines(line.substr(colon + 2));
        }
    }
    return devices;
}

// "16 GB", "512 MB", "No Module Installed" as bytes; nothing for "Unknown".
std::optional<std::uint64_t> dmidecodeBytes(const std::string& size) {
    if (size == "No Module Installed") return 0;
    std::istringstream text(size);
    std::uint64_t amount = 0;
    std::string unit;
    if (!(text >> amount >> unit)) return std::nullopt;
    const std::map<std::string, std::uint64_t> units{{"kB", 1ull << 10}, {"MB", 1ull << 20}, {"GB", 1ull << 30}, {"TB", 1ull << 40}};
    return units.count(unit) ? std::optional<std::uint64_t>(amount * units.at(unit)) : std::nullopt;
}

// "2933 MT/s" or "2933 MHz" as 2933; "Unknown" as 0.
std::uint32_t dmidecodeSpeed(const std::string& speed) {
    return static_cast<std::uint32_t>(leadingIntegerValue(speed));
}

// dmidecode writes an absent string as "Not Specified".
std::string dmidecodeText(const std::string& ours) { return ours.empty() ? "Not Specified" : ours; }

class LinuxMemoryModulesDmidecode : public ::testing::TestWithParam<const char*> {};

TEST_P(LinuxMemoryModulesDmidecode, OurDecodingAgreesWithDmidecode) {
    if (access(kDmidecode, X_OK) != 0) GTEST_SKIP() << "needs " << kDmidecode;
    const std::unique_ptr<RecordedSystemSource> machine =
        RecordedSystemSource::open(std::string(TOV_TEST_FIXTURES) + "/linux/" + GetParam());
    ASSERT_TRUE(machine);
    const std::vector<std::string> entries = smbiosEntriesOfType(*machine, SmbiosMemoryDevice::kType);
    ASSERT_FALSE(entries.empty());
    testing::TestFolder folder;
    const std::string dump = folder.write("smbios.bin", smbiosDump(entries));
    const testing::ChildResult run = testing::runInChild(
        [&dump] { return testing::executeProgram(kDmidecode, {"--from-dump", dump, "-t", "17"}); });
    ASSERT_EQ(run.exitCode, 0) << run.output;
    const std::vector<DmidecodeDevice> theirs = dmidecodeDevices(run.output);
    ASSERT_EQ(theirs.size(), entries.size()) << run.output;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const std::optional<SmbiosMemoryDevice> ours = decodeSmbiosMemoryDevice(entries[index]);
        ASSERT_TRUE(ours) << index;
        const DmidecodeDevice& device = theirs[index];
        SCOPED_TRACE(device.at("Locator"));
        EXPECT_EQ(ours->sizeBytes, dmidecodeBytes(device.at("Size")));
        EXPECT_EQ(dmidecodeText(ours->locator), device.at("Locator"));
        EXPECT_EQ(dmidecodeText(ours->bankLocator), device.at("Bank Locator"));
        EXPECT_EQ(ours->memoryType, device.at("Type"));
        // dmidecode tells no more of an empty slot.
        if (!ours->installed) continue;
        EXPECT_EQ(ours->speed, dmidecodeSpeed(device.at("Speed")));
        EXPECT_EQ(ours->configuredSpeed, dmidecodeSpeed(device.at("Configured Memory Speed")));
        EXPECT_EQ(dmidecodeText(ours->manufacturer), device.at("Manufacturer"));
        EXPECT_EQ(dmidecodeText(ours->serialNumber), device.at("Serial Number"));
        EXPECT_EQ(dmidecodeText(ours->partNumber), device.at("Part Number"));
    }
}

INSTANTIATE_TEST_SUITE_P(FixtureMachines, LinuxMemoryModulesDmidecode,
                         ::testing::Values("laptop", "desktop-lvm", "server-raid", "macbook-air"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             std::string name = info.param;
                             std::erase(name, '-');
                             return name;
                         });

}  // namespace
}  // namespace tov
