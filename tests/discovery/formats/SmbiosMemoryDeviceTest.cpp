#include "discovery/formats/SmbiosMemoryDevice.h"

#include <gtest/gtest.h>

#include "discovery/formats/SmbiosProcessor.h"
#include "discovery/formats/SmbiosStructure.h"
#include "support/SmbiosBytes.h"

namespace tov {
namespace {

using testing::MemoryDeviceBytes;

constexpr std::uint64_t kMiB = 1024 * 1024;
constexpr std::uint64_t kGiB = 1024 * kMiB;

MemoryDeviceBytes serverDimm() {
    MemoryDeviceBytes dimm;
    dimm.size = 16384;
    dimm.formFactor = 0x09;
    dimm.locator = "A1";
    dimm.bankLocator = "NODE 1";
    dimm.memoryType = 0x1A;
    dimm.speed = 2933;
    dimm.configuredSpeed = 2666;
    dimm.manufacturer = "Hynix";
    dimm.serialNumber = "4A1B2C3D";
    dimm.partNumber = "HMA82GR7CJR8N-WM    ";
    return dimm;
}

TEST(SmbiosMemoryDevice, DecodesAnInstalledModule) {
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(serverDimm().bytes());
    ASSERT_TRUE(device);
    EXPECT_TRUE(device->installed);
    EXPECT_EQ(device->sizeBytes, 16 * kGiB);
    EXPECT_EQ(device->formFactor, "DIMM");
    EXPECT_EQ(device->locator, "A1");
    EXPECT_EQ(device->bankLocator, "NODE 1");
    EXPECT_EQ(device->memoryType, "DDR4");
    EXPECT_EQ(device->speed, 2933u);
    EXPECT_EQ(device->configuredSpeed, 2666u);
    EXPECT_EQ(device->manufacturer, "Hynix");
    EXPECT_EQ(device->serialNumber, "4A1B2C3D");
    EXPECT_EQ(device->partNumber, "HMA82GR7CJR8N-WM");
}

TEST(SmbiosMemoryDevice, AnEmptySlotHasSizeZeroAndIsNotInstalled) {
    MemoryDeviceBytes slot;
    slot.size = 0;
    slot.memoryType = 0x02;
    slot.locator = "B6";
    slot.manufacturer = "Not Specified";
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(slot.bytes());
    ASSERT_TRUE(device);
    EXPECT_FALSE(device->installed);
    EXPECT_EQ(device->sizeBytes, 0u);
    EXPECT_EQ(device->memoryType, "Unknown");
    EXPECT_EQ(device->locator, "B6");
}

TEST(SmbiosMemoryDevice, UnknownSizeIsInstalledWithoutASize) {
    MemoryDeviceBytes module = serverDimm();
    module.size = 0xFFFF;
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(module.bytes());
    ASSERT_TRUE(device);
    EXPECT_TRUE(device->installed);
    EXPECT_FALSE(device->sizeBytes);
}

TEST(SmbiosMemoryDevice, ExtendedSizeCountsMegabytesWithoutItsTopBit) {
    MemoryDeviceBytes module = serverDimm();
    module.size = 0x7FFF;
    module.extendedSize = 0x80000000u | (64 * 1024);
    EXPECT_EQ(decodeSmbiosMemoryDevice(module.bytes())->sizeBytes, 64 * kGiB);
}

TEST(SmbiosMemoryDevice, ExtendedSizeMissingFromAShortEntryIsUnknown) {
    MemoryDeviceBytes module = serverDimm();
    module.size = 0x7FFF;
    module.length = 0x1B;  // SMBIOS 2.6: no extended size field
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(module.bytes());
    ASSERT_TRUE(device);
    EXPECT_TRUE(device->installed);
    EXPECT_FALSE(device->sizeBytes);
}

TEST(SmbiosMemoryDevice, TheGranularityBitMeansKilobytes) {
    MemoryDeviceBytes module = serverDimm();
    module.size = 0x8000 | 512;
    EXPECT_EQ(decodeSmbiosMemoryDevice(module.bytes())->sizeBytes, 512u * 1024u);
    module.size = 512;
    EXPECT_EQ(decodeSmbiosMemoryDevice(module.bytes())->sizeBytes, 512 * kMiB);
}

TEST(SmbiosMemoryDevice, SpeedsBeyond65534ComeFromTheExtendedFields) {
    MemoryDeviceBytes module = serverDimm();
    module.speed = 0xFFFF;
    module.extendedSpeed = 70000;
    module.configuredSpeed = 0xFFFF;
    module.extendedConfiguredSpeed = 68000;
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(module.bytes());
    EXPECT_EQ(device->speed, 70000u);
    EXPECT_EQ(device->configuredSpeed, 68000u);
}

TEST(SmbiosMemoryDevice, SolderedLpddr5IsARowOfChips) {
    MemoryDeviceBytes chip;
    chip.size = 4096;
    chip.formFactor = 0x0B;
    chip.memoryType = 0x23;
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(chip.bytes());
    EXPECT_EQ(device->formFactor, "Row Of Chips");
    EXPECT_EQ(device->memoryType, "LPDDR5");
}

TEST(SmbiosMemoryDevice, TypeNamesFollowTheTable) {
    EXPECT_EQ(smbiosMemoryTypeName(0x18), "DDR3");
    EXPECT_EQ(smbiosMemoryTypeName(0x1E), "LPDDR4");
    EXPECT_EQ(smbiosMemoryTypeName(0x22), "DDR5");
    EXPECT_EQ(smbiosMemoryTypeName(0x24), "HBM3");
    EXPECT_EQ(smbiosMemoryTypeName(0xEE), "Unknown");
    EXPECT_EQ(smbiosMemoryFormFactorName(0x0D), "SODIMM");
    EXPECT_EQ(smbiosMemoryFormFactorName(0x40), "Unknown");
}

TEST(SmbiosMemoryDevice, AnOldEntryWithoutSpeedOrStringsReadsThemAsUnknown) {
    MemoryDeviceBytes module = serverDimm();
    module.length = 0x15;  // SMBIOS 2.1
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(module.bytes());
    ASSERT_TRUE(device);
    EXPECT_EQ(device->sizeBytes, 16 * kGiB);
    EXPECT_EQ(device->speed, 0u);
    EXPECT_EQ(device->manufacturer, "");
    EXPECT_EQ(device->serialNumber, "");
}

TEST(SmbiosMemoryDevice, ATruncatedEntryIsNoDeviceOrKeepsOnlyWhatIsThere) {
    const std::string whole = serverDimm().bytes();
    EXPECT_FALSE(decodeSmbiosMemoryDevice(whole.substr(0, 3)));
    EXPECT_FALSE(decodeSmbiosMemoryDevice(whole.substr(0, 0x10)));  // cut before the memory type
    const std::optional<SmbiosMemoryDevice> cut = decodeSmbiosMemoryDevice(whole.substr(0, 0x19));
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->sizeBytes, 16 * kGiB);
    EXPECT_EQ(cut->locator, "");  // the strings are gone
    EXPECT_EQ(cut->configuredSpeed, 0u);
}

TEST(SmbiosMemoryDevice, HostileStringIndexesAndMissingTerminatorsAreHarmless) {
    std::string bytes = serverDimm().bytes();
    bytes[0x17] = static_cast<char>(200);  // manufacturer index beyond the strings
    bytes.resize(bytes.size() - 2);        // no double NUL at the end
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(bytes);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->manufacturer, "");
    EXPECT_EQ(device->locator, "A1");
    EXPECT_EQ(device->partNumber, "HMA82GR7CJR8N-WM");
}

