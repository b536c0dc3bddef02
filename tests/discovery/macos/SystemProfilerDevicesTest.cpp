#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "discovery/macos/SystemProfilerDevices.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitMemory.h"
#include "support/HandBuiltArchive.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

// --- property lists as the profiler prints them ---

std::string xmlList(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           body + "\n</plist>\n";
}

// One "<key>...</key><string>...</string>" pair.
std::string text(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>";
}

std::string dict(const std::vector<std::string>& entries) {
    std::string body = "<dict>";
    for (const std::string& entry : entries) body += entry;
    return body + "</dict>";
}

std::string array(const std::vector<std::string>& elements) {
    std::string body = "<array>";
    for (const std::string& element : elements) body += element;
    return body + "</array>";
}

std::string under(const std::string& key, const std::string& value) { return "<key>" + key + "</key>" + value; }

// The report list of one data type whose "_items" are items.
std::string report(const std::string& dataType, const std::vector<std::string>& items) {
    return xmlList(array({dict({text("_dataType", dataType), under("_items", array(items)),
                                under("_timeStamp", "<date>2024-03-01T10:00:00Z</date>")})}));
}

std::string binaryForm(const std::string& xml) {
    plist_t node = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
    EXPECT_NE(node, nullptr);
    const std::string bytes = node ? testing::binaryPlist(node) : std::string();
    plist_free(node);
    return bytes;
}

const std::vector<std::string> kDisplaysArgv = {"/usr/sbin/system_profiler", "-xml", "SPDisplaysDataType",
                                                "-detailLevel", "mini"};
const std::vector<std::string> kCameraArgv = {"/usr/sbin/system_profiler", "-xml", "SPCameraDataType"};
const std::vector<std::string> kMemoryArgv = {"/usr/sbin/system_profiler", "-xml", "SPMemoryDataType"};

// --- records as rows ---

// description, manufacturer, frequency, width, height, depth
using DisplayRow = std::tuple<std::string, std::string, std::int64_t, std::int64_t, std::int64_t, std::int64_t>;
using DisplayRows = std::vector<DisplayRow>;

DisplayRows displayRows(const ArrayRef& records) {
    DisplayRows rows;
    if (!records) return rows;
    for (const Value& element : *records) {
        const auto display = std::dynamic_pointer_cast<QVIOKitDisplay>(element.record());
        if (!display) {
            ADD_FAILURE() << "not a display record";
            continue;
        }
        rows.emplace_back(display->getDescription().value_or("<absent>"), display->manufacturer().value_or("<absent>"),
                          display->frequency(), display->width(), display->height(), display->depth());
    }
    return rows;
}

DisplayRows displaysOf(const std::string& output) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.tool(kDisplaysArgv, output);
    const ArrayRef records = displaysFromSystemProfiler(source);
    EXPECT_TRUE(records);
    return displayRows(records);
}

DisplayRows displaysOfItems(const std::vector<std::string>& items) {
    return displaysOf(report("SPDisplaysDataType", items));
}

// The one display attached to a plain adapter, from its entries.
DisplayRow onlyDisplay(const std::vector<std::string>& entries) {
    const DisplayRows rows =
        displaysOfItems({dict({text("sppci_model", "GPU"), under("spdisplays_ndrvs", array({dict(entries)}))})});
    EXPECT_EQ(rows.size(), 2U);
    return rows.size() == 2 ? rows[1] : DisplayRow{};
}

// name, model, uuid
using CameraRow = std::tuple<std::string, std::string, std::string>;

std::vector<CameraRow> camerasOf(const std::string& output) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.tool(kCameraArgv, output);
    const ArrayRef records = camerasFromSystemProfiler(source);
    std::vector<CameraRow> rows;
    if (!records) {
        ADD_FAILURE() << "no array";
        return rows;
    }
    for (const Value& element : *records) {
        const auto camera = std::dynamic_pointer_cast<QVIOKitCamera>(element.record());
        if (!camera) {
            ADD_FAILURE() << "not a camera record";
            continue;
        }
        rows.emplace_back(camera->name().value_or("<absent>"), camera->model().value_or("<absent>"),
                          camera->uuid().value_or("<absent>"));
    }
    return rows;
}

