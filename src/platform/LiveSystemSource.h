#pragma once

// The running machine as a discovery source: files, folders and links of the real file
// system, tools started without a shell and ended when they hang, and the platform's
// native facts.

#include <chrono>

#include "discovery/SystemSource.h"

namespace tov {

class LiveSystemSource : public SystemSource {
public:
    // A tool that runs longer is ended, with a warning, and counts as giving nothing.
    static constexpr std::chrono::seconds kDefaultToolTimeLimit{60};
    static constexpr std::size_t kToolOutputLimit = 64 * 1024 * 1024;

    explicit LiveSystemSource(std::chrono::milliseconds toolTimeLimit = kDefaultToolTimeLimit);

    std::string platform() const override;
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override;
    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override;
    std::optional<std::string> readFilePart(const std::string& path, std::uint64_t offset,
                                            std::uint64_t length) override;
    std::optional<std::vector<std::string>> listFolder(const std::string& path) override;
    std::optional<std::string> readLink(const std::string& path) override;
    PathKind pathKind(const std::string& path) override;
    Value fact(const std::string& name, const std::string& key) override;

private:
    std::chrono::milliseconds toolTimeLimit_;
};

}  // namespace tov
