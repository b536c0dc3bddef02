#include "discovery/RecordedSystemSource.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "common/FileAccess.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/CaptureFolder.h"
#include "discovery/PathWalk.h"
#include "model/Json.h"

namespace tov {
namespace {

namespace fs = std::filesystem;

PathKind kindOfStatus(const fs::file_status& status) {
    switch (status.type()) {
        case fs::file_type::not_found:
        case fs::file_type::none:
            return PathKind::None;
        case fs::file_type::regular:
            return PathKind::File;
        case fs::file_type::directory:
            return PathKind::Folder;
        case fs::file_type::symlink:
            return PathKind::Link;
        default:
            return PathKind::Other;
    }
}

PathKind kindAt(const std::string& hostPath) {
    std::error_code error;
    return kindOfStatus(fs::symlink_status(hostPath, error));
}

std::optional<std::string> readPlatform(const std::string& folder) {
    const std::string path = childPath(folder, capture::kPlatformFile);
    const std::optional<std::string> text = readWholeFile(path, capture::kPlatformFileLimit);
    if (!text) return std::nullopt;
    const std::string word = trimWhitespaceAndNewlines(*text);
    if (word != SystemSource::kLinuxPlatform && word != SystemSource::kMacOSPlatform) return std::nullopt;
    return word;
}

// The argument vector of a .argv file: a JSON array of strings, nothing else.
std::optional<std::vector<std::string>> readArguments(const std::string& path) {
    const std::optional<std::string> text = readWholeFile(path, capture::kArgumentsFileLimit);
    if (!text) return std::nullopt;
    const std::optional<Value> parsed = parseJson(*text);
    if (!parsed || !parsed->isArray()) return std::nullopt;
    std::vector<std::string> arguments;
    for (const Value& element : *parsed->array()) {
        if (!element.isString()) return std::nullopt;
        arguments.push_back(*element.string());
    }
    if (arguments.empty()) return std::nullopt;
    return arguments;
}

}  // namespace

std::unique_ptr<RecordedSystemSource> RecordedSystemSource::open(const std::string& folder) {
    if (kindAt(folder) != PathKind::Folder) {
        QVSLogger::error("The capture folder %s does not exist or is no folder.", folder.c_str());
        return nullptr;
    }
    const std::optional<std::string> platform = readPlatform(folder);
    if (!platform) {
        QVSLogger::error("The capture folder %s names no platform (linux or macos) in its file \"%s\".",
                         folder.c_str(), capture::kPlatformFile);
        return nullptr;
    }
    return std::unique_ptr<RecordedSystemSource>(new RecordedSystemSource(folder, *platform));
}

RecordedSystemSource::RecordedSystemSource(std::string folder, std::string platform)
    : folder_(std::move(folder)),
      filesRoot_(childPath(folder_, capture::kFilesFolder)),
      platform_(std::move(platform)) {
    if (kindAt(filesRoot_) != PathKind::Folder && kindAt(filesRoot_) != PathKind::None) {
        QVSLogger::warning("The capture's %s is no plain folder; its files are not read.", filesRoot_.c_str());
    }
}

PathKind RecordedSystemSource::recordedKind(const std::string& machinePath) const {
    if (kindAt(filesRoot_) != PathKind::Folder) return PathKind::None;
    return kindAt(filesRoot_ + machinePath);
}

std::optional<std::string> RecordedSystemSource::recordedLinkTarget(const std::string& machinePath) const {
    std::error_code error;
    const fs::path target = fs::read_symlink(filesRoot_ + machinePath, error);
    if (error) return std::nullopt;
    return target.string();
}

std::optional<std::string> RecordedSystemSource::recordedPath(const std::string& path, bool followLastLink) const {
    if (!isPlainAbsolutePath(path)) {
        QVSLogger::warning("The path \"%s\" is not a plain absolute path; the capture does not answer it.",
                           path.c_str());
        return std::nullopt;
    }
    const std::optional<PathWalk> walk = walkPath(
        path, followLastLink, [this](const std::string& machinePath) { return recordedKind(machinePath); },
        [this](const std::string& machinePath) { return recordedLinkTarget(machinePath); });
    if (!walk) {
        QVSLogger::debug("The links of %s cannot be followed in the capture (a loop or a broken link).",
                         path.c_str());
        return std::nullopt;
    }
    return walk->resolved;
}

std::optional<std::string> RecordedSystemSource::readFile(const std::string& path, std::uint64_t maximumBytes) {
    const std::optional<std::string> resolved = recordedPath(path, true);
    if (!resolved || recordedKind(*resolved) != PathKind::File) return std::nullopt;
    return readWholeFile(filesRoot_ + *resolved, maximumBytes);
}

std::optional<std::string> RecordedSystemSource::readFilePart(const std::string& path, std::uint64_t offset,
                                                              std::uint64_t length) {
    const std::optional<std::string> resolved = recordedPath(path, true);
    if (!resolved || recordedKind(*resolved) != PathKind::File) return std::nullopt;
    std::ifstream file(filesRoot_ + *resolved, std::ios::binary | std::ios::ate);
    if (!file) return std::nullopt;
    const std::streamoff size = file.tellg();
    if (size < 0) return std::nullopt;
    const auto fileSize = static_cast<std::uint64_t>(size);
    if (offset >= fileSize) return std::string();
    std::string part(static_cast<std::size_t>(std::min(length, fileSize - offset)), '\0');
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(part.data(), static_cast<std::streamsize>(part.size()));
    if (!file) return std::nullopt;
    return part;
}

std::optional<std::vector<std::string>> RecordedSystemSource::listFolder(const std::string& path) {
    const std::optional<std::string> resolved = recordedPath(path, true);
    if (!resolved || recordedKind(*resolved) != PathKind::Folder) return std::nullopt;
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator entry(filesRoot_ + *resolved, error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    if (error) return std::nullopt;
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::string> RecordedSystemSource::readLink(const std::string& path) {
    const std::optional<std::string> resolved = recordedPath(path, false);
    if (!resolved || recordedKind(*resolved) != PathKind::Link) return std::nullopt;
    return recordedLinkTarget(*resolved);
}

PathKind RecordedSystemSource::pathKind(const std::string& path) {
    const std::optional<std::string> resolved = recordedPath(path, false);
    return resolved ? recordedKind(*resolved) : PathKind::None;
}

void RecordedSystemSource::loadCommands() {
    commandsLoaded_ = true;
    const std::string commands = childPath(folder_, capture::kCommandsFolder);
    if (kindAt(commands) != PathKind::Folder) return;
    std::error_code error;
    for (fs::directory_iterator entry(commands, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!hasSuffix(name, capture::kArgumentsExtension)) continue;
        const std::string argumentsPath = childPath(commands, name);
        std::optional<std::vector<std::string>> arguments = readArguments(argumentsPath);
        if (!arguments) {
            QVSLogger::warning("The capture's tool run %s is not a JSON array of strings; it is ignored.",
                               argumentsPath.c_str());
            continue;
        }
        const std::string stem = name.substr(0, name.size() - std::string_view(capture::kArgumentsExtension).size());
        commandOutputs_.emplace(std::move(*arguments), childPath(commands, stem + capture::kOutputExtension));
    }
}

std::optional<std::string> RecordedSystemSource::runTool(const std::vector<std::string>& argv) {
    if (!commandsLoaded_) loadCommands();
    const auto found = commandOutputs_.find(argv);
    if (found == commandOutputs_.end()) return std::nullopt;
    if (kindAt(found->second) == PathKind::None) return std::nullopt;
    std::optional<std::string> output = readWholeFile(found->second, capture::kOutputFileLimit);
    if (!output) {
        QVSLogger::warning("The capture's tool output %s cannot be read (a link, not a file, or too large).",
                           found->second.c_str());
    }
    return output;
}

void RecordedSystemSource::loadFacts() {
    factsLoaded_ = true;
    const std::string path = childPath(folder_, capture::kFactsFile);
    if (kindAt(path) == PathKind::None) return;
    const std::optional<std::string> text = readWholeFile(path, capture::kFactsFileLimit);
    std::string reason;
    const std::optional<Value> parsed = text ? parseJson(*text, &reason) : std::nullopt;
    if (!parsed || !parsed->isDictionary()) {
        QVSLogger::warning("The capture's facts %s cannot be read as a JSON object (%s); no fact is known.",
                           path.c_str(), text ? reason.c_str() : "unreadable");
        return;
    }
    facts_ = parsed->dictionary();
}

Value RecordedSystemSource::fact(const std::string& name, const std::string& key) {
    if (!factsLoaded_) loadFacts();
    if (!facts_) return Value();
    return facts_->get(capture::factKey(name, key)).deepCopy();
}

}  // namespace tov