// name, type, size, serial number, status, manufacturer, part number, speed
using MemoryRow =
    std::tuple<std::string, std::string, std::string, std::string, std::string, std::string, std::string, std::string>;

std::vector<MemoryRow> memoryOf(const std::string& output) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.tool(kMemoryArgv, output);
    const ArrayRef records = memoryModulesFromSystemProfiler(source);
    std::vector<MemoryRow> rows;
    if (!records) {
        ADD_FAILURE() << "no array";
        return rows;
    }
    for (const Value& element : *records) {
        const auto memory = std::dynamic_pointer_cast<QVIOKitMemory>(element.record());
        if (!memory) {
            ADD_FAILURE() << "not a memory record";
            continue;
        }
        const auto field = [](const std::optional<std::string>& value) { return value.value_or("<absent>"); };
        rows.emplace_back(field(memory->name()), field(memory->type()), field(memory->size()),
                          field(memory->serialNumber()), field(memory->status()), field(memory->manufacturer()),
                          field(memory->partNumber()), field(memory->speed()));
    }
    return rows;
}

// The memory report: the slots are the "_items" of its first entry.
std::string memoryReport(const std::vector<std::string>& slots) {
    return report("SPMemoryDataType", {dict({under("_items", array(slots)), text("_name", "global_name"),
                                             text("global_ecc_state", "ecc_disabled")})});
}

std::string slot(const std::string& name, const std::string& serial) {
    return dict({text("_name", name), text("dimm_manufacturer", "0x80AD"), text("dimm_part_number", "HMT451S6BFR8A-PB"),
                 text("dimm_serial_number", serial), text("dimm_size", "4 GB"), text("dimm_speed", "1600 MHz"),
                 text("dimm_status", "ok"), text("dimm_type", "DDR3")});
}

// --- machines modelled on real profiler reports ---

// An Intel MacBook Pro: the built-in panel on the integrated chip, an external DELL on
// the discrete one.
std::string intelMacBookProWithDell() {
    const std::string panel =
        dict({text("_name", "Color LCD"), text("_spdisplays_display-product-id", "a029"),
              text("_spdisplays_display-vendor-id", "610"), text("_spdisplays_pixels", "2880 x 1800"),
              text("_spdisplays_resolution", "1440 x 900 @ 60.00Hz"), text("spdisplays_builtin", "spdisplays_yes"),
              text("spdisplays_depth", "CGSThirtytwoBitColor"), text("spdisplays_resolution", "1440 x 900 @ 60.00Hz")});
    const std::string dell =
        dict({text("_name", "DELL U2415"), text("_spdisplays_display-product-id", "a0c4"),
              text("_spdisplays_display-vendor-id", "10ac"), text("_spdisplays_pixels", "1920 x 1200"),
              text("_spdisplays_resolution", "1920 x 1200 @ 59.95Hz"), text("spdisplays_depth", "CGSThirtytwoBitColor"),
              text("spdisplays_resolution", "1920 x 1200 @ 59.95Hz")});
    const std::string intel = dict({text("_name", "kHW_IntelIrisProItem"), text("spdisplays_vendor", "Intel (0x8086)"),
                                    text("spdisplays_vram", "1536 MB"), under("spdisplays_ndrvs", array({panel})),
                                    text("sppci_bus", "spdisplays_builtin"), text("sppci_model", "Intel Iris Pro")});
    const std::string nvidia =
        dict({text("_name", "kHW_NVidiaGeForceGT750MItem"), text("spdisplays_vendor", "NVIDIA (0x10de)"),
              under("spdisplays_ndrvs", array({dell})), text("sppci_bus", "spdisplays_pcie_device"),
              text("sppci_model", "NVIDIA GeForce GT 750M")});
    return report("SPDisplaysDataType", {intel, nvidia});
}

