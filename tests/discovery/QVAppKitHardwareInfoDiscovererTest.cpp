#include "discovery/QVAppKitHardwareInfoDiscoverer.h"

#include <gtest/gtest.h>

#include "model/QVAppKitPrinter.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

Value destination(const std::string& name, const std::optional<std::string>& makeAndModel) {
    DictionaryRef entry = makeDictionary();
    entry->set("name", name);
    if (makeAndModel) entry->set("makeAndModel", *makeAndModel);
    return Value(entry);
}

// name → driver of each printer, in section order.
std::vector<std::pair<std::string, std::string>> printersOf(const Value& destinations) {
    auto source = std::make_shared<MemorySystemSource>();
    if (!destinations.isAbsent()) source->fact("printers", "", destinations);
    QVAppKitHardwareInfoDiscoverer discoverer(source);
    const ArrayRef printers = discoverer.discoverInfo()->get("printers").array();
    std::vector<std::pair<std::string, std::string>> found;
    if (!printers) return found;
    for (const Value& element : *printers) {
        const auto printer = std::dynamic_pointer_cast<QVAppKitPrinter>(element.record());
        if (!printer) continue;
        found.emplace_back(printer->name().value_or("?"), printer->driver().value_or("?"));
    }
    return found;
}

using Printers = std::vector<std::pair<std::string, std::string>>;

TEST(QVAppKitHardwareInfoDiscoverer, NamesTheSectionAppKit) {
    QVAppKitHardwareInfoDiscoverer discoverer(std::make_shared<MemorySystemSource>());
    EXPECT_EQ(discoverer.sourceName(), "appkit");
}

TEST(QVAppKitHardwareInfoDiscoverer, EachDestinationIsAPrinterWithItsMakeAndModelAsDriver) {
    const Value destinations(makeArray({destination("Office_LaserJet", "HP LaserJet Pro M404n, driverless, 2.0")}));
    EXPECT_EQ(printersOf(destinations), (Printers{{"Office_LaserJet", "HP LaserJet Pro M404n, driverless, 2.0"}}));
}

TEST(QVAppKitHardwareInfoDiscoverer, EqualPrintersAppearOnceAndAllAreSortedByName) {
    const Value destinations(makeArray({destination("Zebra", "Zebra ZPL Label Printer"),
                                        destination("Accounting", "Generic PostScript Printer"),
                                        destination("Zebra", "Zebra ZPL Label Printer"),
                                        destination("Accounting", "Brother HL-L2350DW")}));
    EXPECT_EQ(printersOf(destinations), (Printers{{"Accounting", "Brother HL-L2350DW"},
                                                  {"Accounting", "Generic PostScript Printer"},
                                                  {"Zebra", "Zebra ZPL Label Printer"}}));
}

TEST(QVAppKitHardwareInfoDiscoverer, TheSamePrintersGiveTheSameSectionInAnyOrder) {
    const Value forward(makeArray({destination("b", "B"), destination("a", "A"), destination("c", "C")}));
    const Value backward(makeArray({destination("c", "C"), destination("a", "A"), destination("b", "B")}));
    EXPECT_EQ(printersOf(forward), printersOf(backward));
}

TEST(QVAppKitHardwareInfoDiscoverer, APrinterWithoutMakeAndModelHasAnEmptyDriver) {
    EXPECT_EQ(printersOf(Value(makeArray({destination("Queue", std::nullopt)}))), (Printers{{"Queue", ""}}));
}

TEST(QVAppKitHardwareInfoDiscoverer, NoPrintersGiveAnEmptyArray) {
    EXPECT_TRUE(printersOf(Value(makeArray())).empty());
    EXPECT_TRUE(printersOf(Value()).empty());
    auto source = std::make_shared<MemorySystemSource>();
    const Value printers = QVAppKitHardwareInfoDiscoverer(source).discoverInfo()->get("printers");
    ASSERT_TRUE(printers.isArray());
    EXPECT_TRUE(printers.array()->empty());
}

TEST(QVAppKitHardwareInfoDiscoverer, MalformedDestinationsAreLeftOut) {
    DictionaryRef nameless = makeDictionary();
    nameless->set("makeAndModel", "Orphan");
    const Value destinations(makeArray({Value("Queue"), Value(nameless), destination("Kept", "Driver")}));
    EXPECT_EQ(printersOf(destinations), (Printers{{"Kept", "Driver"}}));
    EXPECT_TRUE(printersOf(Value("not a list")).empty());
}

}  // namespace
}  // namespace tov
