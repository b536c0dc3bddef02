#include "discovery/CapturingSystemSource.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "common/FileAccess.h"
#include "common/QVSLogger.h"
#include "discovery/CaptureFolder.h"
#include "model/Json.h"

namespace tov {
namespace {

namespace fs = std::filesystem;

constexpr fs::perms kFolderMode = fs::perms::owner_all;

bool isMissingOrEmptyFolder(const std::string& folder) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(folder, error);
    if (status.type() == fs::file_type::not_found) return true;
    return status.type() == fs::file_type::directory && fs::is_empty(folder, error) && !error;
}

std::string argumentsJson(const std::vector<std::string>& argv) {
    ArrayRef arguments = makeArray();
    for (const std::string& argument : argv) arguments->push_back(argument);
    return writeJson(Value(arguments), JsonStyle::Compact) + "\n";
}

}  // namespace

std::unique_ptr<CapturingSystemSource> CapturingSystemSource::create(std::shared_ptr<SystemSource> inner,
                                                                     const std::string& folder) {
    if (!isMissingOrEmptyFolder(folder)) {
        QVSLogger::error("The capture folder %s exists and is not empty; nothing is captured.", folder.c_str());
        return nullptr;
    }
    std::unique_ptr<CapturingSystemSource> source(new CapturingSystemSource(std::move(inner), folder));
    if (!source->makeFolders(source->filesRoot_) ||
        !source->writeFile(childPath(folder, capture::kPlatformFile), source->platform() + "\n")) {
        QVSLogger::error("The capture folder %s cannot be made.", folder.c_str());
        return nullptr;
    }
    std::error_code error;
    fs::permissions(folder, kFolderMode, error);
    return source;
}

CapturingSystemSource::CapturingSystemSource(std::shared_ptr<SystemSource> inner, std::string folder)
    : inner_(std::move(inner)),
      folder_(std::move(folder)),
      filesRoot_(childPath(folder_, capture::kFilesFolder)),
      facts_(makeDictionary()) {}

void CapturingSystemSource::noteFailure(const char* what, const std::string& path) {
    complete_ = false;
    QVSLogger::warning("The capture could not record %s %s.", what, path.c_str());
}

bool CapturingSystemSource::makeFolders(const std::string& hostPath) {
    std::error_code error;
    fs::path made;
    for (const fs::path& part : fs::path(hostPath)) {
        made /= part;
        if (fs::symlink_status(made, error).type() == fs::file_type::directory) continue;
        if (!fs::create_directory(made, error) || error) return false;
        fs::permissions(made, kFolderMode, error);
    }
    return true;
}

bool CapturingSystemSource::writeFile(const std::string& hostPath, const std::string& bytes) {
    return makeFolders(fs::path(hostPath).parent_path().string()) && writeFileAtomically(hostPath, bytes);
}

void CapturingSystemSource::recordLink(const std::string& machinePath, const std::string& target) {
    const std::string hostPath = filesRoot_ + machinePath;
    std::error_code error;
    if (fs::symlink_status(hostPath, error).type() == fs::file_type::symlink) return;
    if (!makeFolders(fs::path(hostPath).parent_path().string())) return noteFailure("the link", machinePath);
    fs::create_symlink(target, hostPath, error);
    if (error) noteFailure("the link", machinePath);
}

void CapturingSystemSource::recordFolder(const std::string& machinePath) {
    if (!makeFolders(filesRoot_ + machinePath)) noteFailure("the folder", machinePath);
}

void CapturingSystemSource::recordFile(const std::string& machinePath, const std::string& bytes) {
    if (!writeFile(filesRoot_ + machinePath, bytes)) noteFailure("the file", machinePath);
}

std::optional<PathWalk> CapturingSystemSource::recordWalk(const std::string& path, bool followLastLink) {
    if (!isPlainAbsolutePath(path)) return std::nullopt;
    std::optional<PathWalk> walk = walkPath(
        path, followLastLink, [this](const std::string& machinePath) { return inner_->pathKind(machinePath); },
        [this](const std::string& machinePath) { return inner_->readLink(machinePath); });
    if (!walk) return std::nullopt;
    for (const auto& [linkPath, target] : walk->links) recordLink(linkPath, target);
    return walk;
}