// An Apple Silicon MacBook Pro: one adapter of Apple's own, its built-in panel.
std::string appleSiliconMacBookPro() {
    const std::string panel =
        dict({text("_name", "Color LCD"), text("_spdisplays_display-vendor-id", "610"),
              text("_spdisplays_pixels", "3456 x 2234"), text("_spdisplays_resolution", "1728 x 1117 @ 120.00Hz"),
              text("spdisplays_connection_type", "spdisplays_internal")});
    return report("SPDisplaysDataType", {dict({text("_name", "Apple M1 Pro"), under("spdisplays_ndrvs", array({panel})),
                                               text("spdisplays_vendor", "sppci_vendor_Apple"),
                                               text("sppci_cores", "16"), text("sppci_model", "Apple M1 Pro")})});
}

// ================================================================== displays

TEST(SystemProfilerDisplays, AnIntelMacBookProReportsBothAdaptersAndTheirDisplaysInOrder) {
    EXPECT_EQ(displaysOf(intelMacBookProWithDell()),
              (DisplayRows{{"Intel Iris Pro", "Intel (0x8086)", 0, 0, 0, 0},
                           {"Color LCD", "Apple", 60, 1440, 900, 24},
                           {"NVIDIA GeForce GT 750M", "NVIDIA (0x10de)", 0, 0, 0, 0},
                           {"DELL U2415", "DELL", 59, 1920, 1200, 24}}));
}

TEST(SystemProfilerDisplays, AnAppleSiliconMacReportsItsChipAndItsPanelAtSixtyHertz) {
    EXPECT_EQ(displaysOf(appleSiliconMacBookPro()), (DisplayRows{{"Apple M1 Pro", "sppci_vendor_Apple", 0, 0, 0, 0},
                                                                 {"Color LCD", "Apple", 60, 1728, 1117, 24}}));
}

TEST(SystemProfilerDisplays, TheBinaryFormOfTheReportGivesTheSameRecords) {
    EXPECT_EQ(displaysOf(binaryForm(intelMacBookProWithDell())), displaysOf(intelMacBookProWithDell()));
}

TEST(SystemProfilerDisplays, AnAdapterWithoutModelOrNameIsTheGenericGraphicsAdapter) {
    EXPECT_EQ(displaysOfItems({dict({text("sppci_model", ""), text("spdisplays_vendor", "Intel (0x8086)")})}),
              (DisplayRows{{"Generic Graphics Adapter", "Intel (0x8086)", 0, 0, 0, 0}}));
    EXPECT_EQ(displaysOfItems({dict({text("_name", "")})}),
              (DisplayRows{{"Generic Graphics Adapter", "", 0, 0, 0, 0}}));
}

TEST(SystemProfilerDisplays, AnAdapterWithoutModelIsNamedByItsItemName) {
    EXPECT_EQ(displaysOfItems({dict({text("_name", "kHW_IntelHD3000Item"), text("spdisplays_vendor", "")})}),
              (DisplayRows{{"kHW_IntelHD3000Item", "", 0, 0, 0, 0}}));
}

TEST(SystemProfilerDisplays, AnAdapterWithoutVendorTextTakesTheVendorId) {
    EXPECT_EQ(displaysOfItems({dict({text("sppci_model", "Radeon"), text("spdisplays_vendor", ""),
                                     text("spdisplays_vendor-id", "0x1002")})}),
              (DisplayRows{{"Radeon", "0x1002", 0, 0, 0, 0}}));
    EXPECT_EQ(displaysOfItems({dict({text("sppci_model", "Radeon"), text("spdisplays_vendor-id", "0x1002")})}),
              (DisplayRows{{"Radeon", "0x1002", 0, 0, 0, 0}}));
}

TEST(SystemProfilerDisplays, APlaceholderAdapterOfVMwareIsNamedForVMware) {
    EXPECT_EQ(displaysOfItems({dict({text("_name", "Display"), text("spdisplays_vendor", "0x15ad"),
                                     text("sppci_model", "spdisplays_display")})}),
              (DisplayRows{{"VMware Graphics Adapter", "VMWare Graphics Adapter Vendor(0x15ad)", 0, 0, 0, 0}}));
}

