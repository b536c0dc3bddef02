#include "discovery/PathWalk.h"

#include <gtest/gtest.h>

#include <map>

namespace tov {
namespace {

// A tree of folders and links: every path not named is a folder.
class Tree {
public:
    explicit Tree(std::map<std::string, std::string> links) : links_(std::move(links)) {}
    std::optional<PathWalk> walk(const std::string& path, bool followLast = true) const {
        return walkPath(
            path, followLast,
            [this](const std::string& p) { return links_.count(p) != 0 ? PathKind::Link : PathKind::Folder; },
            [this](const std::string& p) -> std::optional<std::string> {
                const auto found = links_.find(p);
                if (found == links_.end()) return std::nullopt;
                return found->second;
            });
    }

private:
    std::map<std::string, std::string> links_;
};

TEST(PathWalk, FollowsRelativeLinksAmongFoldersAsSysfsUsesThem) {
    const Tree tree({{"/sys/block/sda", "../devices/pci0000:00/ata1/block/sda"},
                     {"/sys/devices/pci0000:00/ata1/block/sda/device", "../../../ata1"}});
    const auto walk = tree.walk("/sys/block/sda/device/model");
    ASSERT_TRUE(walk);
    EXPECT_EQ(walk->resolved, "/sys/devices/pci0000:00/ata1/model");
    ASSERT_EQ(walk->links.size(), 2u);
    EXPECT_EQ(walk->links[0].first, "/sys/block/sda");
    EXPECT_EQ(walk->links[1].first, "/sys/devices/pci0000:00/ata1/block/sda/device");
}

TEST(PathWalk, AbsoluteTargetsStartAtTheRootAndDotDotStopsThere) {
    const Tree tree({{"/etc/localtime", "/usr/share/zoneinfo/Asia/Tokyo"}, {"/sys/escape", "../../../../etc"}});
    EXPECT_EQ(tree.walk("/etc/localtime")->resolved, "/usr/share/zoneinfo/Asia/Tokyo");
    EXPECT_EQ(tree.walk("/sys/escape/passwd")->resolved, "/etc/passwd");
}

TEST(PathWalk, TheLastLinkIsKeptWhenNotFollowed) {
    const Tree tree(std::map<std::string, std::string>{{"/a", "b"}});
    const auto walk = tree.walk("/a", false);
    EXPECT_EQ(walk->resolved, "/a");
    EXPECT_TRUE(walk->links.empty());
}

TEST(PathWalk, ALinkLoopGivesNothing) {
    EXPECT_FALSE(Tree(std::map<std::string, std::string>{{"/sys/loopy", "loopy"}}).walk("/sys/loopy/x"));
    EXPECT_FALSE(Tree({{"/a", "/b"}, {"/b", "/a"}}).walk("/a"));
}

TEST(PathWalk, PlainAbsolutePathsOnly) {
    EXPECT_TRUE(isPlainAbsolutePath("/sys/block/sda"));
    EXPECT_TRUE(isPlainAbsolutePath("/"));
    EXPECT_FALSE(isPlainAbsolutePath("sys/block"));
    EXPECT_FALSE(isPlainAbsolutePath("/sys/../etc"));
    EXPECT_FALSE(isPlainAbsolutePath("/sys/./block"));
    EXPECT_FALSE(isPlainAbsolutePath(std::string("/a\0b", 4)));
    EXPECT_FALSE(isPlainAbsolutePath(""));
}

}  // namespace
}  // namespace tov
