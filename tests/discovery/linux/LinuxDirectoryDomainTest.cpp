#include "discovery/linux/LinuxDirectoryDomain.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

TEST(LinuxDirectoryDomain, TakesTheFirstTwoLabels) {
    EXPECT_EQ(firstTwoDomainLabels("corp.example.com"), "corp.example");
    EXPECT_EQ(firstTwoDomainLabels("example.com"), "example.com");
    EXPECT_EQ(firstTwoDomainLabels("AD.Example.ORG"), "ad.example");
    EXPECT_EQ(firstTwoDomainLabels("LOCAL"), "");
    EXPECT_EQ(firstTwoDomainLabels(""), "");
    EXPECT_EQ(firstTwoDomainLabels(".com"), "");
    EXPECT_EQ(firstTwoDomainLabels("corp..com"), "");
}

TEST(LinuxDirectoryDomain, SssdDomainsListGivesItsFirstDomain) {
    MemorySystemSource source;
    source.file("/etc/sssd/sssd.conf",
                "[sssd]\nservices = nss, pam\ndomains = eu.corp.example.com, lab.example.net\n\n"
                "[domain/lab.example.net]\nid_provider = ldap\n");
    EXPECT_EQ(linuxDirectoryDomain(source), "eu.corp");
}

TEST(LinuxDirectoryDomain, SssdDomainSectionServesWithoutADomainsList) {
    MemorySystemSource source;
    source.file("/etc/sssd/sssd.conf", "[sssd]\nservices = nss\n[domain/ad.example.com]\nid_provider = ad\n");
    EXPECT_EQ(linuxDirectoryDomain(source), "ad.example");
}

TEST(LinuxDirectoryDomain, WinbindRealmServesWithoutSssd) {
    MemorySystemSource source;
    source.file("/etc/samba/smb.conf",
                "[global]\n   workgroup = CORP\n   security = ads\n   realm = CORP.EXAMPLE.COM\n[homes]\n");
    EXPECT_EQ(linuxDirectoryDomain(source), "corp.example");
}

TEST(LinuxDirectoryDomain, AnSssdConfigurationWithoutDomainLeavesItToWinbind) {
    MemorySystemSource source;
    source.file("/etc/sssd/sssd.conf", "[sssd]\nservices = nss\n")
        .file("/etc/samba/smb.conf", "[global]\nrealm = SALES.EXAMPLE.ORG\n");
    EXPECT_EQ(linuxDirectoryDomain(source), "sales.example");
}

TEST(LinuxDirectoryDomain, AMachineNotJoinedHasNoDomain) {
    MemorySystemSource notConfigured;
    EXPECT_EQ(linuxDirectoryDomain(notConfigured), "");
    MemorySystemSource standaloneSamba;
    standaloneSamba.file("/etc/samba/smb.conf", "[global]\n   workgroup = WORKGROUP\n   server role = standalone\n");
    EXPECT_EQ(linuxDirectoryDomain(standaloneSamba), "");
}

}  // namespace
}  // namespace tov
