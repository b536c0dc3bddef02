#pragma once

// Resolves an absolute path one component at a time, as the kernel does, over a folder
// tree known only by two questions: what stands at a path, and what a link points to.
// The recorded source walks a capture folder this way, so links there mean what they
// meant on the recorded machine; the capturing source walks the live machine this way to
// learn which links to record. ".." never climbs above the root and absolute link targets
// start again at the root, so a walk never leaves the tree it walks.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

struct PathWalk {
    // The path reached, without symbolic links (but the last component when it was not
    // to be followed); it need not exist.
    std::string resolved;
    // Every link met on the way: its path and its target text, in walking order.
    std::vector<std::pair<std::string, std::string>> links;
};

using PathKindQuestion = std::function<PathKind(const std::string&)>;
using LinkTargetQuestion = std::function<std::optional<std::string>(const std::string&)>;

// Links followed in one walk before it counts as a loop, as on Linux.
inline constexpr int kMaximumLinkHops = 40;

// Nothing when a link cannot be read or more than kMaximumLinkHops links were met.
std::optional<PathWalk> walkPath(const std::string& path, bool followLastLink, const PathKindQuestion& kindOf,
                                 const LinkTargetQuestion& targetOf);

// An absolute path without "." or ".." components and without NUL bytes.
bool isPlainAbsolutePath(std::string_view path);

// folder and name joined by one "/".
std::string childPath(const std::string& folder, const std::string& name);

// What follows the last "/" of path (the whole path when it has none).
std::string_view lastPathComponent(std::string_view path);

}  // namespace tov