std::optional<std::string> CapturingSystemSource::readFile(const std::string& path, std::uint64_t maximumBytes) {
    std::optional<std::string> bytes = inner_->readFile(path, maximumBytes);
    if (!bytes) return bytes;
    if (const std::optional<PathWalk> walk = recordWalk(path, true)) {
        recordFile(walk->resolved, *bytes);
    } else {
        noteFailure("the path of", path);
    }
    return bytes;
}

std::optional<std::string> CapturingSystemSource::readFilePart(const std::string& path, std::uint64_t offset,
                                                               std::uint64_t length) {
    std::optional<std::string> bytes = inner_->readFilePart(path, offset, length);
    if (bytes) recordWholeFileOnce(path);
    return bytes;
}

void CapturingSystemSource::recordWholeFileOnce(const std::string& path) {
    if (!filesReadInParts_.insert(path).second) return;
    const std::optional<std::string> bytes = inner_->readFile(path, kWholeFileLimitForParts);
    const std::optional<PathWalk> walk = recordWalk(path, true);
    if (bytes && walk) {
        recordFile(walk->resolved, *bytes);
    } else {
        noteFailure("the file read in parts", path);
    }
}

void CapturingSystemSource::recordListedEntry(const std::string& folder, const std::string& name) {
    const std::string entry = childPath(folder, name);
    switch (inner_->pathKind(entry)) {
        case PathKind::Link:
            if (const std::optional<std::string> target = inner_->readLink(entry)) recordLink(entry, *target);
            break;
        case PathKind::Folder:
            recordFolder(entry);
            break;
        default:
            break;
    }
}

std::optional<std::vector<std::string>> CapturingSystemSource::listFolder(const std::string& path) {
    std::optional<std::vector<std::string>> names = inner_->listFolder(path);
    if (!names) return names;
    const std::optional<PathWalk> walk = recordWalk(path, true);
    if (!walk) {
        noteFailure("the folder", path);
        return names;
    }
    recordFolder(walk->resolved);
    for (const std::string& name : *names) recordListedEntry(walk->resolved, name);
    return names;
}

std::optional<std::string> CapturingSystemSource::readLink(const std::string& path) {
    std::optional<std::string> target = inner_->readLink(path);
    if (!target) return target;
    if (const std::optional<PathWalk> walk = recordWalk(path, false)) {
        recordLink(walk->resolved, *target);
    } else {
        noteFailure("the link", path);
    }
    return target;
}

PathKind CapturingSystemSource::pathKind(const std::string& path) {
    const PathKind kind = inner_->pathKind(path);
    if (kind == PathKind::None || kind == PathKind::Other) return kind;
    const std::optional<PathWalk> walk = recordWalk(path, false);
    if (!walk) return kind;
    if (kind == PathKind::Folder) recordFolder(walk->resolved);
    if (kind == PathKind::Link) {
        if (const std::optional<std::string> target = inner_->readLink(path)) recordLink(walk->resolved, *target);
    }
    if (kind == PathKind::File) recordFile(walk->resolved, inner_->readFile(path, kDefaultReadLimit).value_or(""));
    return kind;
}

std::optional<std::string> CapturingSystemSource::runTool(const std::vector<std::string>& argv) {
    std::optional<std::string> output = inner_->runTool(argv);
    const std::string stem = childPath(childPath(folder_, capture::kCommandsFolder), std::to_string(++toolRuns_));
    if (!writeFile(stem + capture::kArgumentsExtension, argumentsJson(argv)) ||
        (output && !writeFile(stem + capture::kOutputExtension, *output))) {
        noteFailure("the tool run", argv.empty() ? std::string() : argv[0]);
    }
    return output;
}

Value CapturingSystemSource::fact(const std::string& name, const std::string& key) {
    Value answer = inner_->fact(name, key);
    if (answer.isAbsent()) return answer;
    facts_->set(capture::factKey(name, key), answer.deepCopy());
    if (!writeFile(childPath(folder_, capture::kFactsFile), writeJson(Value(facts_), JsonStyle::Indented) + "\n")) {
        noteFailure("the fact", capture::factKey(name, key));
    }
    return answer;
}

}  // namespace tov
