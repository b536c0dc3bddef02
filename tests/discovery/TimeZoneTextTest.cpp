#include "discovery/TimeZoneText.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

// 2026-01-15T12:00:00Z, a winter instant in the north.
const std::chrono::system_clock::time_point kWinter = std::chrono::system_clock::from_time_t(1768478400);
// 2026-07-15T12:00:00Z, a summer instant in the north.
const std::chrono::system_clock::time_point kSummer = std::chrono::system_clock::from_time_t(1784116800);

std::string textOfZone(const char* id, std::chrono::system_clock::time_point instant) {
    const std::optional<ZoneAtInstant> zone = zoneAtInstant(id, instant);
    if (!zone) return "<unknown>";
    return timeZoneStringWithTimeZone(zone->offsetSeconds, zone->standardName);
}

TEST(TimeZoneText, HalfHourEastOfGmtDropsTheMinutesAndWritesAMinus) {
    EXPECT_EQ(timeZoneStringWithTimeZone(19800, "India Standard Time"), "UTC-05:00 India Standard Time");
}

TEST(TimeZoneText, ZeroOffsetGivesUtcMinusZero) {
    EXPECT_EQ(timeZoneStringWithTimeZone(0, "Greenwich Mean Time"), "UTC-00:00 Greenwich Mean Time");
}

TEST(TimeZoneText, TenHoursWestKeepsTheLeadingZero) {
    EXPECT_EQ(timeZoneStringWithTimeZone(-36000, "Hawaii-Aleutian Standard Time"),
              "UTC-010:00 Hawaii-Aleutian Standard Time");
}

TEST(TimeZoneText, EastAndWestOfTheSameHoursGiveTheSamePrefix) {
    EXPECT_EQ(timeZoneStringWithTimeZone(18000, "X"), timeZoneStringWithTimeZone(-18000, "X"));
    // Less than an hour truncates toward zero.
    EXPECT_EQ(timeZoneStringWithTimeZone(-1800, "X"), "UTC-00:00 X");
}

TEST(TimeZoneText, IcuGivesTheOffsetAndTheLongStandardNameOfRealZones) {
    EXPECT_EQ(textOfZone("Asia/Kolkata", kWinter), "UTC-05:00 India Standard Time");
    EXPECT_EQ(textOfZone("Europe/London", kWinter), "UTC-00:00 Greenwich Mean Time");
    EXPECT_EQ(textOfZone("Pacific/Honolulu", kWinter), "UTC-010:00 Hawaii-Aleutian Standard Time");
    EXPECT_EQ(textOfZone("UTC", kWinter), "UTC-00:00 Coordinated Universal Time");
}

TEST(TimeZoneText, DaylightTimeMovesTheOffsetButNotTheName) {
    const std::optional<ZoneAtInstant> winter = zoneAtInstant("Europe/Berlin", kWinter);
    const std::optional<ZoneAtInstant> summer = zoneAtInstant("Europe/Berlin", kSummer);
    ASSERT_TRUE(winter && summer);
    EXPECT_EQ(winter->offsetSeconds, 3600);
    EXPECT_EQ(summer->offsetSeconds, 7200);
    EXPECT_EQ(summer->standardName, "Central European Standard Time");
    EXPECT_EQ(textOfZone("Europe/Berlin", kSummer), "UTC-02:00 Central European Standard Time");
}

TEST(TimeZoneText, UnknownZoneIdsGiveNothing) {
    EXPECT_FALSE(zoneAtInstant("Mars/Olympus_Mons", kWinter));
    EXPECT_FALSE(zoneAtInstant("", kWinter));
}

}  // namespace
}  // namespace tov
