#include "report/SummaryTable.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "common/DisplayWidth.h"

namespace tov {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

SummaryTable twoColumns(std::size_t maximumWidth = 20) {
    return SummaryTable({{"Kind", maximumWidth}, {"Name", maximumWidth}});
}

TEST(SummaryTable, WithoutRowsGivesHeadingAndRule) {
    EXPECT_EQ(twoColumns().text(), "Kind  Name\n==========\n");
}

TEST(SummaryTable, ColumnsAreAsWideAsTheirWidestCell) {
    SummaryTable table = twoColumns();
    table.addRow({"disk", "SC64G"});
    table.addRow({"memory-module", "A1"});
    EXPECT_EQ(table.text(),
              "Kind           Name\n"
              "====================\n"
              "disk           SC64G\n"
              "memory-module  A1\n");
}

TEST(SummaryTable, WidthCountsCharactersNotBytes) {
    SummaryTable table = twoColumns();
    table.addRow({"Müller", "a"});
    table.addRow({"Smith", "b"});
    const std::vector<std::string> lines = linesOf(table.text());
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[2], "Müller  a");
    EXPECT_EQ(lines[3], "Smith   b");
}

TEST(SummaryTable, LongCellsAreCutAtTheColumnsMaximum) {
    SummaryTable table = twoColumns(8);
    table.addRow({"network", "Wireless Network Adapter"});
    const std::vector<std::string> lines = linesOf(table.text());
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[2], "network  Wireles…");
}

TEST(SummaryTable, ControlCharactersCannotBreakTheLayout) {
    SummaryTable table = twoColumns();
    table.addRow({"evil\nname\t\x1b[2J", "x\r\x7f"});
    table.addRow({"ok", "y"});
    const std::vector<std::string> lines = linesOf(table.text());
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[2], "evilname[2J  x");
    EXPECT_EQ(lines[3], "ok           y");
}

TEST(SummaryTable, MissingCellsAreEmptyAndExtraCellsDropped) {
    SummaryTable table = twoColumns();
    table.addRow({"keyboard"});
    table.addRow({"a", "b", "c"});
    EXPECT_EQ(table.text(),
              "Kind      Name\n"
              "==============\n"
              "keyboard\n"
              "a         b\n");
}

TEST(SummaryTable, EveryLineOfARowStartsItsColumnsAtTheSameWidth) {
    SummaryTable table({{"A", 30}, {"B", 30}, {"C", 30}});
    table.addRow({"東京", "Café", "1"});
    table.addRow({"x", "y", "2"});
    const std::vector<std::string> lines = linesOf(table.text());
    ASSERT_EQ(lines.size(), 4u);
    const std::size_t third = displayWidth(lines[0]) - 1;
    for (std::size_t index : {2u, 3u}) {
        EXPECT_EQ(displayWidth(lines[index]) - 1, third) << lines[index];
    }
}

}  // namespace
}  // namespace tov
