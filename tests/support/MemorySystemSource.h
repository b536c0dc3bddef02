#pragma once

// A machine held in memory for the tests of discovery rules: files, folders, links,
// tool outputs and facts are set by the test; anything not set answers nothing.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov::testing {

class MemorySystemSource : public SystemSource {
public:
    explicit MemorySystemSource(std::string platform = kLinuxPlatform) : platform_(std::move(platform)) {}

    // A file with its bytes; its folders appear in listings of their parents.
    MemorySystemSource& file(const std::string& path, const std::string& bytes);
    MemorySystemSource& folder(const std::string& path);
    MemorySystemSource& link(const std::string& path, const std::string& target);
    MemorySystemSource& tool(const std::vector<std::string>& argv, const std::string& output);
    MemorySystemSource& fact(const std::string& name, const std::string& key, const Value& value);

    std::string platform() const override { return platform_; }
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override;
    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override;
    std::optional<std::vector<std::string>> listFolder(const std::string& path) override;
    std::optional<std::string> readLink(const std::string& path) override;
    PathKind pathKind(const std::string& path) override;
    Value fact(const std::string& name, const std::string& key) override;

    // Every tool run asked for, in order.
    const std::vector<std::vector<std::string>>& toolRuns() const { return toolRuns_; }

private:
    void addParents(const std::string& path);
    // path with the symbolic links among its folders (not the last component) followed.
    std::string followFolders(const std::string& path) const;
    // path with every symbolic link followed, the last component's included.
    std::string followAll(const std::string& path) const;

    std::string platform_;
    std::map<std::string, std::string> files_;
    std::map<std::string, std::string> links_;
    std::map<std::string, bool> folders_;
    std::map<std::vector<std::string>, std::string> tools_;
    std::map<std::string, Value> facts_;
    std::vector<std::vector<std::string>> toolRuns_;
};

}  // namespace tov::testing
