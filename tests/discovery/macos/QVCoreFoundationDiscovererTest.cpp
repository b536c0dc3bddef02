#include "discovery/macos/QVCoreFoundationDiscoverer.h"

#include <gtest/gtest.h>

#include "OSSectionMachine.h"
#include "discovery/SystemFacts.h"
#include "model/QVCoreFoundationOperatingSystem.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::dictionaryOf;
using testing::MemorySystemSource;

constexpr const char* kSystemVersionPath = "/System/Library/CoreServices/SystemVersion.plist";

std::shared_ptr<MemorySystemSource> sonoma() {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    source->file(kSystemVersionPath, testing::systemVersionWith("<key>ProductBuildVersion</key><string>23E224</string>"
                                                                "<key>ProductUserVisibleVersion</key><string>14.4.1</string>"
                                                                "<key>ProductVersion</key><string>14.4</string>"))
        .fact(facts::kSysctl, "kern.boottime",
              dictionaryOf({{"seconds", Value(1767225600)}, {"microseconds", Value(999999)}}))
        .fact(facts::kBirthTime, "/private/var/db/.AppleSetupDone", dictionaryOf({{"seconds", Value(1700000000)}}));
    return source;
}

std::shared_ptr<QVCoreFoundationOperatingSystem> recordOf(const std::shared_ptr<MemorySystemSource>& source) {
    const DictionaryRef section = QVCoreFoundationDiscoverer(source).discoverInfo();
    EXPECT_EQ(section->size(), 1u);
    const ArrayRef systems = section->get("operatingSystems").array();
    EXPECT_TRUE(systems && systems->size() == 1u);
    if (!systems || systems->empty()) return nullptr;
    return std::dynamic_pointer_cast<QVCoreFoundationOperatingSystem>((*systems)[0].record());
}

Value storedAt(const QVCoreFoundationOperatingSystem& system, const char* key) {
    return system.innerDictionary()->get(key);
}

TEST(QVCoreFoundationDiscoverer, OneRecordWithEditionBuildInstallDateAndBootTime) {
    EXPECT_EQ(QVCoreFoundationDiscoverer(sonoma()).sourceName(), "corefoundation");
    const auto system = recordOf(sonoma());
    ASSERT_TRUE(system);
    EXPECT_EQ(system->edition(), "14.4.1");
    EXPECT_EQ(system->build(), "23E224");
    EXPECT_EQ(storedAt(*system, "installDate"), Value("2023-11-14T22:13:20Z"));
    // The microseconds are dropped, never rounded up.
    EXPECT_EQ(storedAt(*system, "lastBootTime"), Value("2026-01-01T00:00:00Z"));
}

TEST(QVCoreFoundationDiscoverer, AnUnreadableBootTimeIsOneSecondBefore1970) {
    for (const Value& fact : {Value(), Value(5), dictionaryOf({{"microseconds", Value(3)}}),
                              dictionaryOf({{"seconds", Value("1767225600")}}),
                              dictionaryOf({{"seconds", Value(true)}})}) {
        auto source = sonoma();
        source->fact(facts::kSysctl, "kern.boottime", fact);
        const auto system = recordOf(source);
        ASSERT_TRUE(system);
        EXPECT_EQ(storedAt(*system, "lastBootTime"), Value("1969-12-31T23:59:59Z"));
        EXPECT_EQ(QVCoreFoundationDiscoverer(source).bootTime(),
                  QVCoreFoundationDiscoverer::TimePoint(std::chrono::seconds(-1)));
    }
}

TEST(QVCoreFoundationDiscoverer, ABootTimeNoDateCanHoldCountsAsUnreadable) {
    for (const Value& seconds : {Value(-5), Value(std::int64_t{253402300800}), Value(1e300)}) {
        auto source = sonoma();
        source->fact(facts::kSysctl, "kern.boottime", dictionaryOf({{"seconds", seconds}}));
        EXPECT_EQ(QVCoreFoundationDiscoverer(source).bootTime(),
                  QVCoreFoundationDiscoverer::TimePoint(std::chrono::seconds(-1)));
    }
}

TEST(QVCoreFoundationDiscoverer, WithoutASetupDoneDateTheInstallDateIsAbsent) {
    auto source = sonoma();
    source->fact(facts::kBirthTime, "/private/var/db/.AppleSetupDone", Value());
    EXPECT_EQ(QVCoreFoundationDiscoverer(source).installTime(), std::nullopt);
    const auto system = recordOf(source);
    ASSERT_TRUE(system);
    EXPECT_FALSE(system->innerDictionary()->contains("installDate"));
    EXPECT_EQ(storedAt(*system, "lastBootTime"), Value("2026-01-01T00:00:00Z"));
    source->fact(facts::kBirthTime, "/private/var/db/.AppleSetupDone", dictionaryOf({{"seconds", Value(-1)}}));
    EXPECT_EQ(QVCoreFoundationDiscoverer(source).installTime(), std::nullopt);
}

TEST(QVCoreFoundationDiscoverer, AMissingOrCorruptSystemVersionFileLeavesEditionAndBuildEmpty) {
    const std::string whole = testing::kSystemVersionXml;
    for (const std::string& bytes : {std::string(), whole.substr(0, 200), std::string("<plist><array/></plist>"),
                                     testing::systemVersionWith("<key>ProductBuildVersion</key><integer>23</integer>")}) {
        auto source = sonoma();
        source->file(kSystemVersionPath, bytes);
        const auto system = recordOf(source);
        ASSERT_TRUE(system);
        EXPECT_EQ(system->edition().value_or(""), "") << bytes;
        EXPECT_EQ(system->build().value_or(""), "") << bytes;
        EXPECT_EQ(storedAt(*system, "installDate"), Value("2023-11-14T22:13:20Z"));
    }
    auto without = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    const auto system = recordOf(without);
    ASSERT_TRUE(system);
    EXPECT_EQ(system->edition().value_or(""), "");
    EXPECT_EQ(storedAt(*system, "lastBootTime"), Value("1969-12-31T23:59:59Z"));
}

}  // namespace
}  // namespace tov
