#include "model/QVCoreFoundationOperatingSystem.h"

#include <gtest/gtest.h>

#include "RecordSamples.h"

namespace tov {
namespace {

using namespace std::chrono;
using testing::compactJson;

constexpr auto kInstalled = sys_days{2023y / November / 2} + 7h + 45min + 10s;

std::shared_ptr<QVCoreFoundationOperatingSystem> operatingSystem(std::string_view installDate,
                                                                 std::string_view lastBootTime) {
    auto record = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    record->setOSInstallDateAsString(installDate);
    record->setOSLastBootTimeAsString(lastBootTime);
    record->setBuild("23D60");
    record->setEdition("macOS 14.3.1");
    return record;
}

TEST(QVCoreFoundationOperatingSystem, WritesDatesAsUtcText) {
    auto record = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    record->setOSInstallDate(kInstalled + 250ms);
    record->setOSLastBootTime(sys_days{2024y / January / 5} + 23h + 5s);
    record->setBuild("23D60");
    record->setEdition("macOS 14.3.1");
    EXPECT_EQ(compactJson(*record),
              R"({"installDate":"2023-11-02T07:45:10Z","lastBootTime":"2024-01-05T23:00:05Z",)"
              R"("build":"23D60","edition":"macOS 14.3.1"})");
    EXPECT_EQ(record->osInstallDate(), system_clock::time_point(kInstalled));
    EXPECT_EQ(record->osLastBootTime(), system_clock::time_point(sys_days{2024y / January / 5} + 23h + 5s));
    EXPECT_EQ(record->build(), "23D60");
    EXPECT_EQ(record->edition(), "macOS 14.3.1");
}

TEST(QVCoreFoundationOperatingSystem, TheTextSettersGoThroughTheStringPath) {
    auto record = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    record->setOSInstallDateAsString(" 2023-11-02T07:45:10Z\n");
    record->setOSLastBootTimeAsString(std::nullopt);
    EXPECT_EQ(compactJson(*record), R"({"installDate":"2023-11-02T07:45:10Z","lastBootTime":""})");
    EXPECT_EQ(record->osInstallDate(), system_clock::time_point(kInstalled));
    EXPECT_FALSE(record->osLastBootTime());
}

TEST(QVCoreFoundationOperatingSystem, DatesAreAbsentWhenUnsetEmptyOrUnparseable) {
    auto record = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    EXPECT_FALSE(record->osInstallDate());
    record->setOSInstallDateAsString("");
    EXPECT_FALSE(record->osInstallDate());
    record->setOSInstallDateAsString("2 November 2023");
    EXPECT_FALSE(record->osInstallDate());
    record->setOSInstallDateAsString("2023-11-02T07:45:10Z trailing");
    EXPECT_FALSE(record->osInstallDate());
}

TEST(QVCoreFoundationOperatingSystem, IsNamedByTheRawInstallDateText) {
    EXPECT_FALSE(QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem()->identifier());
    EXPECT_EQ(operatingSystem("2023-11-02T07:45:10Z", "")->identifier(), "2023-11-02T07:45:10Z");
    EXPECT_EQ(operatingSystem("not a date", "")->identifier(), "not a date");
    EXPECT_EQ(operatingSystem("", "")->identifier(), "");
}

TEST(QVCoreFoundationOperatingSystem, WithoutAValidInstallDateItIsNotEqualToItself) {
    const auto empty = operatingSystem("", "2024-01-05T23:00:05Z");
    EXPECT_FALSE(empty->isEqual(*empty));
    const auto unparseable = operatingSystem("yesterday", "2024-01-05T23:00:05Z");
    EXPECT_FALSE(unparseable->isEqual(*unparseable));
    EXPECT_FALSE(unparseable->isEqual(*operatingSystem("yesterday", "2024-01-05T23:00:05Z")));
    EXPECT_FALSE(operatingSystem("2023-11-02T07:45:10Z", "")->isEqual(*unparseable));
}

TEST(QVCoreFoundationOperatingSystem, EqualInstallDateBuildAndEditionAreEqualWhateverTheBootTime) {
    const auto first = operatingSystem("2023-11-02T07:45:10Z", "2024-01-05T23:00:05Z");
    const auto second = operatingSystem("2023-11-02T07:45:10Z", "2024-03-01T08:00:00Z");
    EXPECT_TRUE(first->isEqual(*first));
    EXPECT_TRUE(first->isEqual(*second));
    EXPECT_TRUE(second->isEqual(*first));
}

TEST(QVCoreFoundationOperatingSystem, EqualityComparesDateBuildAndEdition) {
    const auto first = operatingSystem("2023-11-02T07:45:10Z", "");
    EXPECT_FALSE(first->isEqual(*operatingSystem("2023-11-02T07:45:11Z", "")));
    auto otherBuild = operatingSystem("2023-11-02T07:45:10Z", "");
    otherBuild->setBuild("23E214");
    EXPECT_FALSE(first->isEqual(*otherBuild));
    auto otherEdition = operatingSystem("2023-11-02T07:45:10Z", "");
    otherEdition->setEdition("macOS 14.4");
    EXPECT_FALSE(first->isEqual(*otherEdition));
}

}  // namespace
}  // namespace tov