TEST(SystemProfilerDisplays, APlaceholderAdapterOfVirtualBoxIsNamedForVirtualBox) {
    EXPECT_EQ(
        displaysOfItems({dict({text("spdisplays_vendor-id", "0x80ee"), text("sppci_model", "spdisplays_display")})}),
        (DisplayRows{{"VirtualBox Graphics Adapter", "VirtualBox Graphics Adapter Vendor(0x80ee)", 0, 0, 0, 0}}));
}

TEST(SystemProfilerDisplays, APlaceholderAdapterOfParallelsKeepsThePlaceholderAndItsVendor) {
    EXPECT_EQ(displaysOfItems({dict({text("spdisplays_vendor", "0x1ab8"), text("sppci_model", "spdisplays_display")})}),
              (DisplayRows{{"spdisplays_display", "0x1ab8", 0, 0, 0, 0}}));
}

TEST(SystemProfilerDisplays, AVirtualMachineVendorOfARealAdapterChangesNothing) {
    EXPECT_EQ(displaysOfItems({dict({text("spdisplays_vendor", "0x15ad"), text("sppci_model", "SVGA3D")})}),
              (DisplayRows{{"SVGA3D", "0x15ad", 0, 0, 0, 0}}));
}

TEST(SystemProfilerDisplays, ADellDisplayReportsItsModeAndDepth) {
    EXPECT_EQ(
        onlyDisplay({text("_name", "DELL P2419H"), text("_spdisplays_resolution", "1920 x 1080 @ 75.00Hz"),
                     text("_spdisplays_display-vendor-id", "10AC"), text("spdisplays_depth", "CGSThirtytwoBitColor")}),
        (DisplayRow{"DELL P2419H", "DELL", 75, 1920, 1080, 24}));
}

TEST(SystemProfilerDisplays, TheSameDisplayFromAppleIsReportedAtSixtyHertz) {
    EXPECT_EQ(
        onlyDisplay({text("_name", "DELL P2419H"), text("_spdisplays_resolution", "1920 x 1080 @ 75.00Hz"),
                     text("_spdisplays_display-vendor-id", "610"), text("spdisplays_depth", "CGSThirtytwoBitColor")}),
        (DisplayRow{"DELL P2419H", "Apple", 60, 1920, 1080, 24}));
}

TEST(SystemProfilerDisplays, ADisplayWithoutVendorIdCountsAsApple) {
    EXPECT_EQ(onlyDisplay({text("_name", "Panel"), text("spdisplays_resolution", "1280 x 800 @ 75.00Hz")}),
              (DisplayRow{"Panel", "Apple", 60, 1280, 800, 24}));
}

TEST(SystemProfilerDisplays, AnotherVendorNamesTheDisplayWithItsVendorId) {
    EXPECT_EQ(onlyDisplay({text("_name", "LG HDR 4K"), text("spdisplays_display-vendor-id", "1e6d"),
                           text("spdisplays_resolution", "3840 x 2160 @ 30.00Hz"),
                           text("spdisplays_depth", "CGSThirtytwoBitColorARGB2101010")}),
              (DisplayRow{"LG HDR 4K", "LG HDR 4K(1e6d)", 30, 3840, 2160, 0}));
}

TEST(SystemProfilerDisplays, AnEmptyVendorIdIsNoVendorIdOfApple) {
    EXPECT_EQ(onlyDisplay({text("_name", "Panel"), text("_spdisplays_display-vendor-id", ""),
                           text("spdisplays_display-vendor-id", "")}),
              (DisplayRow{"Panel", "Panel()", 0, 0, 0, 24}));
}

TEST(SystemProfilerDisplays, ADisplayWithoutNameIsTheGenericDisplayAndAnEmptyNameStaysEmpty) {
    EXPECT_EQ(onlyDisplay({text("_spdisplays_display-vendor-id", "1e6d")}),
              (DisplayRow{"Generic Display", "Generic Display(1e6d)", 0, 0, 0, 24}));
    EXPECT_EQ(onlyDisplay({text("_name", ""), text("_spdisplays_display-vendor-id", "1e6d")}),
              (DisplayRow{"", "(1e6d)", 0, 0, 0, 24}));
}

