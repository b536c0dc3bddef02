#include "discovery/formats/HardwareIds.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"
#include "support/PartCountingSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;
using testing::PartCountingSource;

// Hand-written databases in the files' layout: header comments, vendors, their devices,
// subsystems (PCI) or interfaces (USB) two tabs deep, and the class lists at the end.
const std::string kPciIds =
    "#\n"
    "#\tList of PCI ID's (test excerpt)\n"
    "#\n"
    "# Vendors, devices and subsystems.\n"
    "\n"
    "1002  Advanced Micro Devices, Inc. [AMD/ATI]\n"
    "\tab28  Navi 21/23 HDMI/DP Audio Controller\n"
    "1022  Advanced Micro Devices, Inc. [AMD]\n"
    "\t1457  Family 17h (Models 00h-0fh) HD Audio Controller\n"
    "\t\t1043 8797  TUF GAMING B550M-PLUS\n"
    "8086  Intel Corporation\n"
    "\t0007  82379AB\n"
    "# a comment inside a vendor\n"
    "\t\t8086 51ca  subsystem that looks like a device\n"
    "\t51ca  Raptor Lake-P/U/H cAVS\n"
    "\t51f0  Raptor Lake PCH CNVi WiFi\n"
    "80ee  InnoTek Systemberatung GmbH\n"
    "\tcafe  VirtualBox Guest Service\n"
    "\n"
    "C 04  Multimedia controller\n"
    "\t03  Audio device\n";

const std::string kUsbIds =
    "# List of USB ID's (test excerpt)\n"
    "046d  Logitech, Inc.\n"
    "\t0a44  Headset H390\n"
    "\t\t00  Audio control interface\n"
    "1d6b  Linux Foundation\n"
    "\t0002  2.0 root hub\n"
    "\n"
    "C 01  Audio\n"
    "\t01  Control Device\n"
    "HUT 07  Keyboard\n"
    "\t004  Keyboard a and A\n"
    "L 0409  English\n";

std::shared_ptr<MemorySystemSource> machineWith(const std::string& pci, const std::string& usb) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/usr/share/misc/pci.ids", pci);
    source->file("/usr/share/misc/usb.ids", usb);
    return source;
}

TEST(HardwareIds, KnownVendorsAndDevicesHaveTheirNames) {
    HardwareIds ids(machineWith(kPciIds, kUsbIds));
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0x51ca), "Raptor Lake-P/U/H cAVS");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0x51f0), "Raptor Lake PCH CNVi WiFi");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x1002), "Advanced Micro Devices, Inc. [AMD/ATI]");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x1022), "Advanced Micro Devices, Inc. [AMD]");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x1022, 0x1457), "Family 17h (Models 00h-0fh) HD Audio Controller");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Usb, 0x046d), "Logitech, Inc.");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Usb, 0x046d, 0x0a44), "Headset H390");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Usb, 0x1d6b, 0x0002), "2.0 root hub");
}

TEST(HardwareIds, UnknownIdsAreFourLowerCaseHexDigits) {
    HardwareIds ids(machineWith(kPciIds, kUsbIds));
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x10de), "0x10de");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Usb, 0x00ab), "0x00ab");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0xABCD), "0xabcd");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x10de, 0x1b80), "0x1b80");
}

TEST(HardwareIds, DevicesOfAnotherVendorOrSubsystemLinesDoNotAnswer) {
    HardwareIds ids(machineWith(kPciIds, kUsbIds));
    // 80ee's device, asked of 8086.
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0xcafe), "0xcafe");
    // 1022's subsystem line "1043 8797".
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x1022, 0x1043), "0x1043");
    // The class lists at the end are no vendors.
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x80ee, 0x0003), "0x0003");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Usb, 0x0409), "0x0409");
}

TEST(HardwareIds, PciAndUsbAreSeparateDatabases) {
    HardwareIds ids(machineWith(kPciIds, kUsbIds));
    EXPECT_EQ(ids.vendorName(IdsDatabase::Usb, 0x8086), "0x8086");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x046d), "0x046d");
}

TEST(HardwareIds, AVendorLineAtTheVeryEndOfTheFileIsFound) {
    HardwareIds ids(machineWith("8086  Intel Corporation\n10ec  Realtek Semiconductor Co., Ltd.", ""));
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x10ec), "Realtek Semiconductor Co., Ltd.");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x10ec, 0x8168), "0x8168");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
}

TEST(HardwareIds, ATruncatedFileAnswersWhatItStillHolds) {
    const std::string truncated = kPciIds.substr(0, kPciIds.find("\t51ca") + 4);  // "\t51c"
    HardwareIds ids(machineWith(truncated, ""));
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0x0007), "82379AB");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0x51ca), "0x51ca");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x80ee), "0x80ee");
}