TEST(SmbiosMemoryDevice, ALengthByteLargerThanTheDataReadsOnlyTheData) {
    std::string bytes = serverDimm().bytes().substr(0, 0x20);
    bytes[1] = static_cast<char>(0xFF);
    const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(bytes);
    ASSERT_TRUE(device);
    EXPECT_EQ(device->sizeBytes, 16 * kGiB);
    EXPECT_EQ(device->configuredSpeed, 0u);
    EXPECT_EQ(device->locator, "");
}

TEST(SmbiosMemoryDevice, OtherTypesAndTinyLengthsAreRefused) {
    EXPECT_FALSE(decodeSmbiosMemoryDevice(testing::smbiosProcessorBytes("Cortex-A72")));
    std::string bytes = serverDimm().bytes();
    bytes[1] = 2;
    EXPECT_FALSE(decodeSmbiosMemoryDevice(bytes));
    EXPECT_FALSE(decodeSmbiosMemoryDevice(""));
}

TEST(SmbiosMemoryDevice, ControlCharactersAndInvalidUtf8InStringsAreCleaned) {
    MemoryDeviceBytes module = serverDimm();
    module.manufacturer = "Sam\x01sung\xff";
    EXPECT_EQ(decodeSmbiosMemoryDevice(module.bytes())->manufacturer, "Samsung\xEF\xBF\xBD");
}

TEST(SmbiosStructure, ReadsLittleEndianFieldsWithinTheDeclaredLength) {
    const std::optional<SmbiosStructure> structure =
        SmbiosStructure::parse(testing::smbiosStructure(200, {0x34, 0x12, 0x78, 0x56}, {"one"}));
    ASSERT_TRUE(structure);
    EXPECT_EQ(structure->type(), 200);
    EXPECT_EQ(structure->declaredLength(), 8);
    EXPECT_EQ(structure->wordAt(4), 0x1234);
    EXPECT_EQ(structure->doubleWordAt(4), 0x56781234u);
    EXPECT_FALSE(structure->wordAt(7));
    EXPECT_FALSE(structure->byteAt(8));
}

TEST(SmbiosProcessor, GivesTheVersionString) {
    EXPECT_EQ(smbiosProcessorVersion(testing::smbiosProcessorBytes("  Cortex-A72  ")), "Cortex-A72");
    EXPECT_FALSE(smbiosProcessorVersion(testing::smbiosProcessorBytes("")));
    EXPECT_FALSE(smbiosProcessorVersion(serverDimm().bytes()));
}

}  // namespace
}  // namespace tov