TEST(SystemProfilerDisplays, TheDepthIsTwentyFourOnlyForThirtyTwoBitColourInAnyCaseOrWhenUnstated) {
    EXPECT_EQ(std::get<5>(onlyDisplay({text("spdisplays_depth", "cgsthirtytwobitcolor")})), 24);
    EXPECT_EQ(std::get<5>(onlyDisplay({})), 24);
    EXPECT_EQ(std::get<5>(onlyDisplay({text("spdisplays_depth", "CGSSixteenBitColor")})), 0);
    EXPECT_EQ(std::get<5>(onlyDisplay({text("spdisplays_depth", "")})), 0);
}

TEST(SystemProfilerDisplays, AResolutionWithoutAnXGivesNoSize) {
    EXPECT_EQ(onlyDisplay({text("_name", "TV"), text("_spdisplays_display-vendor-id", "4c2d"),
                           text("_spdisplays_resolution", "1080p @ 60.00Hz")}),
              (DisplayRow{"TV", "TV(4c2d)", 60, 0, 0, 24}));
    EXPECT_EQ(onlyDisplay({text("_name", "TV"), text("_spdisplays_display-vendor-id", "4c2d"),
                           text("_spdisplays_resolution", "spdisplays_4k")}),
              (DisplayRow{"TV", "TV(4c2d)", 0, 0, 0, 24}));
}

TEST(SystemProfilerDisplays, AResolutionOfMoreThanTwoPiecesGivesNoSize) {
    const DisplayRow row = onlyDisplay({text("_spdisplays_resolution", "1920 x 1080 x 2 @ 60.00Hz")});
    EXPECT_EQ(std::get<3>(row), 0);
    EXPECT_EQ(std::get<4>(row), 0);
}

TEST(SystemProfilerDisplays, LeadingBlanksAreSkippedAndTheRefreshRateIsTruncated) {
    EXPECT_EQ(onlyDisplay({text("_name", "X"), text("_spdisplays_display-vendor-id", "abcd"),
                           text("_spdisplays_resolution", "  2560x  1600\t@\n 59.94Hz ")}),
              (DisplayRow{"X", "X(abcd)", 59, 2560, 1600, 24}));
}

TEST(SystemProfilerDisplays, WithoutAnAtTheRefreshRateIsZero) {
    EXPECT_EQ(onlyDisplay({text("_name", "X"), text("_spdisplays_display-vendor-id", "abcd"),
                           text("_spdisplays_resolution", "1680 x 1050")}),
              (DisplayRow{"X", "X(abcd)", 0, 1680, 1050, 24}));
}

TEST(SystemProfilerDisplays, ARefreshTextThatIsNoNumberGivesZero) {
    EXPECT_EQ(std::get<2>(onlyDisplay(
                  {text("_spdisplays_display-vendor-id", "abcd"), text("_spdisplays_resolution", "1680 x 1050 @ Hz")})),
              0);
    EXPECT_EQ(std::get<2>(onlyDisplay({text("_spdisplays_display-vendor-id", "abcd"),
                                       text("_spdisplays_resolution", "1680 x 1050 @ 0x3c")})),
              0);
}

