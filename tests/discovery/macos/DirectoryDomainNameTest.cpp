#include "discovery/macos/DirectoryDomainName.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(DirectoryDomainName, TheFirstTwoDomainComponentsAreJoined) {
    EXPECT_EQ(domainFromDistinguishedName("CN=anna,CN=Users,DC=corp,DC=example,DC=com"), "corp.example");
    EXPECT_EQ(domainFromDistinguishedName("CN=ben,OU=Lab,DC=example,DC=org"), "example.org");
    EXPECT_EQ(domainFromDistinguishedName(",DC=corp,DC=example,DC=com"), "corp.example");
    EXPECT_EQ(domainFromDistinguishedName("CN=x,DC=,DC="), ".");
}

TEST(DirectoryDomainName, FewerThanThreePiecesGiveNoDomain) {
    EXPECT_EQ(domainFromDistinguishedName(""), "");
    EXPECT_EQ(domainFromDistinguishedName("CN=anna,CN=Users"), "");
    EXPECT_EQ(domainFromDistinguishedName("CN=anna,DC=local"), "");
    EXPECT_EQ(domainFromDistinguishedName("/LDAPv3/ldap.example.com"), "");
}

TEST(DirectoryDomainName, OnlyTheExactSeparatorSplits) {
    EXPECT_EQ(domainFromDistinguishedName("CN=anna,dc=corp,dc=example"), "");
    EXPECT_EQ(domainFromDistinguishedName("CN=anna, DC=corp, DC=example"), "");
    EXPECT_EQ(domainFromDistinguishedName("CN=anna,DC=corp,DC=example"), "corp.example");
}

}  // namespace
}  // namespace tov
