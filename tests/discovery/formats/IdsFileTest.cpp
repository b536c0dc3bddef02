#include "discovery/formats/IdsFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "common/TextUtils.h"
#include "discovery/formats/HardwareIds.h"
#include "discovery/formats/IdsLines.h"
#include "support/PartCountingSource.h"
#include "support/SanitizerBuild.h"

namespace tov {
namespace {

using testing::kThreadSanitizerBuild;

// Comparing every entry with the whole text is single-threaded string work in which
// ThreadSanitizer has nothing to find, and under it each comparison takes minutes, near
// ctest's limit; the plain and AddressSanitizer builds run them.
constexpr const char* kNotUnderThreadSanitizer = "single-threaded and minutes long under ThreadSanitizer";

using testing::PartCountingSource;

constexpr const char* kPath = "/usr/share/misc/pci.ids";

std::optional<std::string> realDatabase(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string hex(unsigned id) {
    char text[8];
    std::snprintf(text, sizeof text, "%04x", id);
    return text;
}

IdsFile openHeld(PartCountingSource& source) {
    std::optional<IdsFile> file = IdsFile::open(source, kPath, HardwareIds::kReadLimit);
    EXPECT_TRUE(file);
    return std::move(*file);
}

// The id of a device line "\tdddd  Name"; nothing for another line.
std::optional<std::uint16_t> deviceLineId(std::string_view line) {
    if (!hasPrefix(line, "\t")) return std::nullopt;
    return idsVendorLineId(line.substr(1));
}

// Every vendor line and every device line of a database: the search in parts gives what
// the search of the whole text gives. Vendors are looked up both from a fresh file (the
// search from nothing) and from one file kept for all (the search helped by what it met).
// Answers that differ, as text, at most a few.
std::vector<std::string> disagreements(const std::string& text) {
    PartCountingSource source;
    source.held(kPath, text);
    IdsFile kept = openHeld(source);
    std::vector<std::string> differing;
    const auto expectSame = [&](const std::optional<std::string>& parts, const std::optional<std::string>& whole,
                                const std::string& what) {
        if (parts != whole && differing.size() < 10) differing.push_back(what + ": " + parts.value_or("(nothing)"));
    };
    std::optional<std::uint16_t> vendor;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (const std::optional<std::uint16_t> id = idsVendorLineId(line)) {
            vendor = id;
            IdsFile fresh = openHeld(source);
            expectSame(fresh.vendorName(*id), idsVendorName(text, *id), "fresh vendor " + hex(*id));
            expectSame(kept.vendorName(*id), idsVendorName(text, *id), "vendor " + hex(*id));
        } else if (const std::optional<std::uint16_t> device = vendor ? deviceLineId(line) : std::nullopt) {
            expectSame(kept.deviceName(*vendor, *device), idsDeviceName(text, *vendor, *device),
                       "device " + hex(*vendor) + ":" + hex(*device));
        } else if (endsIdsVendorBlock(line)) {
            vendor.reset();
        }
    }
    return differing;
}

// The vendor ids of a database's vendor lines, in file order.
std::vector<std::uint16_t> vendorIds(const std::string& text) {
    std::vector<std::uint16_t> ids;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (const std::optional<std::uint16_t> id = idsVendorLineId(line)) ids.push_back(*id);
    }
    return ids;
}

// Ids no vendor line holds: below the first, above the last, and between neighbours
// (every step-th gap).
std::vector<std::uint16_t> absentVendorIds(const std::vector<std::uint16_t>& present, std::size_t step) {
    std::vector<std::uint16_t> absent;
    std::vector<std::uint16_t> sorted = present;
    std::sort(sorted.begin(), sorted.end());
    if (sorted.front() > 0) absent.push_back(0);
    if (sorted.back() < 0xffff) absent.push_back(0xffff);
    for (std::size_t index = 1; index < sorted.size(); index += step) {
        if (sorted[index] - sorted[index - 1] > 1) absent.push_back(static_cast<std::uint16_t>(sorted[index - 1] + 1));
    }
    return absent;
}

// A database in the files' layout, sorted, with two long vendor blocks (as Intel's and
// NVIDIA's are in pci.ids) and sections after the vendors, about 0.8 MB.
std::string generatedDatabase() {
    std::string text = "#\n#\tList of ids (generated for tests)\n#\n\n";
    for (unsigned vendor = 0x0003; vendor < 0xfff0; vendor += 0x0b) {
        text += hex(vendor) + "  Vendor number " + std::to_string(vendor) + "\n";
        const unsigned devices = vendor == 0x807d ? 9000 : vendor == 0x10d0 ? 3000 : vendor % 4;
        for (unsigned device = 0; device < devices; ++device) {
            text += "\t" + hex(device * 7 % 0x10000) + "  Device " + std::to_string(device) + "\n";
            if (device % 5 == 0) text += "\t\t" + hex(vendor) + " " + hex(device) + "  Subsystem\n";
        }
    }
    text += "\n# Classes\nC 00  Unclassified device\n\t00  Non-VGA unclassified device\nC 01  Mass storage\n";
    text += "HUT 07  Keyboard\n\t004  Keyboard a and A\nL 0409  English\n";
    return text;
}

TEST(IdsFile, EveryEntryOfARealPciIdsAgreesWithTheWholeText) {
    if (kThreadSanitizerBuild) GTEST_SKIP() << kNotUnderThreadSanitizer;
    const std::optional<std::string> text = realDatabase("/usr/share/misc/pci.ids");
    if (!text) GTEST_SKIP() << "no /usr/share/misc/pci.ids";
    EXPECT_EQ(disagreements(*text), std::vector<std::string>{});
}

TEST(IdsFile, EveryEntryOfARealUsbIdsAgreesWithTheWholeText) {
    if (kThreadSanitizerBuild) GTEST_SKIP() << kNotUnderThreadSanitizer;
    const std::optional<std::string> text = realDatabase("/usr/share/misc/usb.ids");
    if (!text) GTEST_SKIP() << "no /usr/share/misc/usb.ids";
    EXPECT_EQ(disagreements(*text), std::vector<std::string>{});
}

TEST(IdsFile, EveryEntryOfAGeneratedDatabaseAgreesWithTheWholeText) {
    if (kThreadSanitizerBuild) GTEST_SKIP() << kNotUnderThreadSanitizer;
    EXPECT_EQ(disagreements(generatedDatabase()), std::vector<std::string>{});
}

void expectAbsentIdsAbsent(const std::string& text, std::size_t step) {
    PartCountingSource source;
    source.held(kPath, text);
    IdsFile kept = openHeld(source);
    for (std::uint16_t vendor : absentVendorIds(vendorIds(text), step)) {
        ASSERT_EQ(idsVendorName(text, vendor), std::nullopt) << hex(vendor);
        EXPECT_EQ(openHeld(source).vendorName(vendor), std::nullopt) << hex(vendor);
        EXPECT_EQ(kept.vendorName(vendor), std::nullopt) << hex(vendor);
        EXPECT_EQ(kept.deviceName(vendor, 0x0001), std::nullopt) << hex(vendor);
    }
}

TEST(IdsFile, IdsNotInARealDatabaseAreNotFound) {
    for (const char* path : {"/usr/share/misc/pci.ids", "/usr/share/misc/usb.ids"}) {
        const std::optional<std::string> text = realDatabase(path);
        if (!text) GTEST_SKIP() << "no " << path;
        expectAbsentIdsAbsent(*text, 25);
    }
}

TEST(IdsFile, IdsBelowTheFirstAboveTheLastAndBetweenVendorsAreNotFound) {
    expectAbsentIdsAbsent(generatedDatabase(), 40);
    const std::string small = "# ids\n0010  First\n\t0001  Device\n0020  Middle\n0030  Last\n\t0003  Its device\n";
    PartCountingSource source;
    source.held(kPath, small);
    IdsFile file = openHeld(source);
    for (std::uint16_t absent : {0x0000, 0x000f, 0x0011, 0x001f, 0x0021, 0x0031, 0xffff}) {
        EXPECT_EQ(file.vendorName(absent), std::nullopt) << hex(absent);
    }
    EXPECT_EQ(file.vendorName(0x0020), "Middle");
    EXPECT_EQ(file.deviceName(0x0020, 0x0001), std::nullopt);
    EXPECT_EQ(file.deviceName(0x0010, 0x0003), std::nullopt);
}

TEST(IdsFile, AnUnsortedCopyStillAnswersRight) {
    // Vendors out of order, around long blocks, so that the ordered search is misled.
    std::string text = "ffff  Illegal\n0001  Low\n\t0001  Low device\n8086  Intel\n";
    for (unsigned device = 0; device < 3000; ++device) text += "\t" + hex(device) + "  Intel device\n";
    text += "10de  NVIDIA\n\t1b80  GP104\n0002  Second low\n9000  High\n\t9001  High device\n1022  AMD\n";
    PartCountingSource source;
    source.held(kPath, text);
    for (std::uint16_t vendor : vendorIds(text)) {
        EXPECT_EQ(openHeld(source).vendorName(vendor), idsVendorName(text, vendor)) << hex(vendor);
    }
    IdsFile file = openHeld(source);
    for (std::uint16_t vendor : vendorIds(text)) {
        EXPECT_EQ(file.vendorName(vendor), idsVendorName(text, vendor)) << hex(vendor);
    }
    EXPECT_EQ(file.deviceName(0x10de, 0x1b80), "GP104");
    EXPECT_EQ(file.deviceName(0x9000, 0x9001), "High device");
    EXPECT_EQ(file.deviceName(0x8086, 0x0bb7), "Intel device");
    EXPECT_EQ(file.deviceName(0x0001, 0x0001), "Low device");
    EXPECT_EQ(file.vendorName(0x0003), std::nullopt);
}

TEST(IdsFile, AFileWithoutAFinalLineBreak) {
    PartCountingSource source;
    source.held(kPath, "0010  First\n\t0001  Device\n0030  Last\n\t0003  Its device");
    IdsFile file = openHeld(source);
    EXPECT_EQ(file.deviceName(0x0030, 0x0003), "Its device");
    EXPECT_EQ(file.vendorName(0x0030), "Last");
    source.held("/other", "0010  First\n0030  Last");
    std::optional<IdsFile> other = IdsFile::open(source, "/other", HardwareIds::kReadLimit);
    ASSERT_TRUE(other);
    EXPECT_EQ(other->vendorName(0x0030), "Last");
    EXPECT_EQ(other->deviceName(0x0030, 0x0003), std::nullopt);
}

TEST(IdsFile, TheLastVendorsBlockEndsAtTheClassesOrAtTheEnd) {
    PartCountingSource source;
    source.held(kPath, "0010  First\nfffe  Last\n\t0003  Its device\n\nC 00  Unclassified\n\t00  Non-VGA\n");
    IdsFile file = openHeld(source);
    EXPECT_EQ(file.deviceName(0xfffe, 0x0003), "Its device");
    EXPECT_EQ(file.deviceName(0xfffe, 0x0000), std::nullopt);
    source.held("/other", "0010  First\nfffe  Last\n\t0003  Its device\n");
    std::optional<IdsFile> other = IdsFile::open(source, "/other", HardwareIds::kReadLimit);
    ASSERT_TRUE(other);
    EXPECT_EQ(other->deviceName(0xfffe, 0x0003), "Its device");
    EXPECT_EQ(other->deviceName(0xfffe, 0x0004), std::nullopt);
}

TEST(IdsFile, CrLfLines) {
    std::string text = "# ids\r\n";
    for (unsigned vendor = 1; vendor < 2000; ++vendor) text += hex(vendor) + "  Vendor\r\n\t0001  Device\r\n";
    text += "8086  Intel Corporation\r\n\t51ca  Raptor Lake-P/U/H cAVS\r\n";
    PartCountingSource source;
    source.held(kPath, text);
    IdsFile file = openHeld(source);
    EXPECT_EQ(file.vendorName(0x8086), "Intel Corporation");
    EXPECT_EQ(file.deviceName(0x8086, 0x51ca), "Raptor Lake-P/U/H cAVS");
    EXPECT_EQ(file.vendorName(0x0400), "Vendor");
    EXPECT_EQ(file.deviceName(0x0400, 0x0001), "Device");
}

TEST(IdsFile, AnEmptyFileHoldsNothing) {
    PartCountingSource source;
    source.held(kPath, "");
    IdsFile file = openHeld(source);
    EXPECT_EQ(file.vendorName(0x8086), std::nullopt);
    EXPECT_EQ(file.deviceName(0x8086, 0x51ca), std::nullopt);
}

TEST(IdsFile, AFileThatCannotBeReadIsNoDatabase) {
    PartCountingSource source;
    EXPECT_FALSE(IdsFile::open(source, kPath, HardwareIds::kReadLimit));
    source.held(kPath, std::string(101, '#'));
    EXPECT_FALSE(IdsFile::open(source, kPath, 100));
    EXPECT_TRUE(IdsFile::open(source, kPath, 101));
}

// Reads no more than a part at a time, and far less than the whole file for a lookup:
// from a fresh file (the first lookup of a scan) and from one file kept for all lookups
// (as a scan keeps it).
void expectSmallReads(const std::string& text, const std::vector<std::uint16_t>& vendors) {
    PartCountingSource source;
    source.held(kPath, text);
    IdsFile kept = openHeld(source);
    std::uint64_t largestFresh = 0;
    std::uint64_t allFresh = 0;
    std::uint64_t allKept = 0;
    for (std::uint16_t vendor : vendors) {
        IdsFile fresh = openHeld(source);
        source.resetCounts();
        EXPECT_TRUE(fresh.vendorName(vendor));
        EXPECT_LE(source.largestPartAsked, IdsFile::kPartBytes);
        EXPECT_EQ(source.wholeReads, 0);
        largestFresh = std::max(largestFresh, source.bytesGiven);
        allFresh += source.bytesGiven;
        source.resetCounts();
        EXPECT_TRUE(kept.vendorName(vendor));
        EXPECT_LE(source.largestPartAsked, IdsFile::kPartBytes);
        allKept += source.bytesGiven;
    }
    EXPECT_LT(allFresh / vendors.size(), text.size() / 8);
    EXPECT_LT(largestFresh, text.size() / 4);
    EXPECT_LT(allKept / vendors.size(), text.size() / 50);
}

TEST(IdsFile, ALookupReadsSmallPartsAndFarLessThanTheFile) {
    const std::string generated = generatedDatabase();
    expectSmallReads(generated, vendorIds(generated));
    for (const char* path : {"/usr/share/misc/pci.ids", "/usr/share/misc/usb.ids"}) {
        if (const std::optional<std::string> text = realDatabase(path)) expectSmallReads(*text, vendorIds(*text));
    }
}

TEST(IdsFile, DevicesOfALongBlockAreReadInParts) {
    const std::string text = generatedDatabase();
    PartCountingSource source;
    source.held(kPath, text);
    IdsFile file = openHeld(source);
    EXPECT_EQ(file.vendorName(0x807d), "Vendor number 32893");
    // A device near the vendor's line: a part or two.
    source.resetCounts();
    EXPECT_EQ(file.deviceName(0x807d, 0x0007), "Device 1");
    EXPECT_LE(source.bytesGiven, 2 * IdsFile::kPartBytes);
    // The device last in the long block: read through it, a part at a time.
    source.resetCounts();
    EXPECT_EQ(file.deviceName(0x807d, static_cast<std::uint16_t>(8999 * 7)), "Device 8999");
    EXPECT_LE(source.largestPartAsked, IdsFile::kPartBytes);
    EXPECT_EQ(source.wholeReads, 0);
    EXPECT_LT(source.bytesGiven, text.size() / 2);
}

}  // namespace
}  // namespace tov