TEST(HardwareIds, GarbageOrAnEmptyNameGivesTheNumber) {
    static const char kBinary[] = "\x00\xff\xfe 8086 Intel\n\t\t\t\n8086 \n\x00";
    const std::string garbage = std::string(kBinary, sizeof kBinary - 1) + "8086  \n1022  \t \n";
    HardwareIds ids(machineWith(garbage, std::string(300, '\xff')));
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "0x8086");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x1022), "0x1022");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Usb, 0x046d), "0x046d");
}

TEST(HardwareIds, WindowsLineEndsAreNotPartOfTheName) {
    HardwareIds ids(machineWith("8086  Intel Corporation\r\n\t51ca  Raptor Lake-P/U/H cAVS\r\n", ""));
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0x51ca), "Raptor Lake-P/U/H cAVS");
}

TEST(HardwareIds, MissingDatabasesGiveNumbers) {
    HardwareIds ids(std::make_shared<MemorySystemSource>());
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "0x8086");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Usb, 0x046d, 0x0a44), "0x0a44");
}

TEST(HardwareIds, TheHwdataLocationsOfFedoraAreRead) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/usr/share/hwdata/pci.ids", kPciIds);
    source->file("/usr/share/hwdata/usb.ids", kUsbIds);
    HardwareIds ids(source);
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
    EXPECT_EQ(ids.vendorName(IdsDatabase::Usb, 0x046d), "Logitech, Inc.");
}

TEST(HardwareIds, DebiansUsbIdsLinkIsFollowed) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/var/lib/usbutils/usb.ids", kUsbIds);
    source->link("/usr/share/misc/usb.ids", "/var/lib/usbutils/usb.ids");
    HardwareIds ids(source);
    EXPECT_EQ(ids.vendorName(IdsDatabase::Usb, 0x1d6b), "Linux Foundation");
}

TEST(HardwareIds, DatabasesAreReadInSmallPartsAndNamesAreRemembered) {
    auto source = std::make_shared<PartCountingSource>();
    source->held("/usr/share/misc/pci.ids", kPciIds);
    HardwareIds ids(source);
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
    EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0x51ca), "Raptor Lake-P/U/H cAVS");
    const int partsForFirstLookups = source->partReads;
    for (int lookup = 0; lookup < 5; ++lookup) {
        EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
        EXPECT_EQ(ids.deviceName(IdsDatabase::Pci, 0x8086, 0x51ca), "Raptor Lake-P/U/H cAVS");
        EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x10de), "0x10de");
    }
    EXPECT_EQ(source->wholeReads, 0);
    EXPECT_LE(source->largestPartAsked, IdsFile::kPartBytes);
    // Only the first question for 10de read anything more.
    const int partsForUnknownVendor = source->partReads - partsForFirstLookups;
    EXPECT_GT(partsForUnknownVendor, 0);
    ids.vendorName(IdsDatabase::Pci, 0x10de);
    EXPECT_EQ(source->partReads, partsForFirstLookups + partsForUnknownVendor);
    // A missing database is asked for once at each of its places, then no more.
    const int partsBeforeUsb = source->partReads;
    ids.vendorName(IdsDatabase::Usb, 0x046d);
    ids.vendorName(IdsDatabase::Usb, 0x1d6b);
    EXPECT_EQ(source->partReads - partsBeforeUsb, 3);
}

TEST(HardwareIds, AnUnreadableFirstCopyLeadsToTheNext) {
    auto source = std::make_shared<MemorySystemSource>();
    source->folder("/usr/share/misc/pci.ids");
    source->file("/usr/share/hwdata/pci.ids", kPciIds);
    HardwareIds ids(source);
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "Intel Corporation");
}

TEST(HardwareIds, ADatabaseLargerThanTheBoundIsNotRead) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/usr/share/misc/pci.ids", "8086  Intel Corporation\n" + std::string(HardwareIds::kReadLimit, '#'));
    HardwareIds ids(source);
    EXPECT_EQ(ids.vendorName(IdsDatabase::Pci, 0x8086), "0x8086");
}

TEST(ParseHardwareId, SysfsFormsOfPciAndUsbIds) {
    EXPECT_EQ(parseHardwareId("0x8086\n"), 0x8086);
    EXPECT_EQ(parseHardwareId("046d\n"), 0x046d);
    EXPECT_EQ(parseHardwareId(" 0X1AF4 "), 0x1af4);
    EXPECT_EQ(parseHardwareId("0x0"), 0);
    EXPECT_EQ(parseHardwareId(""), std::nullopt);
    EXPECT_EQ(parseHardwareId("0x"), std::nullopt);
    EXPECT_EQ(parseHardwareId("0x18086"), std::nullopt);
    EXPECT_EQ(parseHardwareId("ATA     "), std::nullopt);
    EXPECT_EQ(parseHardwareId("80 86"), std::nullopt);
}

TEST(HexIdText, FourLowerCaseDigits) {
    EXPECT_EQ(hexIdText(0), "0x0000");
    EXPECT_EQ(hexIdText(0xABCD), "0xabcd");
    EXPECT_EQ(hexIdText(0x46d), "0x046d");
}

}  // namespace
}  // namespace tov
