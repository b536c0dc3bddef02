#include "discovery/formats/IniFile.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(IniFile, FindsValuesBySectionAndKeyIgnoringLetterCase) {
    const IniFile file = IniFile::parse("[global]\n   REALM = CORP.EXAMPLE.COM  \n workgroup=CORP\n");
    EXPECT_EQ(file.value("Global", "realm"), "CORP.EXAMPLE.COM");
    EXPECT_EQ(file.value("global", "WORKGROUP"), "CORP");
    EXPECT_EQ(file.value("homes", "realm"), std::nullopt);
}

TEST(IniFile, SkipsCommentsAndLinesWithoutAssignment) {
    const IniFile file = IniFile::parse("# comment\n; realm = WRONG\n[sssd]\nnot a setting\n=x\ndomains = a.b\r\n");
    EXPECT_EQ(file.value("sssd", "domains"), "a.b");
    EXPECT_EQ(file.value("", "realm"), std::nullopt);
}

TEST(IniFile, ListsSectionsInOrderOnce) {
    const IniFile file = IniFile::parse("[sssd]\n[domain/corp.example.com]\n[SSSD]\n[nss]\n");
    EXPECT_EQ(file.sections(), (std::vector<std::string>{"sssd", "domain/corp.example.com", "nss"}));
}

TEST(IniFile, TheLastValueOfARepeatedKeyCounts) {
    const IniFile file = IniFile::parse("[a]\nk = 1\n[b]\nk = 2\n[a]\nk = 3\n");
    EXPECT_EQ(file.value("a", "k"), "3");
    EXPECT_EQ(file.value("b", "k"), "2");
}

TEST(IniFile, SettingsBeforeAnySectionBelongToTheUnnamedOne) {
    EXPECT_EQ(IniFile::parse("realm = X.Y\n").value("", "realm"), "X.Y");
}

}  // namespace
}  // namespace tov
