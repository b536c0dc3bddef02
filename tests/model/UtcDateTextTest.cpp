#include "model/UtcDateText.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

using namespace std::chrono;

constexpr auto kSample = sys_days{2023y / November / 2} + 7h + 45min + 10s;

TEST(UtcDateText, FormatsTheInstantInUtcWithWholeSeconds) {
    EXPECT_EQ(formatUtcDate(kSample), "2023-11-02T07:45:10Z");
    EXPECT_EQ(formatUtcDate(kSample + 999ms), "2023-11-02T07:45:10Z");
    EXPECT_EQ(formatUtcDate(system_clock::time_point{}), "1970-01-01T00:00:00Z");
}

TEST(UtcDateText, AFractionBeforeTheEpochRoundsDown) {
    EXPECT_EQ(formatUtcDate(system_clock::time_point{} - 500ms), "1969-12-31T23:59:59Z");
}

TEST(UtcDateText, ParsesWhatItFormats) {
    EXPECT_EQ(parseUtcDate("2023-11-02T07:45:10Z"), system_clock::time_point(kSample));
    const auto leapDay = sys_days{2024y / February / 29} + 23h + 59min + 59s;
    EXPECT_EQ(parseUtcDate(formatUtcDate(leapDay)), system_clock::time_point(leapDay));
}

TEST(UtcDateText, RefusesTextAroundTheDate) {
    EXPECT_FALSE(parseUtcDate(""));
    EXPECT_FALSE(parseUtcDate("2023-11-02T07:45:10Z "));
    EXPECT_FALSE(parseUtcDate(" 2023-11-02T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-11-02T07:45:10Zulu"));
    EXPECT_FALSE(parseUtcDate("2023-11-02T07:45:10"));
    EXPECT_FALSE(parseUtcDate("2023-11-02T07:45:10.5Z"));
}

TEST(UtcDateText, RefusesOtherLayouts) {
    EXPECT_FALSE(parseUtcDate("2023-11-02 07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023/11/02T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-1-02T07:45:10ZZ"));
    EXPECT_FALSE(parseUtcDate("+023-11-02T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-11-02T07:45:1aZ"));
    EXPECT_FALSE(parseUtcDate("not a date at all!!!"));
}

TEST(UtcDateText, RefusesFieldsOutOfTheirRange) {
    EXPECT_FALSE(parseUtcDate("2023-13-02T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-00-02T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-11-31T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-02-29T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-11-00T07:45:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-11-02T24:00:00Z"));
    EXPECT_FALSE(parseUtcDate("2023-11-02T07:60:10Z"));
    EXPECT_FALSE(parseUtcDate("2023-11-02T07:45:60Z"));
}

}  // namespace
}  // namespace tov
