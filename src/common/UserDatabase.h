#pragma once

// Names of users and groups from the system's user database (re-entrant lookups).

#include <sys/types.h>

#include <optional>
#include <string>

namespace tov {

// The name of the user with this id; none when the database has no entry for it.
std::optional<std::string> userNameOfId(uid_t user);
// The name of the group with this id; none when the database has no entry for it.
std::optional<std::string> groupNameOfId(gid_t group);

}  // namespace tov
