#include "discovery/macos/QuerySysCTL.h"

#include <gtest/gtest.h>

#include "discovery/SystemFacts.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

TEST(MacQuerySysCTL, ATextParameterIsItsText) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.fact(facts::kSysctl, "hw.model", "MacBookPro11,1");
    EXPECT_EQ(QuerySysCTL(source, "hw.model"), "MacBookPro11,1");
}

TEST(MacQuerySysCTL, AnEmptyTextParameterIsAnEmptyText) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.fact(facts::kSysctl, "kern.version", "");
    EXPECT_EQ(QuerySysCTL(source, "kern.version"), "");
}

TEST(MacQuerySysCTL, AMissingParameterIsNothing) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.fact(facts::kSysctl, "hw.model", "MacBookPro11,1");
    EXPECT_EQ(QuerySysCTL(source, "hw.cpufrequency"), std::nullopt);
}

TEST(MacQuerySysCTL, AParameterThatIsNotTextIsNothing) {
    MemorySystemSource source(SystemSource::kMacOSPlatform);
    source.fact(facts::kSysctl, "hw.ncpu", 8);
    source.fact(facts::kSysctl, "vm.swapusage", Value(makeDictionary()));
    EXPECT_EQ(QuerySysCTL(source, "hw.ncpu"), std::nullopt);
    EXPECT_EQ(QuerySysCTL(source, "vm.swapusage"), std::nullopt);
}

}  // namespace
}  // namespace tov
