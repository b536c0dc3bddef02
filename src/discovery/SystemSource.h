#pragma once

// Where discovery reads the machine. Discoverers never call the operating system: they
// ask one source to run a tool, read a file (whole, or a part of it), list a folder, read
// a link, tell what stands at a path, or give a native fact (SystemFacts.h names them and
// their shapes). The live source answers from the running machine, the recorded one from
// a capture folder, and the capturing one answers like the source it wraps and records
// every answer.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/Value.h"

namespace tov {

enum class PathKind { None, File, Folder, Link, Other };

class SystemSource {
public:
    static constexpr std::uint64_t kDefaultReadLimit = 1024 * 1024;
    // The largest file whose parts a source that answers from whole files can give.
    static constexpr std::uint64_t kWholeFileLimitForParts = 64 * 1024 * 1024;
    static constexpr const char* kLinuxPlatform = "linux";
    static constexpr const char* kMacOSPlatform = "macos";

    virtual ~SystemSource() = default;

    // "linux" or "macos": whose discoverers read this machine.
    virtual std::string platform() const = 0;

    // Runs the program at argv[0] (a path, not searched for) with argv as its argument
    // vector, no shell, and answers its standard output; nothing when it could not be
    // started or was ended for taking too long.
    virtual std::optional<std::string> runTool(const std::vector<std::string>& argv) = 0;

    // The bytes of the regular file at the absolute path (symbolic links on the way are
    // followed); nothing when there is none, it cannot be read, or it holds more than
    // maximumBytes.
    virtual std::optional<std::string> readFile(const std::string& path,
                                                std::uint64_t maximumBytes = kDefaultReadLimit) = 0;

    // Up to length bytes of the regular file at the absolute path, from offset on (links
    // followed as for readFile): fewer at the end of the file, "" from its end on; nothing
    // when there is no such file or it cannot be read. So a large file can be searched
    // without holding it. This default reads the whole file (up to
    // kWholeFileLimitForParts bytes) through readFile and answers the part; the live and
    // the recorded sources read only the part.
    virtual std::optional<std::string> readFilePart(const std::string& path, std::uint64_t offset,
                                                    std::uint64_t length);

    // The names in the folder at path, in byte order, without "." and ".."; nothing when
    // path is not a folder or cannot be listed.
    virtual std::optional<std::vector<std::string>> listFolder(const std::string& path) = 0;

    // The target text of the symbolic link at path; nothing when path is not a link.
    virtual std::optional<std::string> readLink(const std::string& path) = 0;

    // What stands at path itself (a final symbolic link is not followed).
    virtual PathKind pathKind(const std::string& path) = 0;

    // A native fact by name and key (SystemFacts.h); absent when the source cannot tell.
    virtual Value fact(const std::string& name, const std::string& key = "") = 0;
};

}  // namespace tov
