#pragma once

// The directory domain a Linux machine is joined to: the first domain sssd serves
// (/etc/sssd/sssd.conf), else the realm of winbind (/etc/samba/smb.conf).

#include <string>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

// The first two labels of the domain joined by "." ("corp.example.com" gives
// "corp.example"), lower case; "" when the machine is joined to none or its name has
// fewer than two labels.
std::string linuxDirectoryDomain(SystemSource& source);

// The first two labels rule on its own.
std::string firstTwoDomainLabels(std::string_view domain);

}  // namespace tov
