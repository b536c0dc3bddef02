#pragma once

// What stands at a path once a final symbolic link is followed, as the file manager
// answers "exists" and "is a directory": a link counts as the folder or file it leads to,
// and a link that leads nowhere counts as nothing.

#include <string>

#include "discovery/SystemSource.h"

namespace tov {

// Something (a file, a folder, anything else) stands at path or at the end of its link.
bool pathExistsFollowingLinks(SystemSource& source, const std::string& path);

// A folder stands at path, or path is a link whose folder can be listed.
bool pathIsFolderFollowingLinks(SystemSource& source, const std::string& path);

}  // namespace tov
