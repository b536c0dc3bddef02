#include "discovery/QVIOKitUsbHardwareVendorList.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "discovery/QVDiscovererFactory.h"
#include "discovery/formats/HardwareIds.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using List = QVIOKitUsbHardwareVendorList;

class QVIOKitUsbHardwareVendorListTest : public ::testing::Test {
protected:
    void TearDown() override { List::releaseVendorList(); }
};

TEST_F(QVIOKitUsbHardwareVendorListTest, NamesAppleByItsDecimalId) {
    EXPECT_EQ(List::vendorNameForVendorId(1452), "Apple, Inc.");
    EXPECT_EQ(List::vendorNameForVendorId(0x05AC), "Apple, Inc.");
}

TEST_F(QVIOKitUsbHardwareVendorListTest, NoVendorAndTheReservedIdHaveNoName) {
    EXPECT_EQ(List::vendorNameForVendorId(0), std::nullopt);
    EXPECT_EQ(List::vendorNameForVendorId(65535), std::nullopt);
}

TEST_F(QVIOKitUsbHardwareVendorListTest, IdsBeyondSixteenBitsHaveNoName) {
    EXPECT_EQ(List::vendorNameForVendorId(65536 + 1452), std::nullopt);
}

TEST_F(QVIOKitUsbHardwareVendorListTest, ThreeIdsNameNvidia) {
    EXPECT_EQ(List::vendorNameForVendorId(2389), "NVIDIA");
    EXPECT_EQ(List::vendorNameForVendorId(4318), "NVIDIA");
    EXPECT_EQ(List::vendorNameForVendorId(56848), "NVIDIA");
}

TEST_F(QVIOKitUsbHardwareVendorListTest, FixedRowsStandAsWritten) {
    const std::pair<unsigned long, const char*> rows[] = {
        {1, "Kavi-EVAL"},
        {1003, "Atmel Corporation"},
        {1027, "Future Technology Devices International Limited"},
        {1118, "Microsoft Corporation"},
        {1133, "Logitech Inc."},
        {1452, "Apple, Inc."},
        {2389, "NVIDIA"},
        {4318, "NVIDIA"},
        {56848, "NVIDIA"},
        {8888, "Motorola MDS"},
        {60186, "Empia Technology, Inc."},
    };
    for (const auto& [id, name] : rows) EXPECT_EQ(List::vendorNameForVendorId(id), name) << id;
}

TEST_F(QVIOKitUsbHardwareVendorListTest, OtherVendorsAreNamedAsTheDatabaseNamesThem) {
    std::ifstream file(TOV_USB_IDS_PATH);
    ASSERT_TRUE(file) << TOV_USB_IDS_PATH;
    std::ostringstream text;
    text << file.rdbuf();
    for (const std::uint16_t vendor : {0x046a, 0x0624, 0x0627, 0x413c}) {
        const std::optional<std::string> expected = idsVendorName(text.str(), vendor);
        ASSERT_TRUE(expected.has_value()) << vendor;
        EXPECT_EQ(List::vendorNameForVendorId(vendor), expected) << vendor;
    }
}

TEST_F(QVIOKitUsbHardwareVendorListTest, ALookupAfterReleaseRebuildsTheTable) {
    EXPECT_EQ(List::vendorNameForVendorId(1452), "Apple, Inc.");
    EXPECT_TRUE(List::isVendorListBuilt());
    List::releaseVendorList();
    EXPECT_FALSE(List::isVendorListBuilt());
    EXPECT_EQ(List::vendorNameForVendorId(1133), "Logitech Inc.");
    EXPECT_TRUE(List::isVendorListBuilt());
}

TEST_F(QVIOKitUsbHardwareVendorListTest, TheFactoryReleasesTheTable) {
    List::lazyInitVendorsList();
    ASSERT_TRUE(List::isVendorListBuilt());
    QVDiscovererFactory factory(std::make_shared<testing::MemorySystemSource>(), QVDiscovererFactory::Options{});
    factory.releaseVendorList();
    EXPECT_FALSE(List::isVendorListBuilt());
}

}  // namespace
}  // namespace tov