TEST(SystemProfilerDisplays, HugeNumbersAreHeldAtTheLimitsOfTheRecord) {
    const DisplayRow row = onlyDisplay({text("_spdisplays_display-vendor-id", "abcd"),
                                        text("_spdisplays_resolution", "99999999999999999999999 x 1 @ 1e300")});
    EXPECT_EQ(std::get<2>(row), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(std::get<3>(row), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(std::get<4>(row), 1);
}

TEST(SystemProfilerDisplays, TheResolutionFallsBackToTheOtherKeysWhenEmpty) {
    EXPECT_EQ(std::get<3>(onlyDisplay({text("_spdisplays_resolution", ""), text("spdisplays_resolution", "1024 x 768"),
                                       text("_spdisplays_pixels", "2048 x 1536")})),
              1024);
    EXPECT_EQ(std::get<3>(onlyDisplay({text("spdisplays_resolution", ""), text("_spdisplays_pixels", "2048 x 1536")})),
              2048);
    EXPECT_EQ(std::get<3>(onlyDisplay(
                  {text("_spdisplays_resolution", "800 x 600"), text("_spdisplays_pixels", "2048 x 1536")})),
              800);
}

TEST(SystemProfilerDisplays, TheVendorIdFallsBackToTheUnderscorelessKey) {
    EXPECT_EQ(std::get<1>(onlyDisplay({text("_name", "U"), text("_spdisplays_display-vendor-id", ""),
                                       text("spdisplays_display-vendor-id", "10ac")})),
              "DELL");
}

TEST(SystemProfilerDisplays, EqualRecordsAreReportedOnceTheFirstKept) {
    const std::string display = dict({text("_name", "DELL U2415"), text("_spdisplays_display-vendor-id", "10ac"),
                                      text("_spdisplays_resolution", "1920 x 1200 @ 60.00Hz")});
    const std::string sameNameOtherMode =
        dict({text("_name", "DELL U2415"), text("_spdisplays_display-vendor-id", "10ac"),
              text("_spdisplays_resolution", "1280 x 800 @ 60.00Hz")});
    const std::string adapter = dict({text("sppci_model", "GPU"), text("spdisplays_vendor", "V"),
                                      under("spdisplays_ndrvs", array({display, sameNameOtherMode}))});
    EXPECT_EQ(displaysOfItems({adapter, adapter}),
              (DisplayRows{{"GPU", "V", 0, 0, 0, 0}, {"DELL U2415", "DELL", 60, 1920, 1200, 24}}));
}

TEST(SystemProfilerDisplays, AProfileWithoutItemsGivesAnEmptyArray) {
    EXPECT_TRUE(displaysOf(xmlList(array({dict({text("_dataType", "SPDisplaysDataType")})}))).empty());
    EXPECT_TRUE(displaysOfItems({}).empty());
}

TEST(SystemProfilerDisplays, NoOutputGivesAnEmptyArray) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    const ArrayRef records = displaysFromSystemProfiler(source);
    ASSERT_TRUE(records);
    EXPECT_TRUE(records->empty());
    EXPECT_EQ(source.toolRuns(), (std::vector<std::vector<std::string>>{kDisplaysArgv}));
}

TEST(SystemProfilerDisplays, BrokenOutputGivesAnEmptyArray) {
    const std::string whole = intelMacBookProWithDell();
    EXPECT_TRUE(displaysOf("").empty());
    EXPECT_TRUE(displaysOf("system_profiler: garbage \x01\x02\xff").empty());
    EXPECT_TRUE(displaysOf(whole.substr(0, whole.size() / 2)).empty());
    const std::string binary = binaryForm(whole);
    EXPECT_TRUE(displaysOf(binary.substr(0, binary.size() - 20)).empty());
    EXPECT_TRUE(displaysOf(xmlList(dict({under("_items", array({dict({text("sppci_model", "GPU")})}))}))).empty());
    EXPECT_TRUE(displaysOf(xmlList(array({text("_items", "GPU")}))).empty());
    EXPECT_TRUE(displaysOf(xmlList(array({"<string>report</string>", dict({text("sppci_model", "GPU")})}))).empty());
}

TEST(SystemProfilerDisplays, DeeplyNestedOutputGivesAnEmptyArray) {
    std::string deep;
    for (int level = 0; level < 5000; ++level) deep += "<array>";
    for (int level = 0; level < 5000; ++level) deep += "</array>";
    EXPECT_TRUE(displaysOf(xmlList(deep)).empty());
}

TEST(SystemProfilerDisplays, WronglyTypedEntriesDropOnlyTheirRecordOrReadAsAbsent) {
    const std::string goodDisplay = dict({text("_name", "Kept"), text("_spdisplays_display-vendor-id", "10ac")});
    const std::string numberNamed =
        dict({under("_name", "<integer>7</integer>"), text("_spdisplays_display-vendor-id", "1e6d"),
              under("spdisplays_depth", "<integer>32</integer>"), under("_spdisplays_resolution", "<array/>")});
    const std::vector<std::string> items = {
        "<string>not an adapter</string>",
        dict({under("sppci_model", "<true/>"), text("_name", "Named"),
              under("spdisplays_ndrvs", array({"<integer>1</integer>", goodDisplay, numberNamed}))}),
        dict({text("sppci_model", "NoDisplays"), under("spdisplays_ndrvs", dict({text("_name", "Lost")}))}),
    };
    EXPECT_EQ(displaysOfItems(items), (DisplayRows{{"Named", "", 0, 0, 0, 0},
                                                   {"Kept", "DELL", 0, 0, 0, 24},
                                                   {"Generic Display", "Generic Display(1e6d)", 0, 0, 0, 24},
                                                   {"NoDisplays", "", 0, 0, 0, 0}}));
    EXPECT_TRUE(displaysOf(xmlList(array({dict({text("_items", "GPU")})}))).empty());
}

// ================================================================== cameras

TEST(SystemProfilerCameras, EachItemIsACameraWithNameModelAndUniqueId) {
    const std::string output =
        report("SPCameraDataType",
               {dict({text("_name", "FaceTime HD Camera"), text("spcamera_model-id", "FaceTime HD Camera"),
                      text("spcamera_unique-id", "EAB7A68FEC2B4487AADFD8A91C1CB782")}),
                dict({text("_name", "USB Camera"), text("spcamera_model-id", "UVC Camera VendorID_1133 ProductID_2093"),
                      text("spcamera_unique-id", "0x1400000046d082d")})});
    EXPECT_EQ(camerasOf(output),
              (std::vector<CameraRow>{{"FaceTime HD Camera", "FaceTime HD Camera", "EAB7A68FEC2B4487AADFD8A91C1CB782"},
                                      {"USB Camera", "UVC Camera VendorID_1133 ProductID_2093", "0x1400000046d082d"}}));
}

TEST(SystemProfilerCameras, CamerasWithTheSameUniqueIdAreOneAndWithoutUniqueIdAllStay) {
    const std::string output =
        report("SPCameraDataType", {dict({text("_name", "A"), text("spcamera_unique-id", "0x1")}),
                                    dict({text("_name", "B"), text("spcamera_unique-id", "0x1")}),
                                    dict({text("_name", "C")}), dict({text("_name", "C")})});
    EXPECT_EQ(camerasOf(output), (std::vector<CameraRow>{{"A", "", "0x1"}, {"C", "", ""}, {"C", "", ""}}));
}

TEST(SystemProfilerCameras, TheBinaryFormGivesTheSameCameras) {
    const std::string output =
        report("SPCameraDataType", {dict({text("_name", "A"), text("spcamera_unique-id", "0x1")})});
    EXPECT_EQ(camerasOf(binaryForm(output)), (std::vector<CameraRow>{{"A", "", "0x1"}}));
}

TEST(SystemProfilerCameras, TheProfileIsAskedForWithoutDetailLevel) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    EXPECT_TRUE(camerasFromSystemProfiler(source)->empty());
    EXPECT_EQ(source.toolRuns(), (std::vector<std::vector<std::string>>{kCameraArgv}));
}

