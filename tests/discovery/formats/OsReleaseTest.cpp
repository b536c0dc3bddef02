#include "discovery/formats/OsRelease.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(OsRelease, ReadsUnquotedDoubleAndSingleQuotedValues) {
    const OsRelease release = OsRelease::parse("NAME=\"Fedora Linux\"\nVERSION_ID=39\nID_LIKE='rhel centos'\n");
    EXPECT_EQ(release.value("NAME"), "Fedora Linux");
    EXPECT_EQ(release.value("VERSION_ID"), "39");
    EXPECT_EQ(release.value("ID_LIKE"), "rhel centos");
    EXPECT_EQ(release.value("BUILD_ID"), std::nullopt);
}

TEST(OsRelease, KeepsTheOrderOfTheFileAndTheLastValueOfARepeatedKey) {
    const OsRelease release = OsRelease::parse("B=1\nA=2\nB=3\n");
    ASSERT_EQ(release.entries().size(), 2u);
    EXPECT_EQ(release.entries()[0], (OsRelease::Entry{"B", "3"}));
    EXPECT_EQ(release.entries()[1], (OsRelease::Entry{"A", "2"}));
}

TEST(OsRelease, SkipsCommentsAndBlankLines) {
    const OsRelease release = OsRelease::parse("# first comment\n\n   \n  # indented comment\nNAME=Gentoo\n#NAME=Other\n");
    ASSERT_EQ(release.entries().size(), 1u);
    EXPECT_EQ(release.value("NAME"), "Gentoo");
}

TEST(OsRelease, EmptyValuesAreAssignedButNotNonEmpty) {
    const OsRelease release = OsRelease::parse("VERSION_CODENAME=\"\"\nVARIANT=\nLOGO=''\n");
    EXPECT_EQ(release.value("VERSION_CODENAME"), "");
    EXPECT_EQ(release.value("VARIANT"), "");
    EXPECT_EQ(release.value("LOGO"), "");
    EXPECT_EQ(release.nonEmptyValue("VARIANT"), std::nullopt);
}

TEST(OsRelease, ReadsTheLastLineWithoutAFinalNewline) {
    const OsRelease release = OsRelease::parse("ID=sles\nVERSION_ID=\"15.5\"");
    EXPECT_EQ(release.value("VERSION_ID"), "15.5");
}

TEST(OsRelease, AcceptsCarriageReturnLineEnds) {
    const OsRelease release = OsRelease::parse("NAME=\"Alma Linux\"\r\nVERSION_ID=9.3\r\n");
    EXPECT_EQ(release.value("NAME"), "Alma Linux");
    EXPECT_EQ(release.value("VERSION_ID"), "9.3");
}

TEST(OsRelease, BackslashesEscapeInDoubleQuotesAndUnquotedButNotInSingleQuotes) {
    const OsRelease release = OsRelease::parse(
        "A=\"say \\\"hi\\\" for \\$5 \\\\ \\`x\\` \\n\"\n"
        "B=one\\ two\n"
        "C='kept \\ as \"is\"'\n");
    EXPECT_EQ(release.value("A"), "say \"hi\" for $5 \\ `x` \\n");
    EXPECT_EQ(release.value("B"), "one two");
    EXPECT_EQ(release.value("C"), "kept \\ as \"is\"");
}

TEST(OsRelease, AllowsBlanksAroundTheAssignmentAndATrailingComment) {
    const OsRelease release = OsRelease::parse("  NAME = \"Void\"   # the distribution\n\tID=void\t\n");
    EXPECT_EQ(release.value("NAME"), "Void");
    EXPECT_EQ(release.value("ID"), "void");
}

TEST(OsRelease, LeavesOutLinesThatAreNoAssignment) {
    const OsRelease release = OsRelease::parse(
        "just some words\n"
        "=novalue\n"
        "1KEY=digit first\n"
        "BAD-KEY=dash\n"
        "UNQUOTED=two words\n"
        "OPEN=\"never closed\n"
        "SINGLE='never closed\n"
        "export NAME=Shell\n"
        "GOOD=yes\n");
    ASSERT_EQ(release.entries().size(), 1u);
    EXPECT_EQ(release.value("GOOD"), "yes");
}

TEST(OsRelease, ATruncatedFileGivesTheAssignmentsBeforeTheCut) {
    const OsRelease release = OsRelease::parse("NAME=\"Debian GNU/Linux\"\nVERSION_ID=\"1");
    EXPECT_EQ(release.value("NAME"), "Debian GNU/Linux");
    EXPECT_EQ(release.value("VERSION_ID"), std::nullopt);
}

TEST(OsRelease, PassesInvalidUtf8AndNulBytesThroughAsBytes) {
    const std::string text = std::string("NAME=\"Bad\xff\xfe name\"\nID=a") + '\0' + "b\n";
    const OsRelease release = OsRelease::parse(text);
    EXPECT_EQ(release.value("NAME"), "Bad\xff\xfe name");
    EXPECT_EQ(release.value("ID"), std::string("a") + '\0' + "b");
}

TEST(OsRelease, EmptyTextHasNoAssignments) {
    EXPECT_TRUE(OsRelease::parse("").entries().empty());
    EXPECT_TRUE(OsRelease::parse("\n\n\r\n").entries().empty());
}

}  // namespace
}  // namespace tov
