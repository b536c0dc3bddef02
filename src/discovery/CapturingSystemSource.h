#pragma once

// A source that answers like the source it wraps and records every answer into a new
// capture folder (CaptureFolder.h), so that exactly what a scan read can be replayed
// anywhere. Files are recorded at the paths they really have, with the symbolic links
// met on the way; folders that were listed are recorded with their folders and links
// (plain files in them only when they were read). A file read in parts is recorded whole,
// once, so that a replay answers every part alike. The folder and everything in it are
// made for root alone (0700 folders, 0600 files).

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "discovery/PathWalk.h"
#include "discovery/SystemSource.h"

namespace tov {

class CapturingSystemSource : public SystemSource {
public:
    // Starts a capture in folder, which must not exist yet or be empty; nothing, with a
    // log line, when it cannot be made.
    static std::unique_ptr<CapturingSystemSource> create(std::shared_ptr<SystemSource> inner,
                                                         const std::string& folder);

    std::string platform() const override { return inner_->platform(); }
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override;
    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override;
    std::optional<std::string> readFilePart(const std::string& path, std::uint64_t offset,
                                            std::uint64_t length) override;
    std::optional<std::vector<std::string>> listFolder(const std::string& path) override;
    std::optional<std::string> readLink(const std::string& path) override;
    PathKind pathKind(const std::string& path) override;
    Value fact(const std::string& name, const std::string& key) override;

    // False once anything could not be recorded (each failure is logged).
    bool complete() const { return complete_; }

private:
    CapturingSystemSource(std::shared_ptr<SystemSource> inner, std::string folder);

    // Walks path on the wrapped machine and records the links met; the walk, or nothing.
    std::optional<PathWalk> recordWalk(const std::string& path, bool followLastLink);
    void recordLink(const std::string& machinePath, const std::string& target);
    void recordFolder(const std::string& machinePath);
    void recordFile(const std::string& machinePath, const std::string& bytes);
    void recordWholeFileOnce(const std::string& path);
    void recordListedEntry(const std::string& folder, const std::string& name);
    bool makeFolders(const std::string& hostPath);
    bool writeFile(const std::string& hostPath, const std::string& bytes);
    void noteFailure(const char* what, const std::string& path);

    std::shared_ptr<SystemSource> inner_;
    const std::string folder_;
    const std::string filesRoot_;
    int toolRuns_ = 0;
    std::set<std::string> filesReadInParts_;
    DictionaryRef facts_;
    bool complete_ = true;
};

}  // namespace tov