TEST(SystemProfilerCameras, NoItemsOrBrokenOutputGiveNoCameras) {
    EXPECT_TRUE(camerasOf(xmlList(array({dict({text("_dataType", "SPCameraDataType")})}))).empty());
    EXPECT_TRUE(camerasOf(xmlList("<array/>")).empty());
    EXPECT_TRUE(camerasOf(xmlList(dict({under("_items", array({dict({text("_name", "A")})}))}))).empty());
    EXPECT_TRUE(camerasOf(xmlList(array({"<string>x</string>"}))).empty());
    EXPECT_TRUE(camerasOf(xmlList(array({text("_items", "A")}))).empty());
    EXPECT_TRUE(camerasOf(xmlList(array({dict({text("_items", "A")})}))).empty());
    EXPECT_TRUE(camerasOf("<plist><array><dict><key>_items</key><array><dict>").empty());
    EXPECT_TRUE(camerasOf("\x00\x01garbage").empty());
}

TEST(SystemProfilerCameras, ItemsThatAreNoDictionaryAreLeftOut) {
    const std::string output =
        report("SPCameraDataType",
               {"<integer>3</integer>", dict({under("_name", "<real>1.5</real>"), text("spcamera_unique-id", "u")})});
    EXPECT_EQ(camerasOf(output), (std::vector<CameraRow>{{"", "", "u"}}));
}

