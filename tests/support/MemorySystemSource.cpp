#include "support/MemorySystemSource.h"

#include <filesystem>
#include <set>

namespace tov::testing {
namespace {

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos || slash == 0) return "/";
    return path.substr(0, slash);
}

}  // namespace

MemorySystemSource& MemorySystemSource::file(const std::string& path, const std::string& bytes) {
    files_[path] = bytes;
    addParents(path);
    return *this;
}

MemorySystemSource& MemorySystemSource::folder(const std::string& path) {
    folders_[path] = true;
    addParents(path);
    return *this;
}

MemorySystemSource& MemorySystemSource::link(const std::string& path, const std::string& target) {
    links_[path] = target;
    addParents(path);
    return *this;
}

MemorySystemSource& MemorySystemSource::tool(const std::vector<std::string>& argv, const std::string& output) {
    tools_[argv] = output;
    return *this;
}

MemorySystemSource& MemorySystemSource::fact(const std::string& name, const std::string& key, const Value& value) {
    facts_[name + " " + key] = value;
    return *this;
}

void MemorySystemSource::addParents(const std::string& path) {
    for (std::string parent = parentOf(path); parent != "/"; parent = parentOf(parent)) folders_[parent] = true;
    folders_["/"] = true;
}

std::string MemorySystemSource::followFolders(const std::string& path) const {
    std::vector<std::string> pending;
    auto pushReversed = [&pending](const std::string& text) {
        std::vector<std::string> parts;
        for (const auto& part : std::filesystem::path(text)) {
            if (part != "/") parts.push_back(part.string());
        }
        pending.insert(pending.end(), parts.rbegin(), parts.rend());
    };
    pushReversed(path);
    std::vector<std::string> done;
    auto current = [&done] {
        std::string text;
        for (const std::string& part : done) text += "/" + part;
        return text.empty() ? std::string("/") : text;
    };
    for (int hops = 0; !pending.empty();) {
        const std::string part = pending.back();
        pending.pop_back();
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            if (!done.empty()) done.pop_back();
            continue;
        }
        done.push_back(part);
        if (pending.empty()) break;
        const auto link = links_.find(current());
        if (link == links_.end()) continue;
        if (++hops > 40) return path;
        done.pop_back();
        if (!link->second.empty() && link->second[0] == '/') done.clear();
        pushReversed(link->second);
    }
    return current();
}

std::string MemorySystemSource::followAll(const std::string& path) const {
    std::string resolved = followFolders(path);
    for (int hops = 0; hops < 40 && links_.count(resolved) != 0; ++hops) {
        const std::string& target = links_.at(resolved);
        resolved = followFolders(target[0] == '/' ? target : parentOf(resolved) + "/" + target);
    }
    return resolved;
}

std::optional<std::string> MemorySystemSource::runTool(const std::vector<std::string>& argv) {
    toolRuns_.push_back(argv);
    const auto found = tools_.find(argv);
    if (found == tools_.end()) return std::nullopt;
    return found->second;
}

std::optional<std::string> MemorySystemSource::readFile(const std::string& path, std::uint64_t maximumBytes) {
    const std::string resolved = followAll(path);
    const auto found = files_.find(resolved);
    if (found == files_.end() || found->second.size() > maximumBytes) return std::nullopt;
    return found->second;
}

std::optional<std::vector<std::string>> MemorySystemSource::listFolder(const std::string& path) {
    const std::string resolved = followAll(path);
    if (folders_.count(resolved) == 0) return std::nullopt;
    std::set<std::string> names;
    auto collect = [&](const auto& table) {
        for (const auto& entry : table) {
            if (entry.first != resolved && parentOf(entry.first) == resolved) {
                names.insert(entry.first.substr(entry.first.find_last_of('/') + 1));
            }
        }
    };
    collect(files_);
    collect(links_);
    collect(folders_);
    return std::vector<std::string>(names.begin(), names.end());
}

std::optional<std::string> MemorySystemSource::readLink(const std::string& path) {
    const auto found = links_.find(followFolders(path));
    if (found == links_.end()) return std::nullopt;
    return found->second;
}

PathKind MemorySystemSource::pathKind(const std::string& path) {
    const std::string resolved = followFolders(path);
    if (links_.count(resolved) != 0) return PathKind::Link;
    if (files_.count(resolved) != 0) return PathKind::File;
    if (folders_.count(resolved) != 0) return PathKind::Folder;
    return PathKind::None;
}

Value MemorySystemSource::fact(const std::string& name, const std::string& key) {
    const auto found = facts_.find(name + " " + key);
    return found == facts_.end() ? Value() : found->second;
}

}  // namespace tov::testing
