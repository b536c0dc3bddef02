#include "report/InventorySummary.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "model/Json.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitNetwork.h"

namespace tov {
namespace {

constexpr const char* kHeading = "Category";

Value documentOf(const std::string& json) {
    const std::optional<Value> parsed = parseJson(json);
    EXPECT_TRUE(parsed) << json;
    return parsed.value_or(Value());
}

// The table's rows, without the heading and the rule, each with its blanks squeezed to
// one, so that the rules can be checked apart from the column widths.
std::vector<std::string> rowsOf(const std::string& table) {
    std::vector<std::string> rows;
    std::istringstream lines(table);
    std::string line;
    for (int skipped = 0; skipped < 2 && std::getline(lines, line); ++skipped) {
    }
    while (std::getline(lines, line)) {
        std::string squeezed;
        for (const char c : line) {
            if (c != ' ' || squeezed.empty() || squeezed.back() != ' ') squeezed += c;
        }
        rows.push_back(squeezed);
    }
    return rows;
}

std::vector<std::string> rowsOfJson(const std::string& json) {
    return rowsOf(InventorySummary::textOf(documentOf(json)));
}

TEST(InventorySummary, EmptyInventoryGivesTheHeadingAlone) {
    const std::string table = InventorySummary::textOf(documentOf(R"({"HWInventory": {}})"));
    EXPECT_EQ(table, "Category  Name  Details\n=======================\n");
    EXPECT_EQ(InventorySummary::textOf(Value()), table);
    EXPECT_EQ(InventorySummary::textOf(Value("not an inventory")), table);
}

TEST(InventorySummary, AcceptsTheDocumentOrTheInventoryItself) {
    const std::string inventory = R"({"iokit": {"keyboards": [{"name": "USB Keyboard"}]}})";
    EXPECT_EQ(rowsOfJson(inventory), std::vector<std::string>{"keyboard USB Keyboard"});
    EXPECT_EQ(rowsOfJson(R"({"HWInventory": )" + inventory + "}"), std::vector<std::string>{"keyboard USB Keyboard"});
}

TEST(InventorySummary, HardwareLinesGiveTheirIdentifyingFacts) {
    const std::vector<std::string> rows = rowsOfJson(R"({"iokit": {
        "serialNumbers": [{"serialNumber": "C07XN2A3JYVW"}],
        "displays": [{"adapterDescription": "LG UltraFine", "manufacturer": "LG", "refreshRate": 60, "width": 5120, "height": 2880, "depth": 30},
                     {"adapterDescription": "Iris Xe", "manufacturer": "Intel", "refreshRate": 0, "width": 0, "height": 0, "depth": 0}],
        "pointingDevices": [{"description": "Magic Mouse 2", "manufacturer": "Apple Inc."}],
        "batteries": [{"name": "Primary", "serialNumber": "0812", "capacity": 62, "estimatedChargeRemaining": 200}],
        "disks": [{"name": "Ultra Flair", "serialNumber": "4C53", "removable": true}],
        "networkAdapters": [{"manufacturer": "Intel", "adapterName": "AX211 - iwlwifi", "macAddress": "F4:C8:8A:5B:20:7D", "networkSpeed": 866000000, "ssid": "Home"}],
        "camera": [{"name": "FaceTime HD Camera", "model": "FaceTime HD Camera", "uuid": "3F6A"}],
        "memory": [{"name": "BANK 0", "type": "LPDDR5", "size": "4 GB", "speed": "6400 MHz"},
                   {"name": "BANK 1", "type": "Empty", "size": "Empty", "speed": "Empty"}]}})");
    EXPECT_EQ(rows, (std::vector<std::string>{
                        "serial C07XN2A3JYVW",
                        "display LG UltraFine 5120x2880 @ 60 Hz, LG",
                        "display Iris Xe Intel",
                        "pointing Magic Mouse 2 Apple Inc.",
                        "battery Primary 62%, serial 0812",
                        "disk Ultra Flair serial 4C53, removable",
                        "network AX211 - iwlwifi F4:C8:8A:5B:20:7D, 866 Mbit/s, SSID Home",
                        "camera FaceTime HD Camera",
                        "memory-module BANK 0 4 GB, LPDDR5, 6400 MHz",
                        "memory-module BANK 1 Empty",
                    }));
}

TEST(InventorySummary, SystemLinesGiveTheirIdentifyingFacts) {
    const std::vector<std::string> rows = rowsOfJson(R"json({
        "appkit": {"printers": [{"name": "Office", "driver": "HP LaserJet"}]},
        "operatingSystems": {"osName": "Ubuntu", "systemManufacturer": "HP", "osVersion": "22.04 (6.5.0)",
                             "systemType": "x86_64", "systemName": "lena-pc", "systemModel": "EliteBook 840"},
        "coreaudio": {"sounds": [{"name": "HDA Intel PCH", "manufacturer": "Intel"}]},
        "sysctl": {"timezone": [{"userTimezone": "UTC-01:00 Central European Standard Time"}],
                   "memory": [{"totalPhysicalRAMBytes": 34359738368, "totalVirtualRAMBytes": 2147479552}],
                   "cpu": [{"description": "i7-1370P", "physicalCores": 14, "logicalCores": 20, "busSpeed": 1900}]},
        "corefoundation": {"operatingSystems": [{"installDate": "2023-11-20T14:41:52Z", "lastBootTime": "2026-01-15T06:30:45Z", "build": "6.5.0", "edition": "22.04"}]},
        "events": {"Network": {"localIp": "192.168.178.34", "publicIp": "203.0.113.9"}}})json");
    EXPECT_EQ(rows, (std::vector<std::string>{
                        "printer Office HP LaserJet",
                        "system EliteBook 840 HP, x86_64",
                        "os Ubuntu 22.04 (6.5.0), host lena-pc",
                        "sound HDA Intel PCH Intel",
                        "timezone UTC-01:00 Central European Standard Time",
                        "memory 32 GiB virtual 2 GiB",
                        "processor i7-1370P 14 cores, 20 threads, 1900 MHz",
                        "installation 6.5.0 installed 2023-11-20T14:41:52Z, booted 2026-01-15T06:30:45Z",
                        "address 192.168.178.34 public 203.0.113.9",
                    }));
}

