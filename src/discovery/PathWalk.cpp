#include "discovery/PathWalk.h"

namespace tov {
namespace {

std::vector<std::string> componentsOf(std::string_view path) {
    std::vector<std::string> components;
    std::size_t position = 0;
    while (position <= path.size()) {
        std::size_t end = path.find('/', position);
        if (end == std::string_view::npos) end = path.size();
        if (end > position) components.emplace_back(path.substr(position, end - position));
        position = end + 1;
    }
    return components;
}

class Walker {
public:
    Walker(bool followLastLink, const PathKindQuestion& kindOf, const LinkTargetQuestion& targetOf)
        : followLastLink_(followLastLink), kindOf_(kindOf), targetOf_(targetOf) {}

    std::optional<PathWalk> walk(const std::string& path) {
        pushPending(path);
        while (!pending_.empty()) {
            const std::string component = std::move(pending_.back());
            pending_.pop_back();
            if (!step(component)) return std::nullopt;
        }
        walk_.resolved = current();
        return std::move(walk_);
    }

private:
    // Takes one component; false when a link cannot be followed.
    bool step(const std::string& component) {
        if (component == ".") return true;
        if (component == "..") {
            if (!done_.empty()) done_.pop_back();
            return true;
        }
        done_.push_back(component);
        if (pending_.empty() && !followLastLink_) return true;
        const std::string here = current();
        if (kindOf_(here) != PathKind::Link) return true;
        return follow(here);
    }

    bool follow(const std::string& linkPath) {
        const std::optional<std::string> target = targetOf_(linkPath);
        if (!target || target->empty() || ++hops_ > kMaximumLinkHops) return false;
        walk_.links.emplace_back(linkPath, *target);
        done_.pop_back();
        if ((*target)[0] == '/') done_.clear();
        pushPending(*target);
        return true;
    }

    void pushPending(std::string_view path) {
        const std::vector<std::string> components = componentsOf(path);
        pending_.insert(pending_.end(), components.rbegin(), components.rend());
    }

    std::string current() const {
        std::string text;
        for (const std::string& component : done_) text += "/" + component;
        return text.empty() ? std::string("/") : text;
    }

    const bool followLastLink_;
    const PathKindQuestion& kindOf_;
    const LinkTargetQuestion& targetOf_;
    std::vector<std::string> pending_;
    std::vector<std::string> done_;
    int hops_ = 0;
    PathWalk walk_;
};

}  // namespace

std::optional<PathWalk> walkPath(const std::string& path, bool followLastLink, const PathKindQuestion& kindOf,
                                 const LinkTargetQuestion& targetOf) {
    return Walker(followLastLink, kindOf, targetOf).walk(path);
}

bool isPlainAbsolutePath(std::string_view path) {
    if (path.empty() || path[0] != '/' || path.find('\0') != std::string_view::npos) return false;
    for (const std::string& component : componentsOf(path)) {
        if (component == "." || component == "..") return false;
    }
    return true;
}

std::string childPath(const std::string& folder, const std::string& name) {
    if (!folder.empty() && folder.back() == '/') return folder + name;
    return folder + "/" + name;
}

std::string_view lastPathComponent(std::string_view path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace tov
