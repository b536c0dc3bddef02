#include "discovery/formats/PartLineReader.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/PartCountingSource.h"

namespace tov {
namespace {

using testing::PartCountingSource;

struct ReadLine {
    std::uint64_t start;
    std::string text;
    bool operator==(const ReadLine&) const = default;
};

void PrintTo(const ReadLine& line, std::ostream* out) { *out << line.start << ":\"" << line.text << "\""; }

std::vector<ReadLine> allLines(PartCountingSource& source, std::uint64_t start, std::uint64_t end,
                               std::size_t partBytes) {
    PartLineReader reader(source, "/file", start, end, partBytes);
    std::vector<ReadLine> lines;
    while (const auto line = reader.next()) lines.push_back({line->start, std::string(line->text)});
    return lines;
}

TEST(PartLineReader, LinesAcrossPartsKeepTheirStarts) {
    PartCountingSource source;
    source.held("/file", "one\ntwo words\n\nlast line\n");
    const std::vector<ReadLine> expected{{0, "one"}, {4, "two words"}, {14, ""}, {15, "last line"}};
    // Parts as small as the longest line, and larger.
    for (std::size_t partBytes : {9u, 10u, 16u, 4096u}) {
        source.resetCounts();
        EXPECT_EQ(allLines(source, 0, 1000, partBytes), expected) << partBytes;
        EXPECT_LE(source.largestPartAsked, partBytes);
        EXPECT_EQ(source.wholeReads, 0);
    }
}

TEST(PartLineReader, TheLastLineMayLackItsLineBreak) {
    PartCountingSource source;
    source.held("/file", "a\nbc");
    EXPECT_EQ(allLines(source, 0, 1000, 3), (std::vector<ReadLine>{{0, "a"}, {2, "bc"}}));
}

TEST(PartLineReader, StartsAtAnOffsetAndStopsAtTheBound) {
    PartCountingSource source;
    source.held("/file", "skip\nfrom here\nand this\nnot this\n");
    EXPECT_EQ(allLines(source, 5, 24, 10), (std::vector<ReadLine>{{5, "from here"}, {15, "and this"}}));
    // A line the bound cuts is given as far as the bound.
    EXPECT_EQ(allLines(source, 5, 19, 10), (std::vector<ReadLine>{{5, "from here"}, {15, "and "}}));
}

TEST(PartLineReader, ALineLongerThanAPartIsCutAndItsRestSkipped) {
    PartCountingSource source;
    source.held("/file", "short\n" + std::string(50, 'x') + "\nafter\n" + std::string(20, 'y'));
    const std::vector<ReadLine> lines = allLines(source, 0, 1000, 8);
    EXPECT_EQ(lines, (std::vector<ReadLine>{{0, "short"}, {6, "xxxxxxxx"}, {57, "after"}, {63, "yyyyyyyy"}}));
    EXPECT_LE(source.largestPartAsked, 8u);
}

TEST(PartLineReader, AnEmptyOrUnreadableFileHasNoLines) {
    PartCountingSource source;
    source.held("/file", "");
    EXPECT_TRUE(allLines(source, 0, 1000, 8).empty());
    PartLineReader missing(source, "/missing", 0, 1000, 8);
    EXPECT_FALSE(missing.next());
}

TEST(PartLineReader, CrLfLinesKeepTheirCarriageReturn) {
    PartCountingSource source;
    source.held("/file", "8086  Intel Corporation\r\n\t51ca  Raptor Lake\r\n");
    EXPECT_EQ(allLines(source, 0, 1000, 32),
              (std::vector<ReadLine>{{0, "8086  Intel Corporation\r"}, {25, "\t51ca  Raptor Lake\r"}}));
}

}  // namespace
}  // namespace tov
