// Hands arbitrary bytes to the capture reader as the contents of a capture folder: its
// facts, a tool run's argument vector, and a tree of symbolic links to walk. Whatever the
// folder holds, every answer must come from inside it and every walk must end.
//
// The input is split at the first two NUL bytes: facts.json, commands/1.argv, then lines
// "path>target" that become links under files/ (a line without ">" is a path to read).

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "common/QVSLogger.h"
#include "discovery/RecordedSystemSource.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string_view> split(std::string_view text, char separator, std::size_t parts) {
    std::vector<std::string_view> pieces;
    while (pieces.size() + 1 < parts) {
        const std::size_t at = text.find(separator);
        if (at == std::string_view::npos) break;
        pieces.push_back(text.substr(0, at));
        text.remove_prefix(at + 1);
    }
    pieces.push_back(text);
    pieces.resize(parts);
    return pieces;
}

void write(const fs::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Only plain relative names below files/ are made; the targets are as hostile as given.
void makeLink(const fs::path& files, std::string_view path, std::string_view target) {
    if (path.empty() || path.find("..") != std::string_view::npos || path.size() > 64 || target.size() > 128) return;
    if (target.find('\0') != std::string_view::npos) return;
    std::error_code error;
    const fs::path at = files / fs::path(std::string(path)).relative_path();
    fs::create_directories(at.parent_path(), error);
    fs::create_symlink(std::string(target), at, error);
}

const fs::path& workFolder() {
    static const fs::path folder = [] {
        std::string pattern = (fs::temp_directory_path() / "tov-capture-fuzz-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        return fs::path(pattern);
    }();
    return folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tov::QVSLogger::setMinimumLogLevel("CRITICAL");
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string_view> parts = split(input, '\0', 3);
    const fs::path capture = workFolder() / "capture";
    std::error_code error;
    fs::remove_all(capture, error);
    fs::create_directories(capture / "files" / "sys", error);
    fs::create_directories(capture / "commands", error);
    write(capture / "platform", "linux\n");
    write(capture / "facts.json", parts[0]);
    write(capture / "commands" / "1.argv", parts[1]);
    write(capture / "files" / "sys" / "inside", "inside");

    std::vector<std::string> reads;
    for (std::string_view line : split(parts[2], '\n', 16)) {
        const std::size_t arrow = line.find('>');
        if (arrow == std::string_view::npos) {
            reads.emplace_back(line);
        } else {
            makeLink(capture / "files", line.substr(0, arrow), line.substr(arrow + 1));
            reads.emplace_back(line.substr(0, arrow));
        }
    }

    const auto source = tov::RecordedSystemSource::open(capture.string());
    if (!source) std::abort();
    source->fact("uname", "");
    source->runTool({"/bin/tool"});
    for (const std::string& path : reads) {
        // The only file in the capture says "inside"; nothing outside may ever be read.
        const auto bytes = source->readFile(path.empty() || path[0] == '/' ? path : "/" + path, 4096);
        if (bytes && *bytes != "inside") std::abort();
        source->listFolder(path);
        source->readLink(path);
        source->pathKind(path);
    }
    return 0;
}
