#include "discovery/formats/Edid.h"

#include <gtest/gtest.h>

#include "support/EdidBytes.h"

namespace tov {
namespace {

using testing::EdidBaseBlock;
using testing::EdidTiming;

constexpr std::uint8_t kNameTag = 0xfc;
constexpr std::uint8_t kSerialTag = 0xff;

EdidBaseBlock dellMonitor() {
    EdidBaseBlock base;
    base.descriptors = {testing::timingDescriptor(testing::wuxgaTiming()),
                        testing::textDescriptor(kSerialTag, "Y8CJ44BR1T5L\n"),
                        testing::textDescriptor(kNameTag, "DELL U2412M\n ")};
    return base;
}

Edid parsed(const std::string& bytes) {
    const std::optional<Edid> edid = parseEdid(bytes);
    EXPECT_TRUE(edid.has_value());
    return edid.value_or(Edid{});
}

std::optional<std::string> nameOf(const std::string& text) {
    EdidBaseBlock base;
    base.descriptors = {testing::timingDescriptor(testing::wuxgaTiming()), testing::textDescriptor(kNameTag, text)};
    return parsed(base.bytes()).monitorName;
}

TEST(Edid, ReadsTheNameVendorModeAndColourDepth) {
    const Edid edid = parsed(dellMonitor().bytes());
    EXPECT_EQ(edid.monitorName, "DELL U2412M");
    EXPECT_EQ(edid.vendorId, "10ac");
    EXPECT_EQ(edid.firstDetailedTiming, (DisplayMode{1920, 1200, 60}));
    EXPECT_EQ(edid.preferredMode, (DisplayMode{1920, 1200, 60}));
    EXPECT_EQ(edid.bitsPerColour, 8);
}

TEST(Edid, TheVendorIdIsLowerCaseHexWithoutLeadingZeros) {
    EdidBaseBlock base = dellMonitor();
    base.maker = "APP";
    EXPECT_EQ(parsed(base.bytes()).vendorId, "610");
    base.maker = "RHT";
    EXPECT_EQ(parsed(base.bytes()).vendorId, "4914");
    base.maker = "GSM";
    EXPECT_EQ(parsed(base.bytes()).vendorId, "1e6d");
}

TEST(Edid, NamesEndAtALineFeedAndLoseTrailingBlanks) {
    EXPECT_EQ(nameOf("LG Ultra HD\n "), "LG Ultra HD");
    EXPECT_EQ(nameOf("EV2785\n      "), "EV2785");
    EXPECT_EQ(nameOf("Color LCD    "), "Color LCD");
    EXPECT_EQ(nameOf("ABCDEFGHIJKLM"), "ABCDEFGHIJKLM");
    EXPECT_EQ(nameOf("Name\nhidden"), "Name");
}

TEST(Edid, ABlankOrMissingNameIsNoName) {
    EXPECT_EQ(nameOf("\n            "), std::nullopt);
    EXPECT_EQ(nameOf("   "), std::nullopt);
    EdidBaseBlock panel;
    panel.descriptors = {testing::timingDescriptor(testing::wuxgaTiming()),
                         testing::timingDescriptor({102660, 1920, 160, 1200, 35})};
    EXPECT_EQ(parsed(panel.bytes()).monitorName, std::nullopt);
}

TEST(Edid, NameBytesThatAreNoTextAreMadePrintable) {
    EXPECT_EQ(nameOf(std::string("A\x01" "B\xff", 4)), "AB\xEF\xBF\xBD");
}

TEST(Edid, TheRefreshRateIsRoundedToTheNearestInteger) {
    EdidBaseBlock base;
    // 74.5 Hz rounds up, 74.49 Hz down: 1000 x 1000 pixels per frame.
    base.descriptors = {testing::timingDescriptor({74500, 800, 200, 900, 100})};
    EXPECT_EQ(parsed(base.bytes()).firstDetailedTiming, (DisplayMode{800, 900, 75}));
    base.descriptors = {testing::timingDescriptor({74490, 800, 200, 900, 100})};
    EXPECT_EQ(parsed(base.bytes()).firstDetailedTiming, (DisplayMode{800, 900, 74}));
}

TEST(Edid, AnAbsurdTimingGivesNoMode) {
    EdidBaseBlock noPixels;
    noPixels.descriptors = {testing::timingDescriptor({154000, 0, 160, 1200, 35})};
    EXPECT_EQ(parsed(noPixels.bytes()).preferredMode, std::nullopt);
    EdidBaseBlock tooFast;
    tooFast.descriptors = {testing::timingDescriptor({655350, 1, 0, 1, 0})};
    EXPECT_EQ(parsed(tooFast.bytes()).preferredMode, std::nullopt);
    EdidBaseBlock tooSlow;
    tooSlow.descriptors = {testing::timingDescriptor({10, 4095, 4095, 4095, 4095})};
    EXPECT_EQ(parsed(tooSlow.bytes()).preferredMode, std::nullopt);
}

TEST(Edid, BitsPerColourComeFromAnEdid14DigitalInput) {
    EdidBaseBlock base = dellMonitor();
    const std::vector<std::pair<std::uint8_t, std::optional<int>>> cases{
        {0x80, std::nullopt}, {0x95, 6}, {0xa5, 8}, {0xb5, 10}, {0xc5, 12}, {0xd5, 14}, {0xe5, 16}, {0xf5, std::nullopt}};
    for (const auto& [input, bits] : cases) {
        base.videoInput = input;
        EXPECT_EQ(parsed(base.bytes()).bitsPerColour, bits) << int(input);
    }
    base.videoInput = 0x25;  // analog: the bits mean something else
    EXPECT_EQ(parsed(base.bytes()).bitsPerColour, std::nullopt);
    base.videoInput = 0xa5;
    base.revision = 3;  // EDID 1.3 does not state them
    EXPECT_EQ(parsed(base.bytes()).bitsPerColour, std::nullopt);
}

TEST(Edid, ShortOrHeaderlessBytesAreNotRead) {
    const std::string bytes = dellMonitor().bytes();
    EXPECT_EQ(parseEdid(""), std::nullopt);
    EXPECT_EQ(parseEdid(bytes.substr(0, 127)), std::nullopt);
    std::string headerless = bytes;
    headerless[0] = '\x01';
    EXPECT_EQ(parseEdid(testing::withChecksum(headerless)), std::nullopt);
}

TEST(Edid, ABaseBlockWithAWrongChecksumIsNotTrusted) {
    std::string bytes = dellMonitor().bytes();
    bytes[9] = static_cast<char>(bytes[9] ^ 1);
    EXPECT_EQ(parseEdid(bytes), std::nullopt);
}

TEST(Edid, MissingExtensionsLeaveTheBaseBlockReadable) {
    EdidBaseBlock base = dellMonitor();
    base.extensionCount = 2;
    const std::string bytes = base.bytes() + testing::ctaBlock();
    const Edid edid = parsed(bytes);
    EXPECT_EQ(edid.monitorName, "DELL U2412M");
    EXPECT_EQ(edid.preferredMode, (DisplayMode{1920, 1200, 60}));
    EXPECT_EQ(parsed(bytes.substr(0, 200)).monitorName, "DELL U2412M");
}

// A base block whose first descriptor is no timing, and a DisplayID block with timings.
std::string displayIdOnly(const std::string& dataBlocks) {
    EdidBaseBlock base;
    base.maker = "APP";
    base.descriptors = {testing::textDescriptor(kNameTag, "Color LCD\n   ")};
    base.extensionCount = 1;
    return base.bytes() + testing::displayIdBlock(dataBlocks);
}

TEST(Edid, WithoutABaseTimingThePreferredDisplayIdTimingIsTaken) {
    const std::string bytes = displayIdOnly(testing::displayIdTimingBlock({260730, 2560, 80, 1600, 46}, false) +
                                            testing::displayIdTimingBlock({88750, 1440, 160, 900, 26}, true));
    const Edid edid = parsed(bytes);
    EXPECT_EQ(edid.firstDetailedTiming, std::nullopt);
    EXPECT_EQ(edid.preferredMode, (DisplayMode{1440, 900, 60}));
}

TEST(Edid, WithoutAPreferredDisplayIdTimingTheFirstIsTaken) {
    const std::string bytes = displayIdOnly(testing::displayIdTimingBlock({260730, 2560, 80, 1600, 46}, false) +
                                            testing::displayIdTimingBlock({88750, 1440, 160, 900, 26}, false));
    EXPECT_EQ(parsed(bytes).preferredMode, (DisplayMode{2560, 1600, 60}));
}

TEST(Edid, TypeSevenTimingsCountTheClockInKilohertz) {
    const std::string bytes = displayIdOnly(testing::displayIdTimingBlock({533250, 3840, 160, 2160, 62}, true, 0x22));
    EXPECT_EQ(parsed(bytes).preferredMode, (DisplayMode{3840, 2160, 60}));
}

TEST(Edid, ATiledMonitorIsAllItsTilesTogether) {
    EdidBaseBlock base = dellMonitor();
    base.maker = "GSM";
    base.descriptors[0] = testing::timingDescriptor({533250, 3840, 160, 2160, 62});
    base.extensionCount = 1;
    const std::string tiles = testing::displayIdTilesBlock(2, 1, 2560, 2880) +
                              testing::displayIdTimingBlock({483370, 2560, 160, 2880, 82}, false);
    const Edid edid = parsed(base.bytes() + testing::displayIdBlock(tiles));
    EXPECT_EQ(edid.firstDetailedTiming, (DisplayMode{3840, 2160, 60}));
    EXPECT_EQ(edid.preferredMode, (DisplayMode{5120, 2880, 60}));
}

TEST(Edid, TilesWithoutATileTimingAreNotJoined) {
    EdidBaseBlock base = dellMonitor();
    base.extensionCount = 1;
    const Edid edid = parsed(base.bytes() + testing::displayIdBlock(testing::displayIdTilesBlock(2, 1, 2560, 2880)));
    EXPECT_EQ(edid.preferredMode, (DisplayMode{1920, 1200, 60}));
}

TEST(Edid, AnExtensionWithAWrongChecksumIsIgnored) {
    EdidBaseBlock base = dellMonitor();
    base.extensionCount = 1;
    std::string extension = testing::displayIdBlock(testing::displayIdTilesBlock(2, 1, 2560, 2880) +
                                                    testing::displayIdTimingBlock({483370, 2560, 160, 2880, 82}, false));
    extension.back() = static_cast<char>(extension.back() + 1);
    EXPECT_EQ(parsed(base.bytes() + extension).preferredMode, (DisplayMode{1920, 1200, 60}));
}

TEST(Edid, BlocksAfterTheClaimedExtensionsAreIgnored) {
    const std::string tiles = testing::displayIdBlock(testing::displayIdTilesBlock(2, 1, 2560, 2880) +
                                                      testing::displayIdTimingBlock({483370, 2560, 160, 2880, 82}, false));
    EXPECT_EQ(parsed(dellMonitor().bytes() + tiles).preferredMode, (DisplayMode{1920, 1200, 60}));
}

TEST(Edid, ADisplayIdDataBlockRunningPastItsSectionEndsTheReading) {
    std::string timing = testing::displayIdTimingBlock({88750, 1440, 160, 900, 26}, true);
    timing[2] = 120;  // claims more payload than the section holds
    EXPECT_EQ(parsed(displayIdOnly(timing)).preferredMode, std::nullopt);
}

}  // namespace
}  // namespace tov
