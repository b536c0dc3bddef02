#include "discovery/linux/ProcStat.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

TEST(ProcStat, ReadsTheBootTimeLine) {
    EXPECT_EQ(ProcStat::bootTime("cpu  1 2 3 4\ncpu0 1 2 3 4\nintr 5 0 0\nctxt 99\nbtime 1704103200\nprocesses 42\n"),
              1704103200);
    EXPECT_EQ(ProcStat::bootTime("btime 1704103200"), 1704103200);
}

TEST(ProcStat, NoOrAMalformedBootTimeGivesNothing) {
    EXPECT_EQ(ProcStat::bootTime("cpu  1 2 3 4\nctxt 99\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime("btime\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime("btime twelve\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime("btime 17041x\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime("btime -5\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime("btime 99999999999999999999999\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime("btime 253402300800\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime("xbtime 1704103200\n"), std::nullopt);
    EXPECT_EQ(ProcStat::bootTime(""), std::nullopt);
}

TEST(ProcStat, ReadsThroughTheSource) {
    testing::MemorySystemSource source;
    EXPECT_EQ(ProcStat::readBootTime(source), std::nullopt);
    source.file("/proc/stat", "btime 1700000000\n");
    EXPECT_EQ(ProcStat::readBootTime(source), 1700000000);
}

}  // namespace
}  // namespace tov
