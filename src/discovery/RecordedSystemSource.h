#pragma once

// A machine replayed from a capture folder (CaptureFolder.h). Every question is answered
// from the folder alone; a question it cannot answer gets nothing, exactly as a missing
// file or tool would. Paths never lead out of the folder: links are followed inside it as
// the recorded machine would follow them, and the folder's own files are never read
// through a link.

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

class RecordedSystemSource : public SystemSource {
public:
    // The capture at folder; nothing, with a log line, when it is no capture folder.
    static std::unique_ptr<RecordedSystemSource> open(const std::string& folder);

    std::string platform() const override { return platform_; }
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override;
    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override;
    // Reads only the part asked for, so a large recorded database is not read whole per part.
    std::optional<std::string> readFilePart(const std::string& path, std::uint64_t offset,
                                            std::uint64_t length) override;
    std::optional<std::vector<std::string>> listFolder(const std::string& path) override;
    std::optional<std::string> readLink(const std::string& path) override;
    PathKind pathKind(const std::string& path) override;
    Value fact(const std::string& name, const std::string& key) override;

private:
    RecordedSystemSource(std::string folder, std::string platform);

    // The path inside files/ that the machine's path leads to; nothing when the path is
    // not a plain absolute path or its links cannot be followed.
    std::optional<std::string> recordedPath(const std::string& path, bool followLastLink) const;
    PathKind recordedKind(const std::string& machinePath) const;
    std::optional<std::string> recordedLinkTarget(const std::string& machinePath) const;
    void loadCommands();
    void loadFacts();

    const std::string folder_;
    const std::string filesRoot_;
    const std::string platform_;
    bool commandsLoaded_ = false;
    std::map<std::vector<std::string>, std::string> commandOutputs_;  // argv to the .out path
    bool factsLoaded_ = false;
    DictionaryRef facts_;
};

}  // namespace tov