// ================================================================== memory

TEST(SystemProfilerMemory, EachSlotIsAMemoryModuleWithItsTexts) {
    EXPECT_EQ(memoryOf(memoryReport({slot("BANK 0/DIMM0", "0x2C4F1A11"), slot("BANK 1/DIMM0", "0x2C4F1A12")})),
              (std::vector<MemoryRow>{
                  {"BANK 0/DIMM0", "DDR3", "4 GB", "0x2C4F1A11", "ok", "0x80AD", "HMT451S6BFR8A-PB", "1600 MHz"},
                  {"BANK 1/DIMM0", "DDR3", "4 GB", "0x2C4F1A12", "ok", "0x80AD", "HMT451S6BFR8A-PB", "1600 MHz"}}));
}

TEST(SystemProfilerMemory, TwoIdenticalModulesCollapseIntoOne) {
    EXPECT_EQ(memoryOf(memoryReport({slot("BANK 0/DIMM0", "0x1"), slot("BANK 0/DIMM0", "0x1")})).size(), 1U);
}

TEST(SystemProfilerMemory, AnEmptySlotIsReportedWithItsStatusAndAbsentTextsEmpty) {
    EXPECT_EQ(memoryOf(memoryReport(
                  {dict({text("_name", "BANK 1/DIMM0"), text("dimm_size", "empty"), text("dimm_status", "empty")})})),
              (std::vector<MemoryRow>{{"BANK 1/DIMM0", "", "empty", "", "empty", "", "", ""}}));
}

TEST(SystemProfilerMemory, AnAppleSiliconMacHasNoSlots) {
    const std::string output =
        report("SPMemoryDataType", {dict({text("SPMemoryDataType", "8 GB"), text("dimm_type", "lp_ddr4")})});
    EXPECT_TRUE(memoryOf(output).empty());
}

TEST(SystemProfilerMemory, TheProfileIsAskedForWithoutDetailLevel) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    EXPECT_TRUE(memoryModulesFromSystemProfiler(source)->empty());
    EXPECT_EQ(source.toolRuns(), (std::vector<std::vector<std::string>>{kMemoryArgv}));
}

TEST(SystemProfilerMemory, TheBinaryFormGivesTheSameModules) {
    const std::string output = memoryReport({slot("BANK 0/DIMM0", "0x1")});
    EXPECT_EQ(memoryOf(binaryForm(output)), memoryOf(output));
}

TEST(SystemProfilerMemory, MissingOrWronglyTypedLevelsGiveNoModules) {
    EXPECT_TRUE(memoryOf(report("SPMemoryDataType", {})).empty());
    EXPECT_TRUE(memoryOf(xmlList(array({dict({text("_dataType", "SPMemoryDataType")})}))).empty());
    EXPECT_TRUE(memoryOf(report("SPMemoryDataType", {"<string>slots</string>"})).empty());
    EXPECT_TRUE(memoryOf(report("SPMemoryDataType", {dict({text("_items", "slots")})})).empty());
    EXPECT_TRUE(
        memoryOf(xmlList(dict({under("_items", array({dict({under("_items", array({slot("A", "1")}))})}))}))).empty());
    EXPECT_TRUE(memoryOf("").empty());
    const std::string whole = memoryReport({slot("BANK 0/DIMM0", "0x1")});
    EXPECT_TRUE(memoryOf(whole.substr(0, whole.size() - 30)).empty());
}

TEST(SystemProfilerMemory, OnlyTheFirstGroupHoldsTheSlotsAndOddSlotsAreLeftOut) {
    const std::string output = report(
        "SPMemoryDataType", {dict({under("_items", array({"<string>odd</string>", slot("BANK 0/DIMM0", "0x1")}))}),
                             dict({under("_items", array({slot("BANK 9/DIMM9", "0x9")}))})});
    const std::vector<MemoryRow> rows = memoryOf(output);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(std::get<0>(rows[0]), "BANK 0/DIMM0");
}

}  // namespace
}  // namespace tov
