#include "discovery/macos/FollowedPath.h"

namespace tov {

bool pathExistsFollowingLinks(SystemSource& source, const std::string& path) {
    const PathKind kind = source.pathKind(path);
    if (kind == PathKind::None) return false;
    if (kind != PathKind::Link) return true;
    // Reading no bytes tells whether the link ends at a readable file.
    return source.readFilePart(path, 0, 0).has_value() || pathIsFolderFollowingLinks(source, path);
}

bool pathIsFolderFollowingLinks(SystemSource& source, const std::string& path) {
    const PathKind kind = source.pathKind(path);
    if (kind == PathKind::Folder) return true;
    if (kind != PathKind::Link) return false;
    return source.listFolder(path).has_value();
}

}  // namespace tov
