#include "discovery/linux/LinuxTimeZoneId.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

TEST(LinuxTimeZoneId, TheLocaltimeLinkNamesTheZone) {
    MemorySystemSource source;
    source.link("/etc/localtime", "../usr/share/zoneinfo/America/New_York");
    source.file("/etc/timezone", "Europe/Paris\n");
    EXPECT_EQ(linuxTimeZoneId(source), "America/New_York");
}

TEST(LinuxTimeZoneId, LinkTargetForms) {
    EXPECT_EQ(zoneIdOfLocaltimeTarget("/usr/share/zoneinfo/Europe/Berlin"), "Europe/Berlin");
    EXPECT_EQ(zoneIdOfLocaltimeTarget("/usr/share/zoneinfo/posix/Asia/Kolkata"), "Asia/Kolkata");
    EXPECT_EQ(zoneIdOfLocaltimeTarget("/usr/share/zoneinfo/Etc/GMT+10"), "Etc/GMT+10");
    EXPECT_FALSE(zoneIdOfLocaltimeTarget("/etc/alternatives/localtime"));
    EXPECT_FALSE(zoneIdOfLocaltimeTarget("/usr/share/zoneinfo/"));
    EXPECT_FALSE(zoneIdOfLocaltimeTarget("/usr/share/zoneinfo/../../etc/passwd"));
    EXPECT_FALSE(zoneIdOfLocaltimeTarget("/usr/share/zoneinfo/Bad Zone"));
}

TEST(LinuxTimeZoneId, WithoutALinkTheTimezoneFileNamesTheZone) {
    MemorySystemSource source;
    source.file("/etc/localtime", "TZif2 copied file");
    source.file("/etc/timezone", "  Europe/Berlin\nsecond line\n");
    EXPECT_EQ(linuxTimeZoneId(source), "Europe/Berlin");
}

TEST(LinuxTimeZoneId, NothingUsableGivesUtc) {
    MemorySystemSource none;
    EXPECT_EQ(linuxTimeZoneId(none), "UTC");
    MemorySystemSource garbage;
    garbage.link("/etc/localtime", "/nowhere");
    garbage.file("/etc/timezone", "\xff\xfe\x01 not a zone");
    EXPECT_EQ(linuxTimeZoneId(garbage), "UTC");
}

}  // namespace
}  // namespace tov
