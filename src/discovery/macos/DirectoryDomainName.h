#pragma once

// The domain named by a directory record's distinguished name.

#include <string>
#include <string_view>

namespace tov {

// The first two domain components joined by ".": the name split on ",DC=" must give at
// least 3 pieces, and pieces 1 and 2 are taken, so "CN=ann,CN=Users,DC=corp,DC=example,
// DC=com" gives "corp.example" (the third component is left out on purpose). "" otherwise.
std::string domainFromDistinguishedName(std::string_view distinguishedName);

}  // namespace tov