TEST(InventorySummary, VolumesShowSizeFileSystemAndTheMountPathOfTheirRecord) {
    const auto volume = QVDiskUtilDisk::diskUtilDisk();
    volume->setIdentifier("disk2s2");
    volume->setName("Old System");
    volume->setSize(1000000000000);
    volume->setFileSystem("Journaled HFS+");
    volume->setMountPoint("/Volumes/Old System");
    const auto whole = QVDiskUtilDisk::diskUtilDisk();
    whole->setIdentifier("disk2");
    whole->setSize(1000204886016);
    Value disks = Value::newArray();
    disks.array()->push_back(Value(whole));
    disks.array()->push_back(Value(volume));
    Value section = Value::newDictionary();
    section.dictionary()->set("disks", disks);
    Value inventory = Value::newDictionary();
    inventory.dictionary()->set("diskutil", section);
    EXPECT_EQ(rowsOf(InventorySummary::textOf(inventory)),
              (std::vector<std::string>{"volume disk2 931.5 GiB",
                                        "volume disk2s2 (Old System) 931.3 GiB, Journaled HFS+, /Volumes/Old System"}));
}

TEST(InventorySummary, RecordsAndTheirDocumentFormGiveTheSameLine) {
    const auto adapter = QVIOKitNetwork::ioKitNetwork();
    adapter->setAdapter("82574L");
    adapter->setMacAddress("00:0C:29:5E:A1:7B");
    adapter->setSpeed(1000000000);
    Value adapters = Value::newArray();
    adapters.array()->push_back(Value(adapter));
    Value section = Value::newDictionary();
    section.dictionary()->set("networkAdapters", adapters);
    Value inventory = Value::newDictionary();
    inventory.dictionary()->set("iokit", section);
    const std::string fromRecords = InventorySummary::textOf(inventory);
    EXPECT_EQ(rowsOf(fromRecords), std::vector<std::string>{"network 82574L 00:0C:29:5E:A1:7B, 1 Gbit/s"});
    EXPECT_EQ(InventorySummary::textOf(documentOf(writeJson(inventory, JsonStyle::Indented))), fromRecords);
}

TEST(InventorySummary, MissingKeysLeaveTheirFactsOut) {
    EXPECT_EQ(rowsOfJson(R"({"iokit": {"displays": [{"adapterDescription": "VGA"}],
                                       "batteries": [{"name": "BAT0"}],
                                       "networkAdapters": [{"adapterName": "eth"}]},
                            "sysctl": {"cpu": [{"description": "Apple M1", "physicalCores": 8}]}})"),
              (std::vector<std::string>{"display VGA", "battery BAT0", "network eth", "processor Apple M1 8 cores"}));
}

TEST(InventorySummary, RecordsThatTellNothingGiveNoLine) {
    EXPECT_EQ(rowsOfJson(R"({"operatingSystems": {},
                            "iokit": {"keyboards": [{}], "serialNumbers": [{"serialNumber": ""}]},
                            "events": {"Network": {"localIp": "", "publicIp": ""}}})"),
              std::vector<std::string>{});
}

TEST(InventorySummary, OddValuesReadAsEmptyOrZero) {
    EXPECT_EQ(rowsOfJson(R"({"iokit": {
        "displays": [{"adapterDescription": 42, "width": "wide", "height": 900, "refreshRate": -60}],
        "batteries": [{"name": ["x"], "capacity": "full", "serialNumber": 7}],
        "networkAdapters": [{"adapterName": "eth", "networkSpeed": -1, "macAddress": null}],
        "disks": "not an array",
        "keyboards": [17, "text", null, {"name": "kept"}]},
       "sysctl": {"memory": [{"totalPhysicalRAMBytes": -5, "totalVirtualRAMBytes": true}],
                  "cpu": [{"description": "cpu", "physicalCores": 1.5e30, "busSpeed": false}]},
       "collection": "2026-01-15T12:00:00Z"})"),
              (std::vector<std::string>{"display 42", "battery serial 7", "network eth", "keyboard kept",
                                        "processor cpu 18446744073709551615 cores"}));
}

TEST(InventorySummary, CategoriesWithoutARuleShowUnderTheirKey) {
    EXPECT_EQ(rowsOfJson(R"({"iokit": {"scanners": [{"name": "Flatbed"}, {"description": "Sheet feeder"}, {"x": 1}]}})"),
              (std::vector<std::string>{"scanners Flatbed", "scanners Sheet feeder"}));
}

TEST(InventorySummary, HostileTextStaysOnItsLineAndLongNamesAreCut) {
    const std::string longName(200, 'n');
    const std::string table = InventorySummary::textOf(documentOf(
        R"({"iokit": {"keyboards": [{"name": "evil\n\u001b[2Jname\u202e"}, {"name": ")" + longName + R"("}]}})"));
    const std::vector<std::string> rows = rowsOf(table);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0], "keyboard evil[2Jname");
    EXPECT_EQ(rows[1], "keyboard " + std::string(InventorySummary::kNameWidth - 1, 'n') + "…");
    EXPECT_EQ(table.rfind(kHeading, 0), 0u);
}

}  // namespace
}  // namespace tov
