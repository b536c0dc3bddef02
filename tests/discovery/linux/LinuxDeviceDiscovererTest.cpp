#include "discovery/linux/LinuxDeviceDiscoverer.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

ArrayRef serialsOf(const std::shared_ptr<MemorySystemSource>& source) {
    return LinuxDeviceDiscoverer(source, std::make_shared<HardwareIds>(source)).discoverInfo()->get("serialNumbers").array();
}

TEST(LinuxDeviceDiscoverer, GivesTheTrimmedProductSerialAsOnePlainDictionary) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/sys/class/dmi/id/product_serial", "  5CG1234XYZ \n");
    const ArrayRef serials = serialsOf(source);
    ASSERT_EQ(serials->size(), 1u);
    EXPECT_EQ((*serials)[0].dictionary()->get("serialNumber"), Value("5CG1234XYZ"));
}

TEST(LinuxDeviceDiscoverer, PlaceholdersEmptyOrMissingSerialsGiveAnEmptyArray) {
    for (const char* placeholder : {"Not Specified\n", "To Be Filled By O.E.M.\n", "0\n", "\n", "  "}) {
        auto source = std::make_shared<MemorySystemSource>();
        source->file("/sys/class/dmi/id/product_serial", placeholder);
        EXPECT_TRUE(serialsOf(source)->empty()) << placeholder;
    }
    EXPECT_TRUE(serialsOf(std::make_shared<MemorySystemSource>())->empty());
}

}  // namespace
}  // namespace tov
